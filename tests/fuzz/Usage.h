// What a process holds at a moment. Wine counts no handles by itself (GetProcessHandleCount
// gives 0), so they are counted here one by one.
#pragma once

#include "core/Platform.h"
#include "fuzz/Ledger.h"

namespace quill::fuzz {

struct Usage {
    long handles = 0; // of the kernel
    long windows = 0; // top-level and message-only ones, with all children
    long menus = 0;   // 0 for another process than this
    long threads = 0;
    Account blocks; // of memory by its owner; 0 for another process
};

Usage UsageOf(DWORD process);

} // namespace quill::fuzz
