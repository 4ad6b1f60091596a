// A stub of machine code that lets a plain callback of the platform reach one object: it inserts
// the object as the callback's first argument.
#pragma once

#include "core/Platform.h"

namespace quill {

// Lives inside the object that it leads to. 32-bit x86, standard calling convention.
struct PushParamThunk {
    DWORD words[7];
};

// Fills the stub and returns its entry, to be handed to the platform as the callback. `callback`
// takes the object and then the platform's own arguments. The stub is good as long as it stays in
// place.
void* BuildPushParamThunk(PushParamThunk& thunk, void* object, void* callback) noexcept;

// Base of objects that hold a stub: they come from a heap of their own, the only memory of the
// process that is both writable and executable.
class ExecutableObject {
public:
    static void* operator new(size_t size);
    static void operator delete(void* memory) noexcept;
};

} // namespace quill
