#include "gui/AnswerTime.h"

#include <utility>

#include "core/Apartment.h"
#include "gui/windowfn.h"

namespace quill {

namespace {

thread_local AnswerTime* innermost = nullptr;

// A key or a mouse button that goes down, or the wheel.
bool IsInput(UINT message) noexcept
{
    switch (message) {
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
    case WM_RBUTTONDOWN:
    case WM_RBUTTONDBLCLK:
    case WM_MBUTTONDOWN:
    case WM_MBUTTONDBLCLK:
    case WM_XBUTTONDOWN:
    case WM_XBUTTONDBLCLK:
    case WM_NCLBUTTONDOWN:
    case WM_NCLBUTTONDBLCLK:
    case WM_NCRBUTTONDOWN:
    case WM_MOUSEWHEEL:
    case WM_MOUSEHWHEEL: return true;
    default: return false;
    }
}

} // namespace

AnswerTime::AnswerTime(LONG seconds)
    : second_(Seam<AnswerSecond>().milliseconds), length_(static_cast<ULONGLONG>(seconds) * second_)
{
    if (!Limited()) return;
    Restart();
    hook_ = SetWindowsHookExW(WH_GETMESSAGE, OnMessage, nullptr, GetCurrentThreadId());
    outer_ = std::exchange(innermost, this);
}

AnswerTime::~AnswerTime()
{
    if (!Limited()) return;
    innermost = outer_;
    if (hook_) UnhookWindowsHookEx(hook_);
}

void AnswerTime::Restart() noexcept
{
    end_ = GetTickCount64() + length_;
}

bool AnswerTime::Over() noexcept
{
    if (std::exchange(used_, false)) Restart();
    return Limited() && MillisecondsLeft() == 0;
}

ULONGLONG AnswerTime::MillisecondsLeft() const noexcept
{
    const ULONGLONG now = GetTickCount64();
    return now < end_ ? end_ - now : 0;
}

LONG AnswerTime::SecondsLeft() const noexcept
{
    return static_cast<LONG>((MillisecondsLeft() + second_ - 1) / second_);
}

UINT AnswerTime::UntilNextLook() const noexcept
{
    const auto withinSecond = static_cast<UINT>(MillisecondsLeft() % second_);
    return withinSecond > 0 ? withinSecond : second_;
}

LRESULT CALLBACK AnswerTime::OnMessage(int code, WPARAM removed, LPARAM message) noexcept
{
    if (code == HC_ACTION && removed == PM_REMOVE &&
        IsInput(reinterpret_cast<const MSG*>(message)->message))
        for (AnswerTime* time = innermost; time; time = time->outer_)
            time->used_ = true;
    return CallNextHookEx(nullptr, code, removed, message);
}

bool EndPlatformLoop() noexcept
{
    const DWORD loops = PlatformLoops();
    if (loops & GUI_INMENUMODE) EndMenu();
    // The loop of a drag, also of one begun by the keyboard, ends at any such message.
    if (loops & GUI_INMOVESIZE) PostThreadMessageW(GetCurrentThreadId(), WM_LBUTTONUP, 0, 0);
    return loops != 0;
}

} // namespace quill
