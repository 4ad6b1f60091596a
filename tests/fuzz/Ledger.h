// How many blocks of memory are held, by their owner: the product's own code (operator new), and
// the platform's task allocator (IMallocSpy), in which strings and arrays lie, whoever made them.
#pragma once

namespace quill::fuzz {

struct Account {
    long own = 0;
    long task = 0;
};

// Counts from now on what the task allocator gives out; operator new is counted from the start.
void OpenLedger();

Account Balance();

} // namespace quill::fuzz
