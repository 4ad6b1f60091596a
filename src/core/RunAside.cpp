#include "core/RunAside.h"

#include <atomic>

namespace quill {

namespace {

// A mutable global, since the threads outlive every apartment.
std::atomic<int> running{0};

// A body, and its share of the limit.
struct Work {
    std::function<void()> body;

    explicit Work(std::function<void()> given) : body(std::move(given)) { ++running; }
    ~Work() { --running; }
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;
};

DWORD WINAPI RunWork(void* given) noexcept
{
    const std::unique_ptr<Work> work(static_cast<Work*>(given));
    try {
        work->body();
    } catch (...) {
        // There is no caller to report to.
    }
    return 0;
}

} // namespace

Thread RunAside(std::function<void()> body)
{
    auto work = std::make_unique<Work>(std::move(body));
    if (running > kMostAside) return nullptr;
    Thread thread(CreateThread(nullptr, 0, RunWork, work.get(), 0, nullptr));
    if (thread) static_cast<void>(work.release()); // the thread's from now on
    return thread;
}

} // namespace quill
