// An account of memory by its owner: the blocks of the product's own code (operator new), and those
// of the platform's task allocator (IMallocSpy), in which strings and arrays lie, whoever made
// them. Every other block of a heap belongs to the platform's libraries.
#pragma once

#include <string>

#include "core/Platform.h"

namespace quill::fuzz {

struct Held {
    long blocks = 0;
    long bytes = 0;
};

struct Account {
    Held own;
    Held task;
    Held refused; // of the task allocator, but left by calls that the platform refused
};

// Counts from now on what the task allocator gives out; operator new is counted from the start.
void OpenLedger();

Account Balance();

// Its own blocks lie there; they are in no account.
HANDLE LedgerHeap();

// Blocks are put down to call `number` from now on; 0 is nobody. Returns the number before.
unsigned Charge(unsigned number);

// The platform refused call `number`, without a word to the object: what it has left in the task
// allocator goes to `refused`.
void PutAside(unsigned number);

// Stands for now.
unsigned long LedgerPage();

// Prints what was made since `page` and is held, summed up by the name of its call, with the places
// that called for one of the blocks.
void PrintHeld(unsigned long page, std::string (*nameOf)(unsigned number));

} // namespace quill::fuzz
