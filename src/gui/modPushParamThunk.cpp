#include "gui/modPushParamThunk.h"

#include <new>

namespace quill {

static_assert(sizeof(void*) == sizeof(DWORD), "the stub is 32-bit code");

namespace {

DWORD Word(const void* pointer) noexcept
{
    return reinterpret_cast<DWORD>(pointer);
}

HANDLE ExecutableHeap() noexcept
{
    static const HANDLE heap = HeapCreate(HEAP_CREATE_ENABLE_EXECUTE, 0, 0);
    return heap;
}

} // namespace

void* BuildPushParamThunk(PushParamThunk& thunk, void* object, void* callback) noexcept
{
    // push dword [esp]; mov eax, object; mov [esp+4], eax; nop x3; mov eax, callback; jmp eax
    thunk.words[1] = 0xB82434FF;
    thunk.words[2] = Word(object);
    thunk.words[3] = 0x04244489;
    thunk.words[4] = 0xB8909090;
    thunk.words[5] = Word(callback);
    thunk.words[6] = 0x9090E0FF;
    void* entry = &thunk.words[1];
    thunk.words[0] = Word(entry);
    FlushInstructionCache(GetCurrentProcess(), entry, sizeof thunk.words - sizeof thunk.words[0]);
    return entry;
}

void* ExecutableObject::operator new(size_t size)
{
    void* memory = ExecutableHeap() ? HeapAlloc(ExecutableHeap(), 0, size) : nullptr;
    if (!memory) throw std::bad_alloc();
    return memory;
}

void ExecutableObject::operator delete(void* memory) noexcept
{
    if (memory) HeapFree(ExecutableHeap(), 0, memory);
}

} // namespace quill
