#include "windows/Clock.h"

#include "core/Catalogue.h"
#include "gui/TimerFn.h"
#include "gui/windowfn.h"

namespace quill {

namespace {

constexpr DISPID kBuzz = 1;

} // namespace

CREATABLE(Clock)

bool Clock::SetTimer(LONG milliseconds)
{
    Stop();
    if (milliseconds == 0) return false;
    void* entry = BuildPushParamThunk(thunk_, this, reinterpret_cast<void*>(OnTimer));
    timer_ = StartTimer(static_cast<UINT>(milliseconds), entry);
    return timer_ != 0;
}

void Clock::Stop() noexcept
{
    if (timer_ != 0) StopTimer(timer_);
    timer_ = 0;
}

bool Clock::Wait(LONG timeout) const
{
    const long before = buzzes_;
    WaitWhile(timeout, [&] { return timer_ != 0 && buzzes_ == before && !ClientsGone(); });
    return buzzes_ != before;
}

void CALLBACK Clock::OnTimer(Clock* self, HWND, UINT, UINT_PTR timer, DWORD) noexcept
{
    // The message of a timer that was stopped may be on its way already.
    if (timer != self->timer_) return;
    const ComPtr<_Clock> alive(self); // the handler may release the object
    self->Stop();
    ++self->buzzes_;
    try {
        self->Fire(kBuzz);
    } catch (...) {
        // There is no caller to report to.
    }
}

} // namespace quill
