// Calls to the notification area of the taskbar.
#pragma once

#include <functional>
#include <string>

#include "core/Platform.h"

namespace quill {

// What identifies an icon in the notification area: the window that it reports to, and a number.
struct TrayPlace {
    HWND window;
    UINT id;
};

// The message by which an icon reports, with the parameters of protocol version 4.
inline constexpr UINT kTrayCallback = 0x8008;

struct Balloon {
    const std::wstring& text;
    const std::wstring& title;
    DWORD infoFlags = 0; // NIIF_ values
    bool realTime = false;
    HICON icon = nullptr; // with NIIF_USER
};

// False if there is no taskbar or the call is refused.
bool AddTrayIcon(const TrayPlace& place, HICON icon, const std::wstring& tip);
bool ChangeTrayIcon(const TrayPlace& place, HICON icon);
bool ChangeTrayTip(const TrayPlace& place, const std::wstring& tip);
bool ShowTrayBalloon(const TrayPlace& place, const Balloon& balloon);
bool DeleteTrayIcon(const TrayPlace& place);

// Gives the keyboard back to the notification area.
bool FocusTray(const TrayPlace& place);

// A seam: the taskbar's notification area.
struct NotifyIconFunctions {
    std::function<BOOL(DWORD request, NOTIFYICONDATAW* record)> notify = Shell_NotifyIconW;
};

} // namespace quill
