#include "support/EventListener.h"

#include <algorithm>

#include "core/TypeLibrary.h"
#include "support/CountedDispatch.h"

namespace quill::test {

// The sink belongs to the connection too and may live longer than its listener.
class EventListener::Sink final : public CountedDispatch {
public:
    Sink(EventListener& owner, const IID& id) : owner_(&owner), id_(id)
    {
        Check(TypeLibrary()->GetTypeInfoOfGuid(id, &info_));
    }

    void Forget()
    {
        const std::lock_guard guard(mutex_);
        owner_ = nullptr;
    }

    STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*,
                        UINT*) noexcept override
    try {
        HeardEvent event;
        BSTR name = nullptr;
        UINT count = 0;
        info_->GetNames(id, &name, 1, &count);
        const Bstr owned(name);
        event.name = name ? name : L"event " + std::to_wstring(id);
        for (UINT index = parameters->cArgs; index-- > 0;)
            event.arguments.push_back(Variant::Dereferenced(parameters->rgvarg[index]));

        const std::lock_guard guard(mutex_);
        if (!owner_) return S_OK;
        const std::lock_guard ownerGuard(owner_->mutex_);
        owner_->heard_.push_back(std::move(event));
        owner_->changed_.notify_all();
        return S_OK;
    } catch (...) {
        return E_FAIL;
    }

private:
    bool IsAlso(REFIID id) const noexcept override { return id == id_; }

    std::mutex mutex_;
    EventListener* owner_;
    const IID id_;
    ComPtr<ITypeInfo> info_;
};

EventListener::EventListener(IDispatch* source)
{
    ComPtr<IProvideClassInfo2> provider;
    ComPtr<IConnectionPointContainer> container;
    IID id;
    Check(source->QueryInterface(IID_PPV_ARGS(&provider)));
    Check(provider->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &id));
    Check(source->QueryInterface(IID_PPV_ARGS(&container)));
    Check(container->FindConnectionPoint(id, &point_));
    sink_ = new Sink(*this, id);
    Check(point_->Advise(sink_.Get(), &cookie_));
}

EventListener::~EventListener()
{
    if (cookie_ != 0) point_->Unadvise(cookie_);
    if (sink_) sink_->Forget();
}

size_t EventListener::Count() const
{
    const std::lock_guard guard(mutex_);
    return heard_.size();
}

size_t EventListener::Count(std::wstring_view name) const
{
    const std::lock_guard guard(mutex_);
    return static_cast<size_t>(std::count_if(
        heard_.begin(), heard_.end(), [&](const HeardEvent& event) { return event.name == name; }));
}

const HeardEvent* EventListener::Find(std::wstring_view name, size_t occurrence) const
{
    const std::lock_guard guard(mutex_);
    for (const HeardEvent& event : heard_)
        if (event.name == name && occurrence-- == 0) return &event;
    return nullptr;
}

bool EventListener::WaitForMoreThan(size_t count, std::chrono::milliseconds time)
{
    std::unique_lock guard(mutex_);
    return changed_.wait_for(guard, time, [&] { return heard_.size() > count; });
}

} // namespace quill::test
