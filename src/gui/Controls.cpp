#include "gui/Controls.h"

#include <algorithm>

#include "core/AutomationError.h"
#include "gui/windowfn.h"

namespace quill {

namespace {

// After this pause, what is typed begins a new search.
constexpr DWORD kTypingPauseMilliseconds = 1000;

// How many of the longest lines are measured to find the widest.
constexpr size_t kMeasuredLines = 16;

constexpr UINT kFirstControlId = 100;

// Room at the ends of a button's caption together, in twips; in a drop-down list beside its widest
// line, in pixels.
constexpr float kCaptionPadding = 240;
constexpr int kLinePadding = 8;

// The height of a drop-down list when it is open.
constexpr float kDroppedTwips = 3600;

// A device context with the control's font, to measure text.
class MeasuringDevice {
public:
    explicit MeasuringDevice(const Control& control)
        : window_(control.Window()), device_(GetDC(window_)),
          old_(SelectObject(device_,
                            reinterpret_cast<HFONT>(SendMessageW(window_, WM_GETFONT, 0, 0))))
    {
    }
    ~MeasuringDevice()
    {
        SelectObject(device_, old_);
        ReleaseDC(window_, device_);
    }
    MeasuringDevice(const MeasuringDevice&) = delete;
    MeasuringDevice& operator=(const MeasuringDevice&) = delete;
    operator HDC() const noexcept { return device_; }

private:
    HWND window_;
    HDC device_;
    HGDIOBJ old_;
};

} // namespace

const wchar_t* CommonClass(DWORD group, const wchar_t* name) noexcept
{
    const INITCOMMONCONTROLSEX groups{sizeof groups, group};
    InitCommonControlsEx(&groups);
    return name;
}

std::vector<std::wstring_view> LongestOf(const std::vector<std::wstring_view>& lines)
{
    std::vector<std::wstring_view> longest(std::min(kMeasuredLines, lines.size()));
    std::partial_sort_copy(
        lines.begin(), lines.end(), longest.begin(), longest.end(),
        [](std::wstring_view a, std::wstring_view b) { return a.size() > b.size(); });
    return longest;
}

Control::Control(Form& form, const TwipRect& place, const wchar_t* windowClass, const wchar_t* text,
                 DWORD style, DWORD extendedStyle)
    : form_(form), place_(place)
{
    const bool isDefault =
        (style & BS_TYPEMASK) == BS_DEFPUSHBUTTON && wcscmp(windowClass, WC_BUTTONW) == 0;
    const UINT_PTR id = isDefault ? IDOK : kFirstControlId + form.controls_.size();
    window_ = CreateWindowExW(extendedStyle, windowClass, text, style | WS_CHILD | WS_VISIBLE, 0, 0,
                              0, 0, form.Window(), reinterpret_cast<HMENU>(id),
                              GetModuleHandleW(nullptr), nullptr);
    if (!window_) RaiseLastError();
    form.controls_.push_back(this);
    SetFont(form.CurrentFont());
    Move(place);
}

Control::~Control()
{
    std::erase(form_.controls_, this);
    TakeAccessibleName();
    if (window_) DestroyWindow(window_);
}

void Control::Move(const TwipRect& place)
{
    place_ = place;
    form_.Place(*this);
}

void Control::SetText(const std::wstring& text)
{
    SetWindowTextW(window_, text.c_str());
}

void Control::Enable(bool enabled)
{
    EnableWindow(window_, enabled);
}

void Control::SetVisible(bool visible)
{
    ShowWindow(window_, visible ? SW_SHOWNA : SW_HIDE);
}

void Control::Focus()
{
    SetFocus(window_);
    form_.Reveal(*this);
}

void Control::PlaceLast() noexcept
{
    SetWindowPos(window_, HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

void Control::SetFont(const FontSpec& font)
{
    font_ = font;
    if (HFONT handle = form_.FontHandle(font))
        Send(WM_SETFONT, reinterpret_cast<WPARAM>(handle), TRUE);
}

void Control::SetAccessibleName(const std::wstring& name)
{
    if (SUCCEEDED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER,
                                   IID_IAccPropServices,
                                   reinterpret_cast<void**>(names_.GetAddressOf()))))
        names_->SetHwndPropStr(window_, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF,
                               PROPID_ACC_NAME, name.c_str());
}

// The platform keeps a name for its window's handle, which another window may get later.
void Control::TakeAccessibleName() noexcept
{
    if (names_)
        names_->ClearHwndProps(window_, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF,
                               &PROPID_ACC_NAME, 1);
    names_.Reset();
}

void Control::SetTextColor(COLORREF color)
{
    const bool ofSystem = color != CLR_DEFAULT && (color & 0x80000000U) != 0;
    textColor_ = ofSystem ? GetSysColor(static_cast<int>(color & 0xFFU)) : color;
    InvalidateRect(window_, nullptr, TRUE);
}

float Control::LineHeight() const
{
    TEXTMETRICW metrics{};
    GetTextMetricsW(MeasuringDevice(*this), &metrics);
    return form_.ToTwips(metrics.tmHeight);
}

Label::Label(Form& form, const TwipRect& place, const wchar_t* text, DWORD style)
    : Control(form, place, WC_STATICW, text, style)
{
}

float Label::HeightOfText() const
{
    const std::wstring text = WindowText(Window());
    RECT box{0, 0, Owner().ToPixels(Place().width), 0};
    MeasuringDevice device(*this);
    DrawTextW(device, text.c_str(), -1, &box,
              DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX | DT_EXPANDTABS);
    return Owner().ToTwips(box.bottom);
}

Button::Button(Form& form, const TwipRect& place, const wchar_t* text,
               std::function<void()> onClick, Kind kind)
    : Control(form, place, WC_BUTTONW, text,
              WS_TABSTOP | (kind == Kind::Default ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON)),
      onClick_(std::move(onClick))
{
}

float Button::WidthOfText() const
{
    SIZE ideal{};
    Send(BCM_GETIDEALSIZE, 0, reinterpret_cast<LPARAM>(&ideal));
    return Owner().ToTwips(ideal.cx) + kCaptionPadding;
}

void Button::OnCommand(WORD code)
{
    if (code == BN_CLICKED) onClick_();
}

TextBox::TextBox(Form& form, const TwipRect& place, DWORD style, std::function<void(bool)> onFocus)
    : Control(form, place, WC_EDITW, L"",
              WS_TABSTOP | style |
                  static_cast<DWORD>(style & ES_MULTILINE ? ES_AUTOVSCROLL : ES_AUTOHSCROLL),
              WS_EX_CLIENTEDGE),
      onFocus_(std::move(onFocus))
{
}

std::wstring TextBox::Text() const
{
    return WindowText(Window());
}

void TextBox::Select(int first, int last)
{
    const int end = GetWindowTextLengthW(Window());
    Send(EM_SETSEL, static_cast<WPARAM>(first < 0 ? end : first), last < 0 ? end : last);
    Send(EM_SCROLLCARET);
}

void TextBox::OnCommand(WORD code)
{
    if (onFocus_ && (code == EN_SETFOCUS || code == EN_KILLFOCUS)) onFocus_(code == EN_SETFOCUS);
}

Frame::Frame(Form& form, const TwipRect& place)
    : Control(form, place, WC_BUTTONW, L"", BS_GROUPBOX, WS_EX_TRANSPARENT)
{
}

ListBox::ListBox(Form& form, const TwipRect& place, Kind kind, std::function<void()> onDoubleClick)
    : Control(form, place, WC_LISTBOXW, L"",
              WS_TABSTOP | WS_VSCROLL | WS_HSCROLL | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT |
                  LBS_USETABSTOPS | (kind == Kind::Multiple ? LBS_EXTENDEDSEL : 0),
              WS_EX_CLIENTEDGE),
      kind_(kind), onDoubleClick_(std::move(onDoubleClick))
{
}

void ListBox::Fill(const std::vector<std::wstring_view>& lines)
{
    size_t units = 0;
    for (std::wstring_view line : lines)
        units += line.size() + 1;
    Send(WM_SETREDRAW, FALSE);
    Send(LB_RESETCONTENT);
    Send(LB_INITSTORAGE, lines.size(), static_cast<LPARAM>(units * sizeof(wchar_t)));
    for (std::wstring_view line : lines)
        Send(LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.data()));
    Send(WM_SETREDRAW, TRUE);

    const auto longest = LongestOf(lines);
    longest_.assign(longest.begin(), longest.end());
    FitScrollBar();
}

void ListBox::Select(const std::vector<int>& indices)
{
    const int first = indices.empty() ? -1 : indices.front();
    if (kind_ == Kind::Single) {
        Send(LB_SETCURSEL, static_cast<WPARAM>(first));
    } else {
        Send(LB_SETSEL, FALSE, -1);
        for (int index : indices)
            Send(LB_SETSEL, TRUE, index);
        if (first < 0) return;
        Send(LB_SETANCHORINDEX, static_cast<WPARAM>(first));
        Send(LB_SETCARETINDEX, static_cast<WPARAM>(first));
    }
}

std::vector<int> ListBox::Selected() const
{
    if (kind_ == Kind::Single) {
        const auto current = static_cast<int>(Send(LB_GETCURSEL));
        return current == LB_ERR ? std::vector<int>() : std::vector<int>{current};
    }
    std::vector<int> indices(static_cast<size_t>(Send(LB_GETSELCOUNT)));
    Send(LB_GETSELITEMS, indices.size(), reinterpret_cast<LPARAM>(indices.data()));
    return indices;
}

void ListBox::OnCommand(WORD code)
{
    if (code == LBN_DBLCLK && onDoubleClick_) onDoubleClick_();
}

void ListBox::SetFont(const FontSpec& font)
{
    Control::SetFont(font);
    FitScrollBar();
}

// Adds what was typed to the search and goes to the line that begins with it. The control's own
// search knows the last character only. False leaves the character to the control.
bool ListBox::OnCharacter(wchar_t unit)
{
    const auto now = static_cast<DWORD>(GetMessageTime());
    if (now - typedAt_ > kTypingPauseMilliseconds) typed_.clear();
    typedAt_ = now;
    if (unit < L' ' || (unit == L' ' && typed_.empty())) return false; // space toggles a line
    typed_ += unit;

    // The same character again and again goes from line to line; a longer beginning may stay.
    const bool repeated = typed_.find_first_not_of(unit) == std::wstring::npos;
    const std::wstring beginning = repeated ? std::wstring(1, unit) : typed_;
    const auto current = Send(kind_ == Kind::Single ? LB_GETCURSEL : LB_GETCARETINDEX);
    const auto after = repeated ? current : current - 1;
    const auto found = Send(LB_FINDSTRING, static_cast<WPARAM>(std::max<LRESULT>(after, -1)),
                            reinterpret_cast<LPARAM>(beginning.c_str()));
    if (found != LB_ERR) Select({static_cast<int>(found)});
    return true;
}

// Lets the user scroll to the end of the widest line.
void ListBox::FitScrollBar() noexcept
{
    const MeasuringDevice device(*this);
    int widest = 0;
    for (const std::wstring& line : longest_)
        widest = std::max<int>(
            widest, LOWORD(GetTabbedTextExtentW(device, line.c_str(), static_cast<int>(line.size()),
                                                0, nullptr)));
    const int margin = GetSystemMetrics(SM_CXEDGE) * 2;
    Send(LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(widest + margin));
}

DropDownList::DropDownList(Form& form, const TwipRect& place, DWORD style,
                           std::function<void(bool)> onFocus)
    : Control(form, {place.left, place.top, place.width, kDroppedTwips}, WC_COMBOBOXW, L"",
              WS_TABSTOP | WS_VSCROLL | style),
      onFocus_(std::move(onFocus))
{
}

void DropDownList::OnCommand(WORD code)
{
    if (onFocus_ && (code == CBN_SETFOCUS || code == CBN_KILLFOCUS)) onFocus_(code == CBN_SETFOCUS);
}

void DropDownList::Add(const std::wstring& line)
{
    Send(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.c_str()));
    FitList(line);
}

void DropDownList::Replace(int index, const std::wstring& line)
{
    const int selected = Selected();
    Send(CB_DELETESTRING, static_cast<WPARAM>(index));
    Send(CB_INSERTSTRING, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(line.c_str()));
    if (selected == index) Select(index);
    FitList(line);
}

void DropDownList::Select(int index)
{
    Send(CB_SETCURSEL, static_cast<WPARAM>(index));
}

int DropDownList::Selected() const
{
    return static_cast<int>(Send(CB_GETCURSEL));
}

void DropDownList::SetCue(const std::wstring& text)
{
    Send(CB_SETCUEBANNER, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

void DropDownList::SetClosedHeight(float height)
{
    constexpr auto kSelection = static_cast<WPARAM>(-1); // the item that is seen
    RECT place{};
    GetWindowRect(Window(), &place);
    const LRESULT frame = place.bottom - place.top - Send(CB_GETITEMHEIGHT, kSelection);
    Send(CB_SETITEMHEIGHT, kSelection, Owner().ToPixels(height) - frame);
}

// The open list is as wide as its widest line.
void DropDownList::FitList(const std::wstring& line)
{
    SIZE size{};
    const MeasuringDevice device(*this);
    GetTextExtentPoint32W(device, line.c_str(), static_cast<int>(line.size()), &size);
    const LRESULT wanted = size.cx + GetSystemMetrics(SM_CXVSCROLL) + kLinePadding;
    if (wanted > Send(CB_GETDROPPEDWIDTH)) Send(CB_SETDROPPEDWIDTH, static_cast<WPARAM>(wanted));
}

DateTimePicker::DateTimePicker(Form& form, const TwipRect& place, Kind kind)
    : Control(form, place, CommonClass(ICC_DATE_CLASSES, DATETIMEPICK_CLASSW), L"",
              WS_TABSTOP |
                  static_cast<DWORD>(kind == Kind::Time ? DTS_TIMEFORMAT : DTS_SHORTDATEFORMAT))
{
}

void DateTimePicker::Pick(const SYSTEMTIME& time)
{
    Send(DTM_SETSYSTEMTIME, GDT_VALID, reinterpret_cast<LPARAM>(&time));
}

SYSTEMTIME DateTimePicker::Picked() const
{
    SYSTEMTIME time{};
    Send(DTM_GETSYSTEMTIME, 0, reinterpret_cast<LPARAM>(&time));
    return time;
}

LRESULT DateTimePicker::OnNotify(NMHDR& notification)
{
    if (notification.code == DTN_DROPDOWN) droppedDown_ = true;
    if (notification.code == DTN_CLOSEUP) droppedDown_ = false;
    return 0;
}

} // namespace quill
