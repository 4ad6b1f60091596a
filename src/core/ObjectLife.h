// What is counted while an object lives: server locks, client references, load of its thread.
#pragma once

#include <atomic>

#include "core/Platform.h"

namespace quill {

// Keep the server process running, and release it again.
void LockServerProcess() noexcept;
void UnlockServerProcess() noexcept;

// A lock for as long as it lives. Every object holds one.
class ServerLock {
public:
    ServerLock() noexcept { LockServerProcess(); }
    ~ServerLock() { UnlockServerProcess(); }
    ServerLock(const ServerLock&) = delete;
    ServerLock& operator=(const ServerLock&) = delete;
};

// True while anything keeps the process running.
bool IsServerLocked() noexcept;

// Posts the message to the window each time the last lock is released; null ends that.
void NotifyUnlocked(HWND window, UINT message) noexcept;

// References that clients hold to one object, as the platform counts them on any thread.
class ClientCount {
public:
    DWORD Add() noexcept
    {
        known_ = true;
        return ++count_;
    }
    DWORD Remove() noexcept { return --count_; }
    DWORD Count() const noexcept { return count_; }
    bool Gone() const noexcept { return known_ && count_ == 0; }

private:
    std::atomic<DWORD> count_{0};
    std::atomic<bool> known_{false};
};

// Counts an object of the calling thread while it lives; the pool of apartments uses the counts.
class ApartmentLoad {
public:
    ApartmentLoad() noexcept;
    ~ApartmentLoad();
    ApartmentLoad(const ApartmentLoad&) = delete;
    ApartmentLoad& operator=(const ApartmentLoad&) = delete;
};

} // namespace quill
