// Subclassing of windows: an object sees the messages of a window before the window does.
#pragma once

#include "core/Platform.h"

namespace quill {

// `procedure` is called with the owner as its subclass identifier. The owner removes the hook
// before it goes. False when the platform refuses.
inline bool InstallHook(HWND window, void* owner, SUBCLASSPROC procedure,
                        DWORD_PTR reference = 0) noexcept
{
    return SetWindowSubclass(window, procedure, reinterpret_cast<UINT_PTR>(owner), reference);
}

inline bool RemoveHook(HWND window, void* owner, SUBCLASSPROC procedure) noexcept
{
    return RemoveWindowSubclass(window, procedure, reinterpret_cast<UINT_PTR>(owner));
}

} // namespace quill
