#include "gui/windowfn.h"

#include <algorithm>

#include "core/Apartment.h"

namespace quill {

namespace {

constexpr DWORD kStep = 55; // milliseconds, of a wait

// Places the window above all that are not topmost. The way through the topmost ones needs neither
// the foreground nor an activation.
void RaiseInactive(HWND window)
{
    constexpr UINT flags = SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE;
    const bool stays = (GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
    SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, flags);
    if (!stays) SetWindowPos(window, HWND_NOTOPMOST, 0, 0, 0, 0, flags);
}

} // namespace

void BringToFront(HWND window, bool topmost)
{
    const Foreground& foreground = Seam<Foreground>();
    const HWND front = foreground.get();
    if (front == window) return; // Kept as published: not made topmost either.

    const DWORD frontThread = GetWindowThreadProcessId(front, nullptr);
    const DWORD ownThread = GetWindowThreadProcessId(window, nullptr);
    if (frontThread == 0 || ownThread == 0) return;

    // The foreground is the foreground thread's to give: share its input for the moment.
    const bool attach = frontThread != ownThread;
    if (attach) AttachThreadInput(frontThread, ownThread, TRUE);
    const bool granted = foreground.set(window);
    if (attach) AttachThreadInput(frontThread, ownThread, FALSE);

    ShowWindow(window, IsIconic(window) ? SW_RESTORE : SW_SHOW);
    if (granted) {
        SetWindowPos(window, topmost ? HWND_TOPMOST : HWND_TOP, 0, 0, 0, 0,
                     SWP_NOSIZE | SWP_NOMOVE);
    } else {
        RaiseInactive(window);
        FlashCaption(window, 10);
    }
}

void HandForegroundOn()
{
    Seam<Foreground>().allow(ASFW_ANY);
}

void SetTopmost(HWND window, bool topmost)
{
    SetWindowPos(window, topmost ? HWND_TOPMOST : HWND_NOTOPMOST, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE);
}

void FlashCaption(HWND window, long count)
{
    FLASHWINFO flash{sizeof flash, window, FLASHW_STOP, 0, 0};
    if (count > 9) {
        flash.dwFlags = FLASHW_ALL | FLASHW_TIMERNOFG;
    } else if (count > 0) {
        flash.dwFlags = FLASHW_ALL;
        flash.uCount = static_cast<UINT>(count);
    }
    Seam<Foreground>().flash(&flash);
}

void RefreshFrame(HWND window)
{
    SetWindowPos(window, nullptr, 0, 0, 0, 0,
                 SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_FRAMECHANGED);
}

void ResizeWindow(HWND window, int width, int height)
{
    SetWindowPos(window, nullptr, 0, 0, width, height,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOOWNERZORDER);
}

void SetWindowStyle(HWND window, LONG style)
{
    SetLastError(ERROR_SUCCESS);
    if (SetWindowLongW(window, GWL_STYLE, style) == 0 && GetLastError() != ERROR_SUCCESS) return;
    SetWindowPos(window, nullptr, 0, 0, 0, 0,
                 SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_FRAMECHANGED | SWP_NOOWNERZORDER);
}

void AddWindowStyle(HWND window, LONG bits, bool extended, bool refresh)
{
    const int index = extended ? GWL_EXSTYLE : GWL_STYLE;
    SetWindowLongW(window, index, GetWindowLongW(window, index) | bits);
    if (refresh) RefreshFrame(window);
}

std::wstring WindowText(HWND window)
{
    std::wstring text(static_cast<size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    const int length = GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
    text.resize(static_cast<size_t>(length));
    return text;
}

UINT HearShell(HWND window, const wchar_t* name)
{
    const UINT message = RegisterWindowMessageW(name);
    static const auto changeFilter = FindSystemFunction<decltype(ChangeWindowMessageFilterEx)>(
        L"user32.dll", "ChangeWindowMessageFilterEx");
    if (changeFilter) changeFilter(window, message, MSGFLT_ALLOW, nullptr);
    return message;
}

bool WaitStep()
{
    return WaitForMessages(kStep);
}

DWORD PlatformLoops() noexcept
{
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    if (!GetGUIThreadInfo(GetCurrentThreadId(), &info)) return 0;
    return info.flags & (GUI_INMENUMODE | GUI_INMOVESIZE);
}

void WaitWhile(LONG milliseconds, const std::function<bool()>& waiting)
{
    if (PlatformLoops() != 0 && waiting()) {
        MsgWaitForMultipleObjectsEx(0, nullptr, std::min(static_cast<DWORD>(milliseconds), kStep),
                                    QS_INPUT, MWMO_INPUTAVAILABLE);
        return;
    }
    const ULONGLONG begin = GetTickCount64();
    while (waiting()) {
        const auto waited = static_cast<LONGLONG>(GetTickCount64() - begin);
        if (milliseconds >= 0 && waited >= milliseconds) break;
        if (!WaitStep()) break;
    }
}

} // namespace quill
