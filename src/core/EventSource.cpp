#include "core/EventSource.h"

#include <algorithm>

namespace quill {

namespace {

// An enumerator over a copy of the items at the time of its creation. `Item` owns its references.
template <class Interface, const IID* Id, class Raw, class Item>
class Enumerator final : public Interface {
public:
    explicit Enumerator(std::vector<Item> items, size_t next = 0)
        : items_(std::move(items)), next_(next)
    {
    }

    STDMETHODIMP QueryInterface(REFIID id, void** object) noexcept override
    {
        if (!object) return E_POINTER;
        const bool known = id == IID_IUnknown || id == *Id;
        *object = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() noexcept override
    {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

    STDMETHODIMP Next(ULONG count, Raw* items, ULONG* fetched) noexcept override
    {
        if (!items || (!fetched && count != 1)) return E_POINTER;
        ULONG done = 0;
        for (; done < count && next_ < items_.size(); ++done)
            items[done] = items_[next_++].Copy();
        if (fetched) *fetched = done;
        return done == count ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG count) noexcept override
    {
        const size_t left = items_.size() - next_;
        next_ += std::min<size_t>(count, left);
        return count <= left ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() noexcept override
    {
        next_ = 0;
        return S_OK;
    }
    STDMETHODIMP Clone(Interface** copy) noexcept override
    {
        if (!copy) return E_POINTER;
        *copy = nullptr;
        try {
            *copy = new Enumerator(items_, next_);
            return S_OK;
        } catch (...) {
            return E_OUTOFMEMORY;
        }
    }

private:
    ULONG references_ = 1;
    std::vector<Item> items_;
    size_t next_;
};

struct PointItem {
    ComPtr<IConnectionPoint> point;
    IConnectionPoint* Copy() const noexcept { return ComPtr<IConnectionPoint>(point).Detach(); }
};
using PointEnumerator =
    Enumerator<IEnumConnectionPoints, &IID_IEnumConnectionPoints, IConnectionPoint*, PointItem>;

struct ConnectionItem {
    ComPtr<IUnknown> sink;
    DWORD cookie;
    CONNECTDATA Copy() const noexcept { return {ComPtr<IUnknown>(sink).Detach(), cookie}; }
};
using ConnectionEnumerator =
    Enumerator<IEnumConnections, &IID_IEnumConnections, CONNECTDATA, ConnectionItem>;

// The result of a call to a sink whose process has ended.
bool IsGone(HRESULT result) noexcept
{
    return result == HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE) || result == RPC_E_DISCONNECTED ||
           result == RPC_E_SERVER_DIED || result == RPC_E_SERVER_DIED_DNE ||
           result == CO_E_OBJNOTCONNECTED;
}

// The result of a call to a sink whose process is too busy.
bool IsBusy(HRESULT result) noexcept
{
    return result == RPC_E_CALL_REJECTED || result == RPC_E_SERVERCALL_RETRYLATER;
}

} // namespace

bool ConnectionPoint::Fire(DISPID event, std::vector<Variant> arguments)
{
    // While another program waits in SendMessage, the platform refuses calls to third ones.
    if ((InSendMessageEx(nullptr) & (ISMEX_SEND | ISMEX_REPLIED)) == ISMEX_SEND) ReplyMessage(0);
    // Otherwise a window that the script opens now would stay behind the one that raised the event.
    AllowSetForegroundWindow(ASFW_ANY);

    bool delivered = true;
    std::reverse(arguments.begin(), arguments.end()); // a call has the last one first
    const std::vector<Sink> connected = sinks_;       // handlers may connect and disconnect
    for (const Sink& sink : connected) {
        DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
        const HRESULT result =
            sink.object->Invoke(event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                                nullptr, nullptr, nullptr);
        if (IsGone(result)) Unadvise(sink.cookie);
        delivered = delivered && !IsBusy(result);
    }
    return delivered;
}

HRESULT ConnectionPoint::QueryInterface(REFIID id, void** object) noexcept
{
    if (!object) return E_POINTER;
    const bool known = id == IID_IUnknown || id == IID_IConnectionPoint;
    *object = known ? this : nullptr;
    if (known) AddRef();
    return known ? S_OK : E_NOINTERFACE;
}

HRESULT ConnectionPoint::GetConnectionInterface(IID* id) noexcept
{
    if (!id) return E_POINTER;
    *id = events_;
    return S_OK;
}

HRESULT ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** owner) noexcept
{
    if (!owner) return E_POINTER;
    owner_.AddRef();
    *owner = &owner_;
    return S_OK;
}

HRESULT ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) noexcept
{
    if (!sink || !cookie) return E_POINTER;
    *cookie = 0;
    ComPtr<IDispatch> object;
    if (FAILED(sink->QueryInterface(events_, &object)) &&
        FAILED(sink->QueryInterface(IID_IDispatch, &object)))
        return CONNECT_E_CANNOTCONNECT;
    try {
        if (++lastCookie_ == 0) ++lastCookie_;
        sinks_.push_back({lastCookie_, std::move(object)});
    } catch (...) {
        return E_OUTOFMEMORY;
    }
    *cookie = lastCookie_;
    return S_OK;
}

HRESULT ConnectionPoint::Unadvise(DWORD cookie) noexcept
{
    for (auto sink = sinks_.begin(); sink != sinks_.end(); ++sink) {
        if (sink->cookie != cookie) continue;
        const ComPtr<IDispatch> last =
            std::move(sink->object); // released once the list is consistent
        sinks_.erase(sink);
        return S_OK;
    }
    return CONNECT_E_NOCONNECTION;
}

HRESULT ConnectionPoint::EnumConnections(IEnumConnections** connections) noexcept
{
    if (!connections) return E_POINTER;
    *connections = nullptr;
    try {
        std::vector<ConnectionItem> items;
        for (const Sink& sink : sinks_)
            items.push_back({sink.object, sink.cookie});
        *connections = new ConnectionEnumerator(std::move(items));
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT EnumerateConnectionPoint(IConnectionPoint& point, IEnumConnectionPoints** points) noexcept
{
    if (!points) return E_POINTER;
    *points = nullptr;
    try {
        *points = new PointEnumerator({PointItem{&point}});
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

} // namespace quill
