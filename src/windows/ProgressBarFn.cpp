#include "windows/ProgressBarFn.h"

#include "gui/windowfn.h"

namespace quill {

namespace {

constexpr LONG kChild = WS_CHILD | WS_VISIBLE;

} // namespace

HWND CreateBar(HWND parent, LONG style, const RECT& place, bool classic)
{
    using SetWindowThemeFunction = HRESULT WINAPI(HWND, LPCWSTR, LPCWSTR);
    const HWND bar =
        CreateWindowExA(0, PROGRESS_CLASSA, nullptr, static_cast<DWORD>(style | kChild), place.left,
                        place.top, place.right - place.left, place.bottom - place.top, parent,
                        nullptr, GetModuleHandleW(nullptr), nullptr);
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
