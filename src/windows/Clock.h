// Quill.Clock: a timer that raises one event, Buzz, for each SetTimer.
#pragma once

#include "core/EventSource.h"
#include "gui/modPushParamThunk.h"

namespace quill {

// Times are in milliseconds. Raises no errors of its own.
class Clock final : public EventSource<_Clock>, public ExecutableObject {
public:
    ~Clock() override { Stop(); }

    METHOD(VARIANT_BOOL, SetTimer, (LONG milliseconds), milliseconds)
    STDMETHODIMP RemoveTimer() noexcept override
    {
        return Run([&] { Stop(); });
    }
    READ_ONLY_PROPERTY(VARIANT_BOOL, Running, timer_ != 0)
    METHOD(VARIANT_BOOL, Wait, (LONG timeout), timeout)

private:
    bool SetTimer(LONG milliseconds);
    void Stop() noexcept;
    bool Wait(LONG timeout) const;

    static void CALLBACK OnTimer(Clock* self, HWND window, UINT message, UINT_PTR timer,
                                 DWORD time) noexcept;

    PushParamThunk thunk_{};
    UINT_PTR timer_ = 0; // 0: none is running
    long buzzes_ = 0;
};

} // namespace quill
