// The server: its class objects, and how long it runs.
#pragma once

#include "core/Platform.h"

namespace quill {

// How long the server waits, in milliseconds.
struct Patience {
    // After the last object is gone: a script that makes one object after another does not
    // start the server each time.
    UINT linger = 5'000;
    // After the start, for the client that started the server.
    UINT firstClient = 30'000;
    // While it ends, for a client that holds a class object and may still ask for an object.
    UINT lastCall = 10'000;
    // At its end, by itself or with the session: what hangs for longer, such as a call to a client
    // that does not answer, ends with the process. The system allows five seconds. 0: no limit.
    UINT end = 4'000;
};

// Serves objects of all catalogued classes, each in a single-threaded apartment, until no client
// has needed the server for a while. The calling thread watches over it; its apartment should be
// the multithreaded one, in which clients' creations do not wait for each other. Returns the
// process's exit code. Throws AutomationError when the server cannot start.
int RunServer(const Patience& patience = {});

} // namespace quill
