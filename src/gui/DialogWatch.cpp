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
        return FALSE; // the next look may have the memory
    }
}

std::vector<HWND> DialogsOfThread() noexcept
{
    std::vector<HWND> dialogs;
    EnumThreadWindows(GetCurrentThreadId(), AddDialog, reinterpret_cast<LPARAM>(&dialogs));
    return dialogs;
}

} // namespace

DialogWatch::DialogWatch(std::function<bool()> abandoned, Front front)
    : abandoned_(std::move(abandoned)), toRaise_(front == Front::Bring), outer_(innermost),
      timer_(StartTimer(kLookMilliseconds, reinterpret_cast<void*>(OnTimer))),
      earlier_(DialogsOfThread())
{
    innermost = this;
}

DialogWatch::~DialogWatch()
{
    innermost = outer_;
    StopTimer(timer_);
    HandForegroundOn(); // the last input was the dialog's
}

void CALLBACK DialogWatch::OnTimer(HWND, UINT, UINT_PTR, DWORD) noexcept
{
    if (innermost) innermost->Look();
}

void DialogWatch::Look() noexcept
{
    const HWND dialog = FindDialog();
    if (!dialog) return;
    if (std::exchange(toRaise_, false)) BringToFront(dialog, false);
    if (!abandoned_()) return;
    // Cancelled as a user would; one that cannot be cancelled is ended.
    if (std::exchange(asked_, true))
        EndDialog(dialog, IDCANCEL);
    else
        PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
}

HWND DialogWatch::FindDialog() const noexcept
{
    for (HWND dialog : DialogsOfThread())
        if (std::find(earlier_.begin(), earlier_.end(), dialog) == earlier_.end()) return dialog;
    return nullptr;
}

} // namespace quill
