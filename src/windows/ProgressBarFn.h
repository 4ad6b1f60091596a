// Routines for the native progress bar: each sends one message to it. With a null handle they
// do nothing.
#pragma once

#include "core/Platform.h"

namespace quill {

// A bar at this place of its parent, in pixels, with these PBS_ bits; null when the platform
// refuses. `classic` disables theming: colours show on a classic bar only.
HWND CreateBar(HWND parent, LONG style, const RECT& place, bool classic);

// The PBS_ bits in place of the old ones.
void SetBarStyle(HWND bar, LONG style);

inline void SetBarRange(HWND bar, SHORT minimum, SHORT maximum) noexcept
{
    SendMessageW(bar, PBM_SETRANGE, 0, MAKELPARAM(minimum, maximum));
}
inline void SetBarPosition(HWND bar, int position) noexcept
{
    SendMessageW(bar, PBM_SETPOS, static_cast<WPARAM>(position), 0);
}
inline void MoveBarBy(HWND bar, int increment) noexcept
{
    SendMessageW(bar, PBM_DELTAPOS, static_cast<WPARAM>(increment), 0);
}
inline void SetBarStep(HWND bar, int step) noexcept
{
    SendMessageW(bar, PBM_SETSTEP, static_cast<WPARAM>(step), 0);
}
inline void StepBar(HWND bar) noexcept
{
    SendMessageW(bar, PBM_STEPIT, 0, 0);
}
inline SHORT BarPosition(HWND bar) noexcept
{
    return static_cast<SHORT>(SendMessageW(bar, PBM_GETPOS, 0, 0));
}
inline void SetBarColor(HWND bar, LONG color) noexcept
{
    SendMessageW(bar, PBM_SETBARCOLOR, 0, color);
}
inline void SetBarBackColor(HWND bar, LONG color) noexcept
{
    SendMessageW(bar, PBM_SETBKCOLOR, 0, color);
}
inline void SetBarMarquee(HWND bar, bool running, int milliseconds) noexcept
{
    SendMessageW(bar, PBM_SETMARQUEE, running, milliseconds);
}
inline void SetBarState(HWND bar, int state) noexcept
{
    SendMessageW(bar, PBM_SETSTATE, static_cast<WPARAM>(state), 0);
}

} // namespace quill
