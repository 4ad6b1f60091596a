#include "tray/notify.h"

#include <algorithm>

#include "core/Apartment.h"
#include "core/Text.h"
#include "tray/IconSource.h"

namespace quill {

namespace {

constexpr DWORD kRecordSize = 956;    // of NOTIFYICONDATAW, with the balloon icon
constexpr DWORD kOldRecordSize = 952; // without
static_assert(sizeof(NOTIFYICONDATAW) == kRecordSize);

NOTIFYICONDATAW MakeRecord(const TrayPlace& place, UINT flags)
{
    NOTIFYICONDATAW record{};
    record.cbSize = IsVistaOrLater() ? kRecordSize : kOldRecordSize;
    record.hWnd = place.window;
    record.uID = place.id;
    record.uFlags = flags;
    return record;
}

// Fills a field, which holds NULs, as far as it goes.
template <size_t Size>
void CopyText(wchar_t (&field)[Size], const std::wstring& text)
{
    const std::wstring_view shown = CutForDisplay(text, Size - 1);
    std::copy(shown.begin(), shown.end(), field);
}

bool Send(DWORD request, NOTIFYICONDATAW record)
{
    return Seam<NotifyIconFunctions>().notify(request, &record) != FALSE;
}

} // namespace

bool AddTrayIcon(const TrayPlace& place, HICON icon, const std::wstring& tip)
{
    NOTIFYICONDATAW record = MakeRecord(place, NIF_MESSAGE | NIF_ICON | NIF_SHOWTIP);
    record.uCallbackMessage = kTrayCallback;
    record.hIcon = icon;
    if (!tip.empty()) {
        record.uFlags |= NIF_TIP;
        CopyText(record.szTip, tip);
    }
    // The icon may be there although nobody knows: when an earlier call was answered too late, and
    // when the shell announced a new taskbar that kept the old one's icons.
    if (!Send(NIM_ADD, record) && !(DeleteTrayIcon(place) && Send(NIM_ADD, record))) return false;

    NOTIFYICONDATAW version = MakeRecord(place, 0);
    version.uVersion = IsVistaOrLater() ? NOTIFYICON_VERSION_4 : NOTIFYICON_VERSION;
    Send(NIM_SETVERSION, version);
    return true;
}

// Each change says anew that the tip is to be shown; without that the shell hides it.
bool ChangeTrayIcon(const TrayPlace& place, HICON icon)
{
    NOTIFYICONDATAW record = MakeRecord(place, NIF_ICON | NIF_SHOWTIP);
    record.hIcon = icon;
    return Send(NIM_MODIFY, record);
}

bool ChangeTrayTip(const TrayPlace& place, const std::wstring& tip)
{
    NOTIFYICONDATAW record = MakeRecord(place, NIF_TIP | NIF_SHOWTIP);
    CopyText(record.szTip, tip);
    return Send(NIM_MODIFY, record);
}

bool ShowTrayBalloon(const TrayPlace& place, const Balloon& balloon)
{
    NOTIFYICONDATAW record = MakeRecord(place, NIF_INFO | NIF_SHOWTIP);
    if (balloon.realTime) record.uFlags |= NIF_REALTIME;
    CopyText(record.szInfo, balloon.text);
    CopyText(record.szInfoTitle, balloon.title);
    record.dwInfoFlags = balloon.infoFlags;
    (IsVistaOrLater() ? record.hBalloonIcon : record.hIcon) = balloon.icon;
    return Send(NIM_MODIFY, record);
}

bool DeleteTrayIcon(const TrayPlace& place)
{
    return Send(NIM_DELETE, MakeRecord(place, 0));
}

bool FocusTray(const TrayPlace& place)
{
    return Send(NIM_SETFOCUS, MakeRecord(place, 0));
}

} // namespace quill
