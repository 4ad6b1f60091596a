// What the hidden window of a Notice receives.
#pragma once

#include "core/Platform.h"

namespace quill {

class Notice;

// Subclasses the window, so that the object hears of clicks on its icon and of a new taskbar.
bool InstallNoticeHook(HWND window, Notice& notice) noexcept;
void RemoveNoticeHook(HWND window, Notice& notice) noexcept;

} // namespace quill
