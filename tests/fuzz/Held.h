// What this process holds at a moment.
#pragma once

#include <atomic>
#include <cstddef>

namespace quill::fuzz {

struct Held {
    long handles; // of the kernel
    long windows; // top-level and message-only ones, with all children
    long menus;
    long threads;
    // Blocks of memory by their owner: the product's own code (operator new), and the platform's
    // task allocator (IMallocSpy), in which strings and arrays lie, whoever made them.
    long own;
    long task; // since CountTaskBlocks
};

Held HeldNow();

void CountTaskBlocks();
long TaskBlocks() noexcept;

// Sees each block of either kind before it is freed, task blocks once they are counted.
extern std::atomic<void (*)(const void* block, size_t bytes)> onFree;

} // namespace quill::fuzz
