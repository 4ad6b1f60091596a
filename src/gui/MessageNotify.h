// Notifications of common controls (WM_NOTIFY).
#pragma once

#include "core/Platform.h"

namespace quill {

// The notification code that the message's lParam leads to.
inline UINT NotificationCode(LPARAM lParam) noexcept
{
    return reinterpret_cast<const NMHDR*>(lParam)->code;
}

} // namespace quill
