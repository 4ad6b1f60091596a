// The server as a whole: what keeps it running, its class objects, its main loop.
#pragma once

#include <atomic>

#include "core/Platform.h"

namespace quill {

// Keeps the server process running. Every object holds one; so does every LockServer of a client.
class ServerLock {
public:
    ServerLock() noexcept;
    ~ServerLock();
    ServerLock(const ServerLock&) = delete;
    ServerLock& operator=(const ServerLock&) = delete;
};

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

// Serves objects of all catalogued classes on the calling thread and on apartments of its own,
// until no client has needed the server for a while. Returns the process's exit code.
int RunServer();

} // namespace quill
