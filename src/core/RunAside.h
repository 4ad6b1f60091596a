// Calls of the platform that can hang, such as those to a drive that does not answer: they run on a
// thread of their own, and their caller waits only as long as it wants to.
#pragma once

#include <functional>

#include "core/Platform.h"

namespace quill {

using Thread = Owned<HANDLE, CloseHandle>;

// Threads that RunAside keeps at the same time. Those that hang stay until the process ends.
inline constexpr int kMostAside = 64;

// Runs `body` on a new thread (CreateThread) and returns it: it is signalled once the body has
// returned, and nobody has to wait for that. Null, without running the body, when kMostAside bodies
// are running already or the platform refuses a thread. Any thread may call.
//
// The body may outlive its caller, so it holds copies or shared pointers, never references to the
// caller's. It has no apartment of ours (ThisApartment, Seam); what it throws is lost. Throws
// std::bad_alloc.
Thread RunAside(std::function<void()> body);

} // namespace quill
