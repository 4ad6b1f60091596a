// Routines for window handles: foreground, topmost, styles, flashing, and the wait for a form.
// Results of the platform calls are not checked unless said.
#pragma once

#include <functional>

#include "core/Platform.h"

namespace quill {

// Titles that scripts give are cut to this length, in UTF-16 units.
inline constexpr size_t kTitleLimit = 256;

// Shows the window and makes it the foreground window although its server is in the background,
// then places it topmost or on top of the others. Where the platform refuses the foreground, the
// window comes above the others without being active or topmost, and its caption flashes until the
// user turns to it. Does nothing when the window has the foreground.
void BringToFront(HWND window, bool topmost);

// Lets any process take the foreground until the next input (AllowSetForegroundWindow): after a
// dialog, the next window is the script's. Without the foreground it does nothing.
void HandForegroundOn();

// Places the window among the topmost ones, or among the others.
void SetTopmost(HWND window, bool topmost);

// Flashes caption and taskbar button: 1 to 9 times, from 10 on until the window comes to the
// foreground; 0 or less stops it.
void FlashCaption(HWND window, long count);

// Has the frame drawn anew after a change of style.
void RefreshFrame(HWND window);

// Outer size in pixels; the place stays.
void ResizeWindow(HWND window, int width, int height);

// Replaces the style and draws the frame anew; a refused change leaves the frame alone.
void SetWindowStyle(HWND window, LONG style);

// Adds bits to the style, or to the extended style.
void AddWindowStyle(HWND window, LONG bits, bool extended, bool refresh);

// The caption of a window, the text of a control.
std::wstring WindowText(HWND window);

// The number of a message that the shell sends under this name (RegisterWindowMessage), let through
// to the window of a server that runs with higher rights than the shell
// (ChangeWindowMessageFilterEx).
UINT HearShell(HWND window, const wchar_t* name);

// One round of the wait for a form to close: dispatches all messages, then sleeps for at most 55
// ms, less when input or a call comes in. False when the thread is to end.
bool WaitStep();

// Which loops of the platform's the thread is in, where the user operates a menu or drags a window:
// GUI_INMENUMODE, GUI_INMOVESIZE.
DWORD PlatformLoops() noexcept;

// Dispatches messages while `waiting` is true, for at most this many milliseconds (less than 0:
// without limit, 0: not at all), or until the thread is to end. Called by a client while the user
// operates a menu or drags a window, it returns after at most 55 ms: the platform's loop needs the
// input, and cannot continue before the call returns.
void WaitWhile(LONG milliseconds, const std::function<bool()>& waiting);

// A seam: the foreground, and the ways to ask for attention.
struct Foreground {
    std::function<HWND()> get = GetForegroundWindow;
    std::function<BOOL(HWND)> set = SetForegroundWindow;
    std::function<BOOL(DWORD)> allow = AllowSetForegroundWindow; // a process
    std::function<BOOL(FLASHWINFO*)> flash = FlashWindowEx;
    std::function<BOOL(UINT)> beep = MessageBeep;
};

} // namespace quill
