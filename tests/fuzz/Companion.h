// The fuzzer's second thread: a user who closes every window that a call shows, and a watch that
// ends the run when a call takes too long.
#pragma once

#include <atomic>
#include <map>
#include <string>
#include <thread>

#include "core/Platform.h"

namespace quill::fuzz {

class Companion {
public:
    // Windows of this process are closed. `Fail` prints the call and ends the program.
    Companion(DWORD process, DWORD longestCall, void (*fail)(const wchar_t* reason));
    ~Companion();
    Companion(const Companion&) = delete;
    Companion& operator=(const Companion&) = delete;

    // Around each call.
    void Begin(std::uint64_t number)
    {
        number_ = number;
        since_ = GetTickCount64();
    }
    void End() { since_ = 0; }
    // Milliseconds since the call began; 0 when there is none.
    DWORD Running() const
    {
        const ULONGLONG since = since_;
        return since ? static_cast<DWORD>(GetTickCount64() - since) : 0;
    }
    long Closed() const { return closed_; }

private:
    void Run();
    void Answer(HWND window, unsigned attempt) const;
    static BOOL CALLBACK Look(HWND window, LPARAM self);

    const DWORD process_;
    const DWORD longestCall_;
    void (*const fail_)(const wchar_t*);
    std::atomic<ULONGLONG> since_{0};
    std::atomic<std::uint64_t> number_{0};
    std::atomic<long> closed_{0};
    std::map<HWND, unsigned> attempts_;
    Event stop_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::thread thread_;
};

} // namespace quill::fuzz
