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

// How long the server waits, in milliseconds.
struct Patience {
    // After the last object is gone: a script that makes one object after another does not pay for
    // a start each time.
    UINT linger = 5'000;
    // After the start, for the client that had the server started.
    UINT firstClient = 30'000;
    // While it ends, for a client that holds a class object and may still ask for an object.
    UINT lastCall = 10'000;
    // When it ends, by itself or with the session: what hangs for longer, such as a call to a
    // client that does not answer, goes with the process. The system gives five seconds. 0 is no
    // limit.
    UINT end = 4'000;
};

// Serves objects of all catalogued classes on the calling thread and on apartments of its own,
// until no client has needed the server for a while. Returns the process's exit code.
int RunServer(const Patience& patience = {});

} // namespace quill
