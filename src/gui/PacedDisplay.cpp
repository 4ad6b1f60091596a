#include "gui/PacedDisplay.h"

#include <algorithm>

#include "core/AutomationError.h"
#include "gui/MessageHook.h"

namespace quill {

namespace {

constexpr UINT_PTR kShowTimer = 0x5155; // beside the native control's own ones

// After being shown a control pauses for this long, and for this many times as long as showing
// took: a native text box is slower the more text it holds.
constexpr ULONGLONG kPauseMilliseconds = 40;
constexpr ULONGLONG kRest = 20;

} // namespace

PacedDisplay::PacedDisplay(HWND window) : window_(window)
{
    if (!InstallHook(window, this, Procedure)) RaiseLastError();
}

PacedDisplay::~PacedDisplay()
{
    if (window_) RemoveHook(window_, this, Procedure);
}

void PacedDisplay::Changed()
{
    if (waiting_) return;
    const ULONGLONG now = GetTickCount64();
    waiting_ = now < nextAt_ &&
               SetTimer(window_, kShowTimer, static_cast<UINT>(nextAt_ - now), nullptr) != 0;
    if (!waiting_) ShowNow();
}

void PacedDisplay::ShowNow()
{
    const ULONGLONG begin = GetTickCount64();
    nextAt_ = begin + kPauseMilliseconds; // in case Show postpones itself
    Show();
    const ULONGLONG end = GetTickCount64();
    nextAt_ = end + std::max(kPauseMilliseconds, kRest * (end - begin));
}

LRESULT CALLBACK PacedDisplay::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                         UINT_PTR self, DWORD_PTR) noexcept
{
    auto* output = reinterpret_cast<PacedDisplay*>(self);
    try {
        LRESULT result = 0;
        if (message == WM_NCDESTROY) {
            RemoveHook(window, output, Procedure);
            output->window_ = nullptr;
            output->OnDestroyed();
        } else if (message == WM_TIMER && wParam == kShowTimer) {
            KillTimer(window, kShowTimer);
            output->waiting_ = false;
            output->ShowNow();
            return 0;
        } else if (output->OnMessage(message, wParam, lParam, result)) {
            return result;
        }
    } catch (...) {
        // too little memory to show it now
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

void PacedPainting::Show()
{
    painting_ = true;
    RedrawWindow(painted_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
    painting_ = false;
}

bool PacedPainting::OnMessage(UINT message, WPARAM, LPARAM, LRESULT&)
{
    if (message != WM_PAINT || painting_) return false;
    ValidateRect(painted_, nullptr); // for now
    Changed();
    return true;
}

} // namespace quill
