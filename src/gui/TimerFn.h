// Timers of a thread without a window: the platform calls a procedure while the thread dispatches
// messages.
#pragma once

#include "core/Platform.h"

namespace quill {

// Starts a timer; returns its identifier, or 0 when the platform refuses. `procedure` is a
// TIMERPROC or the entry of a stub that leads to one with the object in front.
inline UINT_PTR StartTimer(UINT milliseconds, void* procedure) noexcept
{
    return SetTimer(nullptr, 0, milliseconds, reinterpret_cast<TIMERPROC>(procedure));
}

// False when there is no such timer.
inline bool StopTimer(UINT_PTR identifier) noexcept
{
    return KillTimer(nullptr, identifier) != FALSE;
}

} // namespace quill
