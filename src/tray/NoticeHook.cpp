#include "tray/NoticeHook.h"

#include <windowsx.h>

#include "gui/MessageHook.h"
#include "gui/windowfn.h"
#include "tray/Notice.h"

namespace quill {

namespace {

// `taskbarCreated` is the number of the message by which a new taskbar announces itself.
LRESULT CALLBACK NoticeHook(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR owner,
                            DWORD_PTR taskbarCreated) noexcept
{
    auto* notice = reinterpret_cast<Notice*>(owner);
    const ComPtr<_Notice> alive(notice); // a handler may release the object
    try {
        if (message == kTrayCallback) {
            // No sender waits while handlers and menus take their time; automation refuses calls
            // out of a message whose sender waits.
            ReplyMessage(0);
            notice->OnIcon(LOWORD(lParam), {GET_X_LPARAM(wParam), GET_Y_LPARAM(wParam)});
        } else if (message == taskbarCreated) {
            notice->OnNewTaskbar();
        } else if (message == WM_ENDSESSION && wParam) {
            notice->Remove();
        }
    } catch (...) {
        // There is no caller to report to.
    }
    const LRESULT result = DefSubclassProc(window, message, wParam, lParam);
    if (message == WM_NCDESTROY) RemoveHook(window, notice, NoticeHook);
    return result;
}

} // namespace

bool InstallNoticeHook(HWND window, Notice& notice) noexcept
{
    return InstallHook(window, &notice, NoticeHook, HearShell(window, L"TaskbarCreated"));
}

void RemoveNoticeHook(HWND window, Notice& notice) noexcept
{
    RemoveHook(window, &notice, NoticeHook);
}

} // namespace quill
