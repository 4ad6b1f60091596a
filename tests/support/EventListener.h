// A client that listens to an object's events, as a script that connected to it would.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "core/Variant.h"

namespace quill::test {

struct HeardEvent {
    std::wstring name;
    std::vector<Variant> arguments; // first to last, behind all references
};

// Connects to the default source interface that the object itself names, and keeps what it hears.
// In an apartment that must pump for events to come in, pumping is up to the owner.
class EventListener {
public:
    explicit EventListener(IDispatch* source); // throws AutomationError
    ~EventListener();
    EventListener(const EventListener&) = delete;
    EventListener& operator=(const EventListener&) = delete;

    size_t Count() const;
    size_t Count(std::wstring_view name) const;

    // The event of this name that came in as number `occurrence`, from 0; null when it has not.
    const HeardEvent* Find(std::wstring_view name, size_t occurrence) const;

    // Blocks until more than `count` events are there. False when they did not come in time.
    bool WaitForMoreThan(size_t count, std::chrono::milliseconds time);

private:
    class Sink;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<HeardEvent> heard_; // what is in stays where it is
    ComPtr<Sink> sink_;
    ComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
};

} // namespace quill::test
