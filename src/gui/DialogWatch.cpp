#include "gui/DialogWatch.h"

#include <algorithm>
#include <utility>

#include "gui/TimerFn.h"
#include "gui/windowfn.h"

namespace quill {

namespace {

constexpr UINT kLookMilliseconds = 55;

thread_local DialogWatch* innermost = nullptr;

bool IsVisibleDialog(HWND window) noexcept
{
    return IsWindowVisible(window) &&
           GetClassLongW(window, GCW_ATOM) == reinterpret_cast<UINT_PTR>(WC_DIALOG);
}

BOOL CALLBACK AddDialog(HWND window, LPARAM dialogs) noexcept
{
    try {
        if (IsVisibleDialog(window))
            reinterpret_cast<std::vector<HWND>*>(dialogs)->push_back(window);
        return TRUE;
    } catch (...) {
        return FALSE; // out of memory; the next look may succeed
    }
}

std::vector<HWND> DialogsOfThread() noexcept
{
    std::vector<HWND> dialogs;
    EnumThreadWindows(GetCurrentThreadId(), AddDialog, reinterpret_cast<LPARAM>(&dialogs));
    return dialogs;
}

} // namespace

DialogWatch::DialogWatch(LONG seconds, std::function<bool()> abandoned, Front front)
    : abandoned_(std::move(abandoned)), time_(seconds), front_(front), outer_(innermost),
      timer_(StartTimer(kLookMilliseconds, reinterpret_cast<void*>(OnTimer))),
      earlier_(DialogsOfThread())
{
    innermost = this;
}

DialogWatch::~DialogWatch()
{
    innermost = outer_;
    StopTimer(timer_);
    HandForegroundOn(); // the last input went to the dialog
}

void CALLBACK DialogWatch::OnTimer(HWND, UINT, UINT_PTR, DWORD) noexcept
{
    if (innermost) innermost->Look();
}

void DialogWatch::Look() noexcept
{
    const HWND dialog = FindDialog();
    if (!dialog) return;
    if (!std::exchange(seen_, true)) {
        time_.Restart();
        if (front_ == Front::Bring) BringToFront(dialog, false);
    }
    // A dialog that is being ended goes on ending, even if the user turns to it now.
    if (!asked_) {
        const bool abandoned = abandoned_();
        if (!abandoned && !time_.Over()) return;
        ending_ = abandoned ? Ending::ClientGone : Ending::TimeOver;
    }
    if (!std::exchange(leftLoop_, true) && EndPlatformLoop()) return;
    // Cancel it as a user would, and end one that cannot be cancelled. A question that the dialog
    // itself asks in a second one goes first.
    if (std::exchange(asked_, dialog) == dialog)
        EndDialog(dialog, IDCANCEL);
    else
        PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
}

HWND DialogWatch::FindDialog() const noexcept
{
    HWND found = nullptr;
    for (HWND dialog : DialogsOfThread()) {
        if (std::find(earlier_.begin(), earlier_.end(), dialog) != earlier_.end()) continue;
        if (IsWindowEnabled(dialog)) return dialog;
        found = dialog; // one that waits for another, which is enabled
    }
    return found;
}

} // namespace quill
