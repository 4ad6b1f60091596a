#include "fuzz/Ledger.h"

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <new>
#include <unordered_map>

#include "core/Platform.h"

namespace quill::fuzz {
namespace {

template <class T>
struct InLedgerHeap {
    using value_type = T;
    InLedgerHeap() = default;
    template <class Other>
    InLedgerHeap(const InLedgerHeap<Other>&)
    {
    }
    T* allocate(size_t count)
    {
        return static_cast<T*>(HeapAlloc(LedgerHeap(), 0, count * sizeof(T)));
    }
    void deallocate(T* block, size_t) { HeapFree(LedgerHeap(), 0, block); }
    template <class Other>
    bool operator==(const InLedgerHeap<Other>&) const
    {
        return true;
    }
};

enum class Owner { Product, Task, Refused };

struct Entry {
    size_t bytes;
    unsigned long page;
    unsigned number; // of the call
    Owner owner;
    std::array<void*, 14> stack;
};

// By the address of the block, which is but a number here.
using Entries = std::unordered_map<std::uintptr_t, Entry, std::hash<std::uintptr_t>,
                                   std::equal_to<std::uintptr_t>,
                                   InLedgerHeap<std::pair<const std::uintptr_t, Entry>>>;

struct Ledger {
    SRWLOCK lock = SRWLOCK_INIT;
    Entries entries;
    std::atomic<unsigned> number{0};
    unsigned long page = 0;
    Account account; // of the entries
};

void Add(Account& account, const Entry& entry, long blocks)
{
    Held& held = entry.owner == Owner::Product ? account.own
                 : entry.owner == Owner::Task  ? account.task
                                               : account.refused;
    held.blocks += blocks;
    held.bytes += blocks * static_cast<long>(entry.bytes);
}

// Outlives all that could still free something.
Ledger& Book()
{
    alignas(Ledger) static std::byte place[sizeof(Ledger)];
    static Ledger* const book = ::new (place) Ledger;
    return *book;
}

std::uintptr_t AddressOf(void* block)
{
    return reinterpret_cast<std::uintptr_t>(block);
}

void Enter(std::uintptr_t block, size_t bytes, Owner owner)
{
    if (!block) return;
    Ledger& book = Book();
    Entry entry{bytes, 0, book.number, owner, {}};
    CaptureStackBackTrace(2, static_cast<ULONG>(entry.stack.size()), entry.stack.data(), nullptr);
    AcquireSRWLockExclusive(&book.lock);
    entry.page = ++book.page;
    book.entries.insert_or_assign(block, entry);
    Add(book.account, entry, 1);
    ReleaseSRWLockExclusive(&book.lock);
}

// A block that was made before the ledger was opened is not in it.
void Strike(std::uintptr_t block)
{
    if (!block) return;
    Ledger& book = Book();
    AcquireSRWLockExclusive(&book.lock);
    if (const auto found = book.entries.find(block); found != book.entries.end()) {
        Add(book.account, found->second, -1);
        book.entries.erase(found);
    }
    ReleaseSRWLockExclusive(&book.lock);
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

    STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T bytes) override
    {
        bytes_ = bytes;
        return bytes;
    }
    STDMETHODIMP_(void*) PostAlloc(void* block) override
    {
        Enter(AddressOf(block), bytes_, Owner::Task);
        return block;
    }
    STDMETHODIMP_(void*) PreFree(void* block, BOOL) override
    {
        Strike(AddressOf(block));
        return block;
    }
    STDMETHODIMP_(void) PostFree(BOOL) override {}
    STDMETHODIMP_(SIZE_T) PreRealloc(void* block, SIZE_T bytes, void** passed, BOOL) override
    {
        moved_ = block;
        bytes_ = bytes;
        *passed = block;
        return bytes;
    }
    STDMETHODIMP_(void*) PostRealloc(void* block, BOOL) override
    {
        if (block || bytes_ == 0) Strike(AddressOf(moved_));
        Enter(AddressOf(block), bytes_, Owner::Task);
        return block;
    }
    STDMETHODIMP_(void*) PreGetSize(void* block, BOOL) override { return block; }
    STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T bytes, BOOL) override { return bytes; }
    STDMETHODIMP_(void*) PreDidAlloc(void* block, BOOL) override { return block; }
    STDMETHODIMP_(int) PostDidAlloc(void*, BOOL, int owned) override { return owned; }
    STDMETHODIMP_(void) PreHeapMinimize() override {}
    STDMETHODIMP_(void) PostHeapMinimize() override {}

private:
    // The platform holds a lock between a call before and the one after.
    size_t bytes_ = 0;
    void* moved_ = nullptr;
};

std::string PlaceOf(void* address)
{
    wchar_t path[MAX_PATH] = L"?";
    HMODULE base = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                           GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       static_cast<LPCWSTR>(address), &base);
    if (base) GetModuleFileNameW(base, path, MAX_PATH);
    const wchar_t* name = wcsrchr(path, L'\\');
    char text[MAX_PATH + 20];
    std::snprintf(
        text, sizeof text, "%ls+%x", name ? name + 1 : path,
        static_cast<unsigned>(static_cast<BYTE*>(address) - reinterpret_cast<BYTE*>(base)));
    return text;
}

} // namespace

void OpenLedger()
{
    static Spy spy;
    CoRegisterMallocSpy(&spy);
}

HANDLE LedgerHeap()
{
    static const HANDLE heap = HeapCreate(0, 0, 0);
    return heap;
}

Account Balance()
{
    Ledger& book = Book();
    AcquireSRWLockShared(&book.lock);
    const Account account = book.account;
    ReleaseSRWLockShared(&book.lock);
    return account;
}

unsigned Charge(unsigned number)
{
    return Book().number.exchange(number);
}

void PutAside(unsigned number)
{
    Ledger& book = Book();
    AcquireSRWLockExclusive(&book.lock);
    for (auto& [block, entry] : book.entries)
        if (entry.number == number && entry.owner == Owner::Task) {
            Add(book.account, entry, -1);
            entry.owner = Owner::Refused;
            Add(book.account, entry, 1);
        }
    ReleaseSRWLockExclusive(&book.lock);
}

unsigned long LedgerPage()
{
    return Book().page;
}

void PrintHeld(unsigned long page, std::string (*nameOf)(unsigned))
{
    struct Sum {
        Account account;
        std::array<void*, 14> stack{};
    };
    Ledger& book = Book();
    AcquireSRWLockShared(&book.lock);
    const Entries entries = book.entries;
    ReleaseSRWLockShared(&book.lock);
    std::map<std::string, Sum> sums;
    for (const auto& [block, entry] : entries) {
        if (entry.page <= page) continue;
        Sum& sum = sums[nameOf(entry.number)];
        Add(sum.account, entry, 1);
        sum.stack = entry.stack;
    }
    for (const auto& [name, sum] : sums) {
        const auto& [own, task, refused] = sum.account;
        std::printf("  %ld own, %ld task, %ld refused, %ld bytes: %s\n   ", own.blocks, task.blocks,
                    refused.blocks, own.bytes + task.bytes + refused.bytes, name.c_str());
        for (void* address : sum.stack)
            if (address) std::printf(" %s", PlaceOf(address).c_str());
        std::puts("");
    }
}

} // namespace quill::fuzz

[[gnu::noinline]] void* operator new(size_t bytes)
{
    void* block = std::malloc(bytes ? bytes : 1);
    if (!block) throw std::bad_alloc();
    quill::fuzz::Enter(quill::fuzz::AddressOf(block), bytes, quill::fuzz::Owner::Product);
    return block;
}

[[gnu::noinline]] void* operator new(size_t bytes, const std::nothrow_t&) noexcept
{
    void* block = std::malloc(bytes ? bytes : 1);
    quill::fuzz::Enter(quill::fuzz::AddressOf(block), bytes, quill::fuzz::Owner::Product);
    return block;
}

[[gnu::noinline]] void operator delete(void* block) noexcept
{
    quill::fuzz::Strike(quill::fuzz::AddressOf(block));
    std::free(block);
}

[[gnu::noinline]] void operator delete(void* block, size_t) noexcept
{
    operator delete(block);
}
