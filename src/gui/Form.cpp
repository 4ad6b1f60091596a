#include "gui/Form.h"

#include <algorithm>
#include <cmath>

#include "core/Apartment.h"
#include "core/AutomationError.h"
#include "core/MessagePump.h"
#include "gui/Controls.h"
#include "gui/windowfn.h"

namespace quill {

namespace {

constexpr float kTwipsPerInch = 1440;

// Fonts that are kept although no control uses them any more.
constexpr size_t kSpareFonts = 8;

constexpr UINT kPosted = WM_APP;

// Pixels per inch of the window's monitor; of the whole system before Windows 10.
int ResolutionOf(HWND window) noexcept
{
    using GetDpiForWindowFunction = UINT WINAPI(HWND);
    static const auto getDpiForWindow =
        FindSystemFunction<GetDpiForWindowFunction>(L"user32.dll", "GetDpiForWindow");
    if (getDpiForWindow) return static_cast<int>(getDpiForWindow(window));
    const HDC screen = GetDC(nullptr);
    const int resolution = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return resolution;
}

// The room for windows on the monitor where the user works.
RECT WorkArea() noexcept
{
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(GetForegroundWindow(), MONITOR_DEFAULTTOPRIMARY), &monitor);
    return monitor.rcWork;
}

} // namespace

ATOM Form::WindowClass()
{
    static const ATOM atom = [] {
        const HINSTANCE module = GetModuleHandleW(nullptr);
        WNDCLASSEXW windowClass{};
        windowClass.cbSize = sizeof windowClass;
        windowClass.lpfnWndProc = WindowProcedure;
        windowClass.hInstance = module;
        windowClass.hIcon = LoadIconW(module, MAKEINTRESOURCEW(1));
        windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
        windowClass.lpszClassName = L"quill.Form";
        return RegisterClassExW(&windowClass);
    }();
    return atom;
}

Form::Form(const wchar_t* caption, TwipSize outer, DWORD style) : font_(kDesignFont)
{
    ThisApartment().preview = PreviewMessage;
    CreateWindowExW(WS_EX_CONTROLPARENT, MAKEINTATOM(WindowClass()), caption, style, 0, 0, 0, 0,
                    nullptr, nullptr, GetModuleHandleW(nullptr), this);
    if (!window_) RaiseLastError();
    resolution_ = ResolutionOf(window_);
    PlaceAtCentre(outer);
}

Form::~Form()
{
    Unload();
}

void Form::SetCaption(const std::wstring& caption)
{
    SetWindowTextW(window_, caption.c_str());
}

int Form::ToPixels(float twips) const noexcept
{
    return static_cast<int>(std::lround(twips * static_cast<float>(resolution_) / kTwipsPerInch));
}

float Form::ToTwips(int pixels) const noexcept
{
    return static_cast<float>(pixels) * kTwipsPerInch / static_cast<float>(resolution_);
}

TwipSize Form::OuterSize() const
{
    RECT outer{};
    GetWindowRect(window_, &outer);
    return {ToTwips(outer.right - outer.left), ToTwips(outer.bottom - outer.top)};
}

TwipSize Form::InnerSize() const
{
    RECT inner{};
    GetClientRect(window_, &inner);
    return {ToTwips(inner.right), ToTwips(inner.bottom)};
}

void Form::PlaceAtCentre(TwipSize outer)
{
    const RECT area = WorkArea();
    const int width = std::min<int>(ToPixels(outer.width), area.right - area.left);
    const int height = std::min<int>(ToPixels(outer.height), area.bottom - area.top);
    // Created inactive: the controls that would take the focus do not exist yet.
    SetWindowPos(window_, nullptr, (area.left + area.right - width) / 2,
                 (area.top + area.bottom - height) / 2, width, height,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

TwipSize Form::ScreenRoom() const
{
    const RECT area = WorkArea();
    return {ToTwips(area.right - area.left), ToTwips(area.bottom - area.top)};
}

HFONT Form::FontHandle(const FontSpec& font)
{
    for (const auto& [spec, handle] : fonts_)
        if (spec == font) return handle.get();
    // A script may set one font after the other.
    if (fonts_.size() > kSpareFonts)
        std::erase_if(fonts_, [this](const auto& entry) { return !InUse(entry.first); });
    const int height = -MulDiv(font.points, resolution_, 72);
    Font handle(CreateFontW(height, 0, 0, 0, font.bold ? FW_BOLD : FW_NORMAL, FALSE, FALSE, FALSE,
                            DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                            DEFAULT_QUALITY, DEFAULT_PITCH | FF_DONTCARE, font.name.c_str()));
    if (!handle) return nullptr;
    return fonts_.emplace_back(font, std::move(handle)).second.get();
}

bool Form::InUse(const FontSpec& font) const noexcept
{
    return font == font_ ||
           std::any_of(controls_.begin(), controls_.end(),
                       [&font](const Control* control) { return control->CurrentFont() == font; });
}

void Form::SetOuterSize(TwipSize outer)
{
    SetWindowPos(window_, nullptr, 0, 0, ToPixels(outer.width), ToPixels(outer.height),
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Form::SetFont(const FontSpec& font)
{
    font_ = font;
    for (Control* control : controls_)
        control->SetFont(font);
}

void Form::Show(bool topmost)
{
    OnResize(OuterSize());
    ShowWindow(window_, SW_SHOWNORMAL);
    BringToFront(window_, topmost);
}

void Form::ShowModeless(bool topmost)
{
    OnResize(OuterSize());
    ShowWindow(window_, SW_SHOWNORMAL);
    if (topmost) SetTopmost(window_, true);
}

void Form::Unload() noexcept
{
    if (!window_) return;
    // Before the window goes; afterwards there is no foreground to hand on.
    if (Seam<Foreground>().get() == window_) HandForegroundOn();
    DestroyWindow(window_);
}

void Form::WaitUntilClosed(const std::function<bool()>& abandoned)
{
    while (!Closed()) {
        if (!WaitStep() || abandoned()) Unload();
    }
    if (failure_) std::rethrow_exception(failure_);
}

void Form::OnActivate()
{
    if (!IsWindow(lastFocus_)) lastFocus_ = GetNextDlgTabItem(window_, nullptr, FALSE);
    if (!lastFocus_) return; // a form may have nothing to focus
    const bool moves = GetFocus() != lastFocus_;
    SetFocus(lastFocus_);
    if (Control* control = FindControl(lastFocus_))
        moves ? OnFocusMoved(*control) : Reveal(*control);
}

Form* Form::FromWindow(HWND window) noexcept
{
    if (!window || GetClassLongW(window, GCW_ATOM) != WindowClass()) return nullptr;
    return reinterpret_cast<Form*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

bool Form::PreviewMessage(MSG& message)
{
    Form* form = FromWindow(GetAncestor(message.hwnd, GA_ROOT));
    if (!form) return false;
    const std::shared_ptr<Form> alive = form->weak_from_this().lock();
    if (form->OnPreview(message) || form->Closed()) return true;
    if (message.message == WM_CHAR) {
        Control* control = form->FindControl(message.hwnd);
        if (control && control->OnCharacter(static_cast<wchar_t>(message.wParam))) return true;
    }
    const HWND window = form->window_;
    const HWND focus = GetFocus();
    const bool isDialogKey = IsDialogMessageW(window, &message) != FALSE;
    // The key may have closed the form.
    form = FromWindow(window);
    Control* now = form && GetFocus() != focus ? form->FindControl(GetFocus()) : nullptr;
    if (now) form->OnFocusMoved(*now);
    return isDialogKey;
}

LRESULT CALLBACK Form::WindowProcedure(HWND window, UINT message, WPARAM wParam,
                                       LPARAM lParam) noexcept
{
    if (message == WM_NCCREATE) {
        const auto* creation = reinterpret_cast<const CREATESTRUCTW*>(lParam);
        SetWindowLongPtrW(window, GWLP_USERDATA,
                          reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
        FromWindow(window)->window_ = window;
    }
    Form* form = FromWindow(window);
    if (!form) return DefWindowProcW(window, message, wParam, lParam);
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        form->window_ = nullptr;
        for (Control* control : form->controls_)
            control->window_ = nullptr;
        return DefWindowProcW(window, message, wParam, lParam);
    }
    if (message == WM_DESTROY) // the controls are still there
        for (Control* control : form->controls_)
            control->TakeAccessibleName();
    const std::shared_ptr<Form> alive = form->weak_from_this().lock();
    try {
        return form->Handle(message, wParam, lParam);
    } catch (...) {
        // No exception may pass the platform's frames; the call that waits throws it again.
        form->failure_ = std::current_exception();
        form->Unload();
        return 0;
    }
}

LRESULT Form::Handle(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_ACTIVATE:
        if (LOWORD(wParam) == WA_INACTIVE)
            lastFocus_ = GetFocus();
        else if (HIWORD(wParam) == 0) // not minimised
            OnActivate();
        return 0;
    case WM_SETFOCUS: OnActivate(); return 0;
    case WM_SIZE:
        if (wParam == SIZE_MINIMIZED) return 0;
        OnResize(OuterSize());
        return 0;
    case kPosted: OnPosted(wParam); return 0;
    case WM_WINDOWPOSCHANGING: // the platform would keep to the limits
        return SetsSizeBack() ? 0 : DefWindowProcW(window_, message, wParam, lParam);
    case WM_GETMINMAXINFO: LimitSize(*reinterpret_cast<MINMAXINFO*>(lParam)); return 0;
    case WM_DPICHANGED:
        ChangeResolution(LOWORD(wParam), *reinterpret_cast<const RECT*>(lParam));
        return 0;
    case DM_GETDEFID: // the dialog manager asks which button Enter presses
        return GetDlgItem(window_, IDOK) ? MAKELRESULT(IDOK, DC_HASDEFID) : 0;
    case WM_NEXTDLGCTL: // a label's access key leads to the label, and on from there
        SetFocus(LOWORD(lParam) ? reinterpret_cast<HWND>(wParam)
                                : GetNextDlgTabItem(window_, GetFocus(), wParam != 0));
        return 0;
    case WM_COMMAND:
        // Esc arrives here as IDCANCEL, from no control, and means nothing.
        if (Control* control = FindControl(reinterpret_cast<HWND>(lParam)))
            control->OnCommand(HIWORD(wParam));
        return 0;
    case WM_NOTIFY: {
        auto& notification = *reinterpret_cast<NMHDR*>(lParam);
        if (Control* control = FindControl(notification.hwndFrom))
            return control->OnNotify(notification);
        return DefWindowProcW(window_, message, wParam, lParam);
    }
    case WM_CTLCOLORSTATIC: // also edit controls that are locked
    case WM_CTLCOLOREDIT: {
        const LRESULT brush = DefWindowProcW(window_, message, wParam, lParam);
        const Control* control = FindControl(reinterpret_cast<HWND>(lParam));
        if (control && control->textColor_ != CLR_DEFAULT)
            ::SetTextColor(reinterpret_cast<HDC>(wParam), control->textColor_);
        return brush;
    }
    case WM_CLOSE: OnClose(); return 0;
    default: return DefWindowProcW(window_, message, wParam, lParam);
    }
}

Control* Form::FindControl(HWND window) const noexcept
{
    for (Control* control : controls_)
        if (control->window_ == window || (window && IsChild(control->window_, window)))
            return control;
    return nullptr;
}

void Form::LimitSize(MINMAXINFO& limits) const
{
    const TwipSize minimum = MinimumSize();
    limits.ptMinTrackSize.x = std::max<LONG>(limits.ptMinTrackSize.x, ToPixels(minimum.width));
    limits.ptMinTrackSize.y = std::max<LONG>(limits.ptMinTrackSize.y, ToPixels(minimum.height));
    const TwipSize maximum = MaximumSize();
    if (maximum.width > 0) limits.ptMaxTrackSize.x = ToPixels(maximum.width);
    if (maximum.height > 0) limits.ptMaxTrackSize.y = ToPixels(maximum.height);
}

void Form::Place(const Control& control)
{
    const TwipRect& place = control.Place();
    const int left = ToPixels(place.left);
    const int top = ToPixels(place.top);
    // Drawn anew as a whole: text that wraps looks different at each width.
    SetWindowPos(control.Window(), nullptr, left, top - Scrolled(),
                 ToPixels(place.left + place.width) - left,
                 ToPixels(place.top + place.height) - top,
                 SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOCOPYBITS);
}

void Form::SetFirstFocus(const Control& control)
{
    lastFocus_ = control.Window();
}

void Form::PostTo(HWND form, WPARAM value) noexcept
{
    PostMessageW(form, kPosted, value, 0);
}

void Form::ChangeResolution(WPARAM resolution, const RECT& suggested)
{
    resolution_ = static_cast<int>(resolution);
    const auto oldFonts = std::move(fonts_); // in use until the controls have their new ones
    fonts_.clear();
    for (Control* control : controls_) {
        control->SetFont(control->CurrentFont());
        control->Move(control->Place());
    }
    SetWindowPos(window_, nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
                 suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace quill
