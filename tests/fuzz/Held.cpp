#include "fuzz/Held.h"

#include <tlhelp32.h>

#include <malloc.h>

#include <cstdlib>
#include <new>

#include "core/Platform.h"

namespace quill::fuzz {

std::atomic<long> taskBlocks{0};
std::atomic<void (*)(const void*, size_t)> onFree{nullptr};

namespace {

std::atomic<long> own{0};

// A block that was made before the spy came is not `spied`.
class Spy final : public IMallocSpy {
public:
    STDMETHODIMP QueryInterface(REFIID, void** object) override { return *object = this, S_OK; }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T bytes) override { return bytes; }
    STDMETHODIMP_(void*) PostAlloc(void* block) override { return taskBlocks += !!block, block; }
    STDMETHODIMP_(void*) PreFree(void* block, BOOL spied) override
    {
        if (const auto look = onFree.load(); look && block)
            look(block, HeapSize(GetProcessHeap(), 0, block));
        return taskBlocks -= block && spied, block;
    }
    STDMETHODIMP_(void) PostFree(BOOL) override {}
    STDMETHODIMP_(SIZE_T)
    PreRealloc(void* block, SIZE_T bytes, void** to, BOOL spied) override
    {
        *to = PreFree(block, spied);
        return bytes;
    }
    STDMETHODIMP_(void*) PostRealloc(void* block, BOOL) override { return PostAlloc(block); }
    STDMETHODIMP_(void*) PreGetSize(void* block, BOOL) override { return block; }
    STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T bytes, BOOL) override { return bytes; }
    STDMETHODIMP_(void*) PreDidAlloc(void* block, BOOL) override { return block; }
    STDMETHODIMP_(int) PostDidAlloc(void*, BOOL, int owned) override { return owned; }
    STDMETHODIMP_(void) PreHeapMinimize() override {}
    STDMETHODIMP_(void) PostHeapMinimize() override {}
};

} // namespace

// Handles are numbers in tables, tried one by one: the platform's own counts are 0 under Wine, and
// leave out message-only windows. Those of windows and menus without a generation stand for any.
Held HeldNow()
{
    Held held{0, 0, 0, 0, own, taskBlocks};
    auto& [handles, windows, menus, threads, blocks, taken] = held;
    DWORD flags = 0;
    for (ULONG_PTR number = 4; number < 0x4000; number += 4)
        handles += GetHandleInformation(reinterpret_cast<HANDLE>(number), &flags);
    for (ULONG_PTR number = 0x20; number < 0x10000; number += 2) {
        DWORD owner = 0;
        GetWindowThreadProcessId(reinterpret_cast<HWND>(number), &owner);
        windows += owner == GetCurrentProcessId();
        menus += IsMenu(reinterpret_cast<HMENU>(number));
    }
    const Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 thread{};
    thread.dwSize = sizeof thread;
    for (BOOL more = Thread32First(snapshot.get(), &thread); more;
         more = Thread32Next(snapshot.get(), &thread))
        threads += thread.th32OwnerProcessID == GetCurrentProcessId();
    return held;
}

void CountTaskBlocks()
{
    // Strings that were freed would seem to be in use.
    if (const auto noCache = FindSystemFunction<void WINAPI()>(L"oleaut32.dll", "SetOaNoCache"))
        noCache();
    static Spy spy;
    CoRegisterMallocSpy(&spy);
}

} // namespace quill::fuzz

[[gnu::noinline]] void* operator new(size_t bytes)
{
    void* const block = std::malloc(bytes ? bytes : 1);
    if (!block) throw std::bad_alloc();
    ++quill::fuzz::own;
    return block;
}

[[gnu::noinline]] void operator delete(void* block) noexcept
{
    if (const auto look = quill::fuzz::onFree.load(); look && block) look(block, _msize(block));
    quill::fuzz::own -= !!block;
    std::free(block);
}

[[gnu::noinline]] void operator delete(void* block, size_t) noexcept
{
    operator delete(block);
}
