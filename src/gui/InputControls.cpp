#include "gui/InputControls.h"

#include "gui/MessageHook.h"
#include "gui/MessageNotify.h"

namespace quill {

namespace {

constexpr float kBalloonWidth = 6000; // twips; longer texts wrap
constexpr wchar_t kSelectAll = 1;     // what Ctrl+A types

// The caption as a button shows it.
std::wstring Shown(const std::wstring& caption, bool accessKeys)
{
    std::wstring shown;
    for (const wchar_t unit : caption)
        shown.append(unit == L'&' && !accessKeys ? 2 : 1, unit);
    return shown;
}

TOOLINFOW BalloonTool(HWND owner)
{
    TOOLINFOW tool{};
    tool.cbSize = sizeof tool;
    tool.uFlags = TTF_TRACK | TTF_ABSOLUTE;
    tool.hwnd = owner;
    return tool;
}

} // namespace

CheckBox::CheckBox(Form& form, const std::wstring& caption, bool accessKeys, FocusHandler onFocus)
    : Control(form, {}, WC_BUTTONW, Shown(caption, accessKeys).c_str(),
              WS_TABSTOP | BS_AUTOCHECKBOX | BS_MULTILINE | BS_NOTIFY),
      onFocus_(std::move(onFocus))
{
}

void CheckBox::OnCommand(WORD code)
{
    if (code == BN_SETFOCUS || code == BN_KILLFOCUS) onFocus_(code == BN_SETFOCUS);
}

LinesBox::LinesBox(Form& form, DWORD style, FocusHandler onFocus)
    : TextBox(form, {}, style | ES_MULTILINE | ES_WANTRETURN | WS_VSCROLL, std::move(onFocus))
{
    InstallHook(Window(), this, OnMessage);
}

LinesBox::~LinesBox()
{
    if (Window()) RemoveHook(Window(), this, OnMessage);
}

// The control asks for all keys; it gets only Enter.
LRESULT CALLBACK LinesBox::OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                     UINT_PTR, DWORD_PTR) noexcept
{
    const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
    if (message != WM_GETDLGCODE) return result;
    const auto* key = reinterpret_cast<const MSG*>(lParam);
    return key && key->message == WM_KEYDOWN && key->wParam == VK_RETURN
               ? result
               : result & ~(DLGC_WANTALLKEYS | DLGC_WANTTAB);
}

// Older versions of the control select all in a single line only.
bool LinesBox::OnCharacter(wchar_t unit)
{
    if (unit == kSelectAll) Select(0, -1);
    return unit == kSelectAll;
}

ComboBox::ComboBox(Form& form, FocusHandler onFocus)
    : DropDownList(form, {}, CBS_DROPDOWN | CBS_AUTOHSCROLL, std::move(onFocus))
{
}

HWND ComboBox::Edit() const noexcept
{
    COMBOBOXINFO parts{};
    parts.cbSize = sizeof parts;
    GetComboBoxInfo(Window(), &parts);
    return parts.hwndItem;
}

DateBox::DateBox(Form& form, FocusHandler onFocus)
    : DateTimePicker(form, {}, Kind::Date), onFocus_(std::move(onFocus))
{
}

void DateBox::SetRange(const SYSTEMTIME* first, const SYSTEMTIME* last)
{
    const SYSTEMTIME range[]{first ? *first : SYSTEMTIME{}, last ? *last : SYSTEMTIME{}};
    Send(DTM_SETRANGE, (first ? GDTR_MIN : 0) | (last ? GDTR_MAX : 0),
         reinterpret_cast<LPARAM>(range));
}

LRESULT DateBox::OnNotify(NMHDR& notification)
{
    if (notification.code == NM_SETFOCUS || notification.code == NM_KILLFOCUS)
        onFocus_(notification.code == NM_SETFOCUS);
    return DateTimePicker::OnNotify(notification);
}

HWND MakeTipWindow(const Form& form, float width, bool balloons)
{
    const DWORD style =
        WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX | static_cast<DWORD>(balloons ? TTS_BALLOON : 0);
    const HWND window = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, style, 0, 0, 0, 0,
                                        form.Window(), nullptr, GetModuleHandleW(nullptr), nullptr);
    if (window) SendMessageW(window, TTM_SETMAXTIPWIDTH, 0, form.ToPixels(width));
    return window;
}

void Balloon::Show(const Form& form, HWND control, const std::wstring& title,
                   const std::wstring& text)
{
    TOOLINFOW tool = BalloonTool(form.Window());
    if (!window_) {
        window_ = MakeTipWindow(form, kBalloonWidth, true);
        if (!window_) return;
        SendMessageW(window_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    }
    RECT place{};
    GetWindowRect(control, &place);
    tool.lpszText = const_cast<wchar_t*>(text.c_str());
    SendMessageW(window_, TTM_SETTITLEW, TTI_ERROR, reinterpret_cast<LPARAM>(title.c_str()));
    SendMessageW(window_, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&tool));
    SendMessageW(window_, TTM_TRACKPOSITION, 0,
                 MAKELPARAM((place.left + place.right) / 2, place.bottom));
    SendMessageW(window_, TTM_TRACKACTIVATE, TRUE, reinterpret_cast<LPARAM>(&tool));
}

void Balloon::Hide() noexcept
{
    if (!window_) return;
    TOOLINFOW tool = BalloonTool(GetWindow(window_, GW_OWNER));
    SendMessageW(window_, TTM_TRACKACTIVATE, FALSE, reinterpret_cast<LPARAM>(&tool));
}

} // namespace quill
