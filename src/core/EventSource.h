// Events: what a class that raises them adds to the automation boundary.
//
//     class Clock final : public EventSource<_Clock> {
//         ...
//         Fire(kBuzz);
#pragma once

#include <vector>

#include "core/Automation.h"

namespace quill {

// The list of an object's sinks. A part of the object, with the same lifetime.
class ConnectionPoint final : public IConnectionPoint {
public:
    ConnectionPoint(IConnectionPointContainer& owner, const IID& events)
        : owner_(owner), events_(events)
    {
    }

    // Calls every sink that is connected now, one after the other, and waits for each; incoming
    // calls are served meanwhile. A sink that fails does not affect the others; one that is
    // gone is dropped. False if a client was too busy for the event for as long as the apartment's
    // message filter retries.
    bool Fire(DISPID event, std::vector<Variant> arguments);

    STDMETHODIMP QueryInterface(REFIID id, void** object) noexcept override;
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return owner_.AddRef(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return owner_.Release(); }

    STDMETHODIMP GetConnectionInterface(IID* id) noexcept override;
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** owner) noexcept override;
    STDMETHODIMP Advise(IUnknown* sink, DWORD* cookie) noexcept override;
    STDMETHODIMP Unadvise(DWORD cookie) noexcept override;
    STDMETHODIMP EnumConnections(IEnumConnections** connections) noexcept override;

private:
    struct Sink {
        DWORD cookie; // never 0
        ComPtr<IDispatch> object;
    };

    IConnectionPointContainer& owner_;
    const IID& events_;
    std::vector<Sink> sinks_;
    DWORD lastCookie_ = 0;
};

// An enumerator over the one connection point of an object.
HRESULT EnumerateConnectionPoint(IConnectionPoint& point, IEnumConnectionPoints** points) noexcept;

template <class Interface>
class EventSource : public Automation<Interface>, public IConnectionPointContainer {
public:
    STDMETHODIMP QueryInterface(REFIID id, void** object) noexcept override
    {
        return Automation<Interface>::QueryInterface(id, object);
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return Automation<Interface>::AddRef(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return Automation<Interface>::Release(); }

    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** points) noexcept override
    {
        return EnumerateConnectionPoint(point_, points);
    }
    STDMETHODIMP FindConnectionPoint(REFIID id, IConnectionPoint** point) noexcept override
    {
        if (!point) return E_POINTER;
        *point = nullptr;
        if (id != this->Published().eventsId) return CONNECT_E_NOCONNECTION;
        *point = &point_;
        AddRef();
        return S_OK;
    }

protected:
    // As ConnectionPoint::Fire.
    template <class... Arguments>
    bool Fire(DISPID event, Arguments... arguments)
    {
        std::vector<Variant> values;
        (values.emplace_back(arguments), ...);
        return point_.Fire(event, std::move(values));
    }

    void* FindInterface(REFIID id) noexcept override
    {
        if (id == IID_IConnectionPointContainer)
            return static_cast<IConnectionPointContainer*>(this);
        return Automation<Interface>::FindInterface(id);
    }

private:
    ConnectionPoint point_{*this, this->Published().eventsId};
};

} // namespace quill
