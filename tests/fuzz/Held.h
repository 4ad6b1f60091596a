// What this process holds at a moment.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>

namespace quill::fuzz {

// Counts of: handles of the kernel; windows (top-level and message-only ones, with all children);
// menus; threads; and blocks of memory by their owner: the product's own code (operator new), and
// the platform's task allocator (IMallocSpy), in which strings and arrays lie, whoever made them.
inline constexpr std::array kHeld{"handles", "windows", "menus", "threads", "own", "task"};
using Held = std::array<long, kHeld.size()>;

Held HeldNow();

// From now on.
void CountTaskBlocks();
extern std::atomic<long> taskBlocks;

// Sees each block of either kind before it is freed, task blocks once they are counted.
extern std::atomic<void (*)(const void* block, size_t bytes)> onFree;

} // namespace quill::fuzz
