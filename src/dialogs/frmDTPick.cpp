#include "dialogs/frmDTPick.h"

#include "core/quillfn.h"

namespace quill {

namespace {

constexpr TwipSize kDesignSize{3060, 3810};
constexpr float kBelowButtonTop = 1050; // from the button's top to the outer edge

// 30, 140 and 26 pixels at 96 dpi.
constexpr float kPickerLeft = 450;
constexpr float kPickerWidth = 2100;
constexpr float kPickerHeight = 390;

// Before the dialog gives up.
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

frmDTPick::frmDTPick(const DialogSettings& settings, PickMode mode)
    : DialogForm(L"Date/Time Picker", kDesignSize, kDialogStyle), settings_(settings), mode_(mode),
      date_(mode != PickMode::Time ? MakePicker(DateTimePicker::Kind::Date) : nullptr),
      time_(mode != PickMode::Date ? MakeTimePicker() : nullptr)
{
}

std::unique_ptr<DateTimePicker> frmDTPick::MakePicker(DateTimePicker::Kind kind)
{
    return std::make_unique<DateTimePicker>(
        *this, TwipRect{kPickerLeft, 0, kPickerWidth, kPickerHeight}, kind);
}

// Handles may have no bit in common by chance; another one is asked for then.
std::unique_ptr<DateTimePicker> frmDTPick::MakeTimePicker()
{
    std::vector<std::unique_ptr<DateTimePicker>> refused; // they keep their handles meanwhile
    for (;;) {
        auto picker = MakePicker(DateTimePicker::Kind::Time);
        if (PickersMade(mode_, HandleOf(date_.get()), HandleOf(picker.get())) ||
            refused.size() == kMostRefused)
            return picker;
        refused.push_back(std::move(picker));
    }
}

std::optional<DATE> frmDTPick::Pick(const SYSTEMTIME& start, const std::wstring& title,
                                    const std::function<bool()>& abandoned)
{
    if (!PickersMade(mode_, HandleOf(date_.get()), HandleOf(time_.get()))) return std::nullopt;
    if (date_) date_->Pick(start);
    if (time_) time_->Pick(start);
    if (date_) date_->SetAccessibleName(L"Date");
    if (time_) time_->SetAccessibleName(L"Time");
    Apply(settings_, title, lblText, OKButton);
    PlaceAtCentre({kDesignSize.width, ButtonTop() + kBelowButtonTop});
    Show(settings_.topmost);
    WaitUntilClosed(abandoned);
    if (!accepted_) return std::nullopt;
    return result_;
}

float frmDTPick::ButtonTop() const
{
    const bool both = date_ && time_;
    return InfoHeight() == 0 ? (both ? 1920.0F : 1520.0F)
                             : (both ? 2760.0F : 2360.0F) + InfoSurplus();
}

// Enter takes the day of an open calendar. False when none is open.
bool frmDTPick::SendEnterToCalendar()
{
    const DateTimePicker& first = date_ ? *date_ : *time_;
    if (!first.DroppedDown()) return false;
    SendMessageW(first.Window(), WM_KEYDOWN, VK_RETURN, 0);
    return true;
}

void frmDTPick::AcceptUnlessCalendar()
{
    if (!SendEnterToCalendar()) Accept();
}

void frmDTPick::Accept()
{
    // Kept as published: the parts are added as numbers. Before the year 1900 days count down, and
    // the sum is wrong; a script that cares takes both parts by themselves.
    if (date_) result_ += DayOf(date_->Picked());
    if (time_) result_ += TimeOfDay(time_->Picked());
    accepted_ = true;
    Unload();
}

// Pickers may keep Enter for themselves. An open calendar is a window of its own, with its own
// keys.
bool frmDTPick::OnKeyDown(WPARAM key)
{
    if (key != VK_RETURN) return DialogForm::OnKeyDown(key);
    AcceptUnlessCalendar();
    return true; // the default button must not see it too
}

// The button answers when it goes down, not when it comes up, also while a calendar is open.
void frmDTPick::OnMouseDown(HWND target)
{
    if (target == OKButton.Window()) Accept();
}

void frmDTPick::OnResize(TwipSize)
{
    const bool closedUp = InfoHeight() == 0;
    lblText.Move({240, 120, 2480, InfoHeight()});
    float top = closedUp ? 380 : 1300 + InfoSurplus();
    for (DateTimePicker* picker : {date_.get(), time_.get()}) {
        if (!picker) continue;
        picker->Move({kPickerLeft, top, kPickerWidth, kPickerHeight});
        top += closedUp ? 720.0F : 700.0F;
    }
    OKButton.Move({2520 - ButtonWidth(), ButtonTop(), ButtonWidth(), kButtonHeight});
}

} // namespace quill
