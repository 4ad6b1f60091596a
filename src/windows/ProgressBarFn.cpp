#include "windows/ProgressBarFn.h"

#include "gui/windowfn.h"

namespace quill {

namespace {

constexpr LONG kChild = WS_CHILD | WS_VISIBLE;

// Place and size of a new bar, in pixels.
constexpr int kLeft = 10;
constexpr int kWidth = 304;
constexpr int kHeight = 20;

} // namespace

HWND CreateBar(HWND parent, LONG style, int top, bool classic)
{
    using SetWindowThemeFunction = HRESULT WINAPI(HWND, LPCWSTR, LPCWSTR);
    const HWND bar =
        CreateWindowExA(0, PROGRESS_CLASSA, nullptr, static_cast<DWORD>(style | kChild), kLeft, top,
                        kWidth, kHeight, parent, nullptr, GetModuleHandleW(nullptr), nullptr);
    if (!bar) return nullptr;
    ShowWindow(bar, SW_SHOWNORMAL);
    if (classic) {
        static const auto setWindowTheme =
            FindSystemFunction<SetWindowThemeFunction>(L"uxtheme.dll", "SetWindowTheme");
        if (setWindowTheme) setWindowTheme(bar, L"", L"");
    }
    return bar;
}

void SetBarStyle(HWND bar, LONG style)
{
    if (bar) SetWindowStyle(bar, style | kChild);
}

} // namespace quill
