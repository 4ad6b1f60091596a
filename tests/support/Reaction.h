// Events on the thread that raises them: handlers that act on the object from inside its event.
#pragma once

#include <functional>

#include "core/MessagePump.h"
#include "core/Variant.h"
#include "support/CountedDispatch.h"

namespace quill::test {

// Pumps until the condition holds; false after the time is over.
inline bool PumpUntil(const std::function<bool()>& condition, DWORD milliseconds = 5000)
{
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (!condition()) {
        if (GetTickCount64() >= end) return false;
        WaitForMessages(20);
    }
    return true;
}

inline ComPtr<IConnectionPoint> PointOf(IDispatch* object)
{
    ComPtr<IConnectionPointContainer> container;
    ComPtr<IEnumConnectionPoints> points;
    ComPtr<IConnectionPoint> point;
    Check(object->QueryInterface(IID_PPV_ARGS(&container)));
    Check(container->EnumConnectionPoints(&points));
    Check(points->Next(1, &point, nullptr));
    return point;
}

// A sink that does something at each event. It lives as long as its connections: an object may go
// after the test's own variables.
class Reaction {
public:
    using Act = std::function<void(DISPID event, const DISPPARAMS& arguments)>;

    // Scripts listen by IDispatch, compiled clients by an interface of events.
    explicit Reaction(Act act, const IID& id = IID_IDispatch) : sink_(new Sink(std::move(act), id))
    {
    }
    explicit Reaction(std::function<void()> act)
        : Reaction(Act([act = std::move(act)](DISPID, const DISPPARAMS&) { act(); }))
    {
    }

    // Hears the events of the object from now on.
    void Hear(IDispatch* object) { Check(PointOf(object)->Advise(sink_.Get(), &cookie)); }

private:
    struct Sink final : CountedDispatch {
        Sink(Act then, const IID& as) : act(std::move(then)), id(as) {}
        bool IsAlso(REFIID asked) const noexcept override { return asked == id; }
        STDMETHODIMP Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT*,
                            EXCEPINFO*, UINT*) noexcept override
        {
            ++calls;
            act(event, *arguments);
            return result;
        }

        const Act act;
        const IID id;
        int calls = 0;
        HRESULT result = S_OK;
    };

    const ComPtr<Sink> sink_;

public:
    int& calls = sink_->calls;
    HRESULT& result = sink_->result; // of each event
    DWORD cookie = 0;
};

} // namespace quill::test
