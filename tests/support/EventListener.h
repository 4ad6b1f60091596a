// A client that listens to an object's events, as a compiled one does.
#pragma once

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/TypeLibrary.h"
#include "support/Reaction.h"

namespace quill::test {

struct HeardEvent {
    std::wstring name;
    std::vector<Variant> arguments; // first to last, behind all references
};

// Keeps what it hears. Pumping is up to the owner.
class EventListener {
public:
    using Handler = std::function<void(const HeardEvent& event)>;

    explicit EventListener(IDispatch* source, Handler handler = {})
    {
        // A sink of a compiled client is known by its events alone; across processes, the platform
        // asks it for IDispatch.
        IID id;
        ComPtr<IClientSecurity> proxy;
        ComPtr<ITypeInfo> info;
        Check(PointOf(source)->GetConnectionInterface(&id));
        Check(TypeLibrary()->GetTypeInfoOfGuid(id, &info));
        reaction_ = std::make_unique<Reaction>(
            // The connection may live longer than this.
            [info, heard = heard_, handler = std::move(handler)](DISPID event,
                                                                 const DISPPARAMS& given) {
                BSTR name = nullptr;
                Check(info->GetDocumentation(event, &name, nullptr, nullptr, nullptr));
                HeardEvent& last = heard->emplace_back(HeardEvent{Bstr(name).get(), {}});
                for (UINT index = given.cArgs; index-- > 0;)
                    last.arguments.push_back(Variant::Dereferenced(given.rgvarg[index]));
                if (handler) handler(last);
            },
            SUCCEEDED(source->QueryInterface(IID_PPV_ARGS(&proxy))) ? IID_IDispatch : id);
        reaction_->Hear(source);
    }

    size_t Count() const { return heard_->size(); }
    size_t Count(std::wstring_view name) const
    {
        return static_cast<size_t>(std::ranges::count(*heard_, name, &HeardEvent::name));
    }
    // The event of this name that came in as number `occurrence`, from 0; null when it has not.
    const HeardEvent* Find(std::wstring_view name, size_t occurrence) const
    {
        for (const HeardEvent& event : *heard_)
            if (event.name == name && occurrence-- == 0) return &event;
        return nullptr;
    }

private:
    const std::shared_ptr<std::deque<HeardEvent>> heard_ =
        std::make_shared<std::deque<HeardEvent>>();
    std::unique_ptr<Reaction> reaction_;
};

} // namespace quill::test
