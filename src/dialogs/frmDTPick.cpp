#include "dialogs/frmDTPick.h"

#include <vector>

#include "core/Dates.h"
#include "core/quillfn.h"

namespace quill {

namespace {

constexpr TwipSize kDesignSize{3060, 3810};
constexpr float kBelowButtonTop = 1050; // from the button's top to the outer edge
constexpr float kInfoWidth = 2480;
constexpr float kButtonsLeft = 240;
constexpr float kButtonsRight = 2520;

// 30, 140 and 26 pixels at 96 dpi.
constexpr float kPickerLeft = 450;
constexpr float kPickerWidth = 2100;
constexpr float kPickerHeight = 390;

// How many time pickers are rejected before the dialog gives up.
constexpr size_t kMostRefused = 20;

UINT_PTR HandleOf(const DateTimePicker* picker)
{
    return picker ? reinterpret_cast<UINT_PTR>(picker->Window()) : 0;
}

// The parts of a time as automation dates: whole days, and the fraction of one.
DATE DayOf(SYSTEMTIME time)
{
    time.wHour = time.wMinute = time.wSecond = 0;
    return DateOf(time);
}

DATE TimeOfDay(const SYSTEMTIME& time)
{
    return (time.wHour * 3600 + time.wMinute * 60 + time.wSecond) / 86400.0;
}

} // namespace

frmDTPick::frmDTPick(DialogRequest request, PickMode mode)
    : DialogForm({L"Date/Time Picker", kDesignSize, kDialogStyle, kInfoWidth}, std::move(request)),
      mode_(mode), date_(mode != PickMode::Time ? MakePicker(DateTimePicker::Kind::Date) : nullptr),
      time_(mode != PickMode::Date ? MakeTimePicker() : nullptr)
{
}

std::unique_ptr<DateTimePicker> frmDTPick::MakePicker(DateTimePicker::Kind kind)
{
    return std::make_unique<DateTimePicker>(
        *this, TwipRect{kPickerLeft, 0, kPickerWidth, kPickerHeight}, kind);
}

// Two valid handles may have no bit in common by chance; then another picker is made. The rejected
// ones live until one is found, so that their handles are not reused.
std::unique_ptr<DateTimePicker> frmDTPick::MakeTimePicker()
{
    std::vector<std::unique_ptr<DateTimePicker>> refused;
    for (;;) {
        auto picker = MakePicker(DateTimePicker::Kind::Time);
        if (PickersMade(mode_, HandleOf(date_.get()), HandleOf(picker.get())) ||
            refused.size() == kMostRefused)
            return picker;
        refused.push_back(std::move(picker));
    }
}

std::optional<DATE> frmDTPick::Pick(const SYSTEMTIME& start, const std::wstring& title)
{
    if (!PickersMade(mode_, HandleOf(date_.get()), HandleOf(time_.get()))) return std::nullopt;
    if (date_) date_->Pick(start);
    if (time_) time_->Pick(start);
    if (date_) date_->SetAccessibleName(L"Date");
    if (time_) time_->SetAccessibleName(L"Time");
    Prepare(title);
    PlaceAtCentre({kDesignSize.width + Widening(), ButtonTop() + kBelowButtonTop});
    if (!Ask()) return std::nullopt;
    return result_;
}

float frmDTPick::Widening() const
{
    return WidthSurplus(kButtonsRight - kButtonsLeft);
}

float frmDTPick::ButtonTop() const
{
    const bool both = date_ && time_;
    return InfoHeight() == 0 ? (both ? 1920.0F : 1520.0F)
                             : (both ? 2760.0F : 2360.0F) + InfoSurplus();
}

// Enter takes the day of an open calendar.
void frmDTPick::OnButton()
{
    const DateTimePicker& first = date_ ? *date_ : *time_;
    if (first.DroppedDown())
        SendMessageW(first.Window(), WM_KEYDOWN, VK_RETURN, 0);
    else
        Accept();
}

bool frmDTPick::OnAccept()
{
    // Kept as published: the parts are added as numbers. Before the year 1900 days count down, and
    // the sum is wrong; a script that cares takes both parts by themselves.
    if (date_) result_ += DayOf(date_->Picked());
    if (time_) result_ += TimeOfDay(time_->Picked());
    return true;
}

bool frmDTPick::OnPreview(const MSG& message)
{
    if (DialogForm::OnPreview(message)) return true;
    // Pickers may keep Enter for themselves. An open calendar is a window of its own, with its own
    // keys. The default button must not see the key too.
    if (message.message == WM_KEYDOWN && message.wParam == VK_RETURN) {
        OnButton();
        return true;
    }
    // The button answers when it goes down, not when it comes up, also while a calendar is open.
    if (message.message == WM_LBUTTONDOWN && message.hwnd == OKButton.Window()) Accept();
    return false;
}

// An open calendar has a loop of its own.
bool frmDTPick::LeaveLoop()
{
    if (date_ && date_->DroppedDown()) {
        date_->CloseCalendar();
        return true;
    }
    return DialogForm::LeaveLoop();
}

void frmDTPick::OnResize(TwipSize)
{
    const bool closedUp = InfoHeight() == 0;
    const float wider = Widening();
    lblText.Move({240, 120, kInfoWidth + wider, InfoHeight()});
    float top = closedUp ? 380 : 1300 + InfoSurplus();
    for (DateTimePicker* picker : {date_.get(), time_.get()}) {
        if (!picker) continue;
        picker->Move({kPickerLeft + wider / 2, top, kPickerWidth, kPickerHeight});
        top += closedUp ? 720.0F : 700.0F;
    }
    PlaceButtons(
        {kButtonsRight + wider - ButtonWidth(), ButtonTop(), ButtonWidth(), kButtonHeight});
}

} // namespace quill
