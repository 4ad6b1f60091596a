// A client that listens to an object's events and keeps what it hears. Pumping is up to the owner.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "core/MessagePump.h"
#include "core/TypeLibrary.h"
#include "core/Variant.h"
#include "support/CountedDispatch.h"

namespace quill::test {

// Pumps until the condition holds; false after the time is over.
inline bool PumpUntil(const std::function<bool()>& condition, DWORD milliseconds = 30'000)
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

struct HeardEvent {
    std::wstring name;
    std::vector<Variant> arguments; // first to last, behind all references
};

// It lives as long as its connection: an object may go after the test's own variables.
class Listener final : public CountedDispatch {
public:
    using Act = std::function<void(const HeardEvent& event)>;

    // From now on. One that acts is known by IDispatch, as a script's; one that does not by its
    // events alone, as a compiled client's. Across processes, the platform asks for IDispatch.
    static ComPtr<Listener> Of(IDispatch* source, Act act = {})
    {
        const ComPtr<IConnectionPoint> point = PointOf(source);
        const ComPtr<Listener> listener(new Listener);
        ComPtr<IClientSecurity> proxy;
        Check(point->GetConnectionInterface(&listener->known_));
        Check(TypeLibrary()->GetTypeInfoOfGuid(listener->known_, &listener->events_));
        if (act || SUCCEEDED(source->QueryInterface(IID_PPV_ARGS(&proxy))))
            listener->known_ = IID_IDispatch;
        listener->act_ = std::move(act);
        Check(point->Advise(listener.Get(), &listener->cookie));
        return listener;
    }

    STDMETHODIMP Invoke(DISPID event, REFIID, LCID, WORD, DISPPARAMS* given, VARIANT*, EXCEPINFO*,
                        UINT*) noexcept override
    {
        Bstr name;
        Check(events_->GetDocumentation(event, Into(name), nullptr, nullptr, nullptr));
        HeardEvent& last = heard.emplace_back(HeardEvent{name.get(), {}});
        for (UINT index = given->cArgs; index-- > 0;)
            last.arguments.push_back(Variant::Dereferenced(given->rgvarg[index]));
        if (act_) act_(last);
        return result;
    }

    std::deque<HeardEvent> heard;
    HRESULT result = S_OK; // of each event
    DWORD cookie = 0;

private:
    bool IsAlso(REFIID id) const noexcept override { return id == known_; }

    Act act_;
    IID known_{};
    ComPtr<ITypeInfo> events_;
};

} // namespace quill::test
