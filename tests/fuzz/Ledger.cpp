#include "fuzz/Ledger.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include "core/Platform.h"

namespace quill::fuzz {
namespace {

std::atomic<long> own{0};
std::atomic<long> task{0};

void* Allocate(size_t bytes) noexcept
{
    void* const block = std::malloc(bytes ? bytes : 1);
    if (block) ++own;
    return block;
}

class Spy final : public IMallocSpy {
public:
    STDMETHODIMP QueryInterface(REFIID id, void** object) override
    {
        *object = id == IID_IUnknown || id == IID_IMallocSpy ? this : nullptr;
        return *object ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    // A block that was made before the spy came is not `spied`.
    STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T bytes) override { return bytes; }
    STDMETHODIMP_(void*) PostAlloc(void* block) override
    {
        if (block) ++task;
        return block;
    }
    STDMETHODIMP_(void*) PreFree(void* block, BOOL spied) override
    {
        if (block && spied) --task;
        return block;
    }
    STDMETHODIMP_(void) PostFree(BOOL) override {}
    STDMETHODIMP_(SIZE_T)
    PreRealloc(void* block, SIZE_T bytes, void** passed, BOOL spied) override
    {
        if (block && spied) --task;
        *passed = block;
        return bytes;
    }
    STDMETHODIMP_(void*) PostRealloc(void* block, BOOL) override
    {
        if (block) ++task;
        return block;
    }
    STDMETHODIMP_(void*) PreGetSize(void* block, BOOL) override { return block; }
    STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T bytes, BOOL) override { return bytes; }
    STDMETHODIMP_(void*) PreDidAlloc(void* block, BOOL) override { return block; }
    STDMETHODIMP_(int) PostDidAlloc(void*, BOOL, int owned) override { return owned; }
    STDMETHODIMP_(void) PreHeapMinimize() override {}
    STDMETHODIMP_(void) PostHeapMinimize() override {}
};

} // namespace

void OpenLedger()
{
    static Spy spy;
    CoRegisterMallocSpy(&spy);
}

Account Balance()
{
    return {own, task};
}

} // namespace quill::fuzz

[[gnu::noinline]] void* operator new(size_t bytes)
{
    void* const block = quill::fuzz::Allocate(bytes);
    if (!block) throw std::bad_alloc();
    return block;
}

[[gnu::noinline]] void* operator new(size_t bytes, const std::nothrow_t&) noexcept
{
    return quill::fuzz::Allocate(bytes);
}

[[gnu::noinline]] void operator delete(void* block) noexcept
{
    if (block) --quill::fuzz::own;
    std::free(block);
}

[[gnu::noinline]] void operator delete(void* block, size_t) noexcept
{
    operator delete(block);
}
