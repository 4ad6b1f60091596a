// What a process holds at a moment. Wine counts no handles and no objects of GDI and USER by itself
// (GetProcessHandleCount and GetGuiResources give 0), so they are counted here one by one.
#pragma once

#include <string>

#include "core/Platform.h"
#include "fuzz/Ledger.h"

namespace quill::fuzz {

struct Usage {
    long handles = 0;    // of the kernel, but for keys of the registry
    long keys = 0;       // of the registry
    long windows = 0;    // top-level and message-only ones, with all children
    long menus = 0;      // 0 for another process than this
    long gdiObjects = 0; // icons and cursors count by their bitmaps; 0 for another process
    long threads = 0;
    long privateBytes = 0;
    Account account; // of memory by its owner; 0 for another process
    Held rest;       // in the heaps besides; 0 for another process
};

Usage UsageOf(DWORD process);

} // namespace quill::fuzz
