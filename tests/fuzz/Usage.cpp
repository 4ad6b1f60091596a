#include "fuzz/Usage.h"

#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <span>
#include <vector>

namespace quill::fuzz {

namespace {

// The table of all handles of the system, as ntdll gives it to those who ask for class 16.
struct SystemHandle {
    USHORT process;
    USHORT traceIndex;
    UCHAR type;
    UCHAR attributes;
    USHORT handle;
    void* object;
    ULONG access;
};
struct SystemHandles {
    ULONG count;
    SystemHandle handles[1];
};

void CountHandles(DWORD process, Usage& usage)
{
    HKEY opened = nullptr;
    RegOpenKeyExW(HKEY_CURRENT_USER, L"Software", 0, KEY_READ, &opened);
    const Owned<HKEY, RegCloseKey> key(opened); // what a key looks like in the table
    using Query = LONG WINAPI(ULONG, void*, ULONG, ULONG*);
    const auto query = FindSystemFunction<Query>(L"ntdll.dll", "NtQuerySystemInformation");
    std::vector<BYTE> buffer(1 << 16);
    ULONG needed = 0;
    constexpr ULONG kHandles = 16;
    constexpr LONG kTooShort = static_cast<LONG>(0xC0000004);
    LONG status = 0;
    while ((status = query(kHandles, buffer.data(), static_cast<ULONG>(buffer.size()), &needed)) ==
           kTooShort)
        buffer.resize(buffer.size() * 2);
    if (status != 0) return;
    const auto& table = *reinterpret_cast<const SystemHandles*>(buffer.data());
    const std::span<const SystemHandle> handles(table.handles, table.count);
    const auto isKey = [&](const SystemHandle& handle) {
        return handle.process == static_cast<USHORT>(GetCurrentProcessId()) &&
               handle.handle == static_cast<USHORT>(reinterpret_cast<ULONG_PTR>(opened));
    };
    const auto known = std::ranges::find_if(handles, isKey);
    for (const SystemHandle& handle : handles)
        if (handle.process == static_cast<USHORT>(process))
            ++(known != handles.end() && handle.type == known->type ? usage.keys : usage.handles);
    if (process == GetCurrentProcessId()) --usage.keys; // the one above
}

struct WindowCount {
    DWORD process;
    long count = 0;
};

BOOL CALLBACK CountChild(HWND, LPARAM count)
{
    ++*reinterpret_cast<long*>(count);
    return TRUE;
}

void CountTree(HWND window, WindowCount& windows)
{
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner != windows.process) return;
    ++windows.count;
    EnumChildWindows(window, CountChild, reinterpret_cast<LPARAM>(&windows.count));
}

BOOL CALLBACK CountTop(HWND window, LPARAM windows)
{
    CountTree(window, *reinterpret_cast<WindowCount*>(windows));
    return TRUE;
}

long CountWindows(DWORD process)
{
    WindowCount windows{process};
    EnumWindows(CountTop, reinterpret_cast<LPARAM>(&windows));
    HWND window = nullptr;
    while ((window = FindWindowExW(HWND_MESSAGE, window, nullptr, nullptr)))
        CountTree(window, windows);
    return windows.count;
}

// Handles of menus and of GDI objects are numbers in a table; those without a generation are taken
// for any.
long CountMenus()
{
    long count = 0;
    for (ULONG_PTR handle = 0x20; handle < 0x10000; handle += 2)
        if (IsMenu(reinterpret_cast<HMENU>(handle))) ++count;
    return count;
}

long CountGdiObjects()
{
    if (const DWORD known = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS))
        return static_cast<long>(known);
    long count = 0;
    for (ULONG_PTR handle = 0; handle < 0x4000; ++handle)
        if (GetObjectType(reinterpret_cast<HGDIOBJ>(handle))) ++count;
    return count;
}

long CountThreads(DWORD process)
{
    const Owned<HANDLE, CloseHandle> snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 thread{};
    thread.dwSize = sizeof thread;
    long count = 0;
    for (BOOL more = Thread32First(snapshot.get(), &thread); more;
         more = Thread32Next(snapshot.get(), &thread))
        if (thread.th32OwnerProcessID == process) ++count;
    return count;
}

void CountHeaps(Usage& usage)
{
    usage.account = Balance();
    const auto& [own, task, refused] = usage.account;
    usage.rest = {-own.blocks - task.blocks - refused.blocks,
                  -own.bytes - task.bytes - refused.bytes};
    std::vector<HANDLE> heaps(64);
    heaps.resize(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()));
    for (HANDLE heap : heaps) {
        if (heap == LedgerHeap()) continue;
        HeapLock(heap);
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heap, &entry)) {
            if (!(entry.wFlags & PROCESS_HEAP_ENTRY_BUSY)) continue;
            ++usage.rest.blocks;
            usage.rest.bytes += static_cast<long>(entry.cbData);
        }
        HeapUnlock(heap);
    }
}

} // namespace

Usage UsageOf(DWORD process)
{
    Usage usage;
    CountHandles(process, usage);
    usage.windows = CountWindows(process);
    usage.threads = CountThreads(process);
    const Owned<HANDLE, CloseHandle> opened(
        OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, process));
    PROCESS_MEMORY_COUNTERS memory{};
    if (GetProcessMemoryInfo(opened.get(), &memory, sizeof memory))
        usage.privateBytes = static_cast<long>(memory.PagefileUsage);
    if (process != GetCurrentProcessId()) return usage;
    usage.menus = CountMenus();
    usage.gdiObjects = CountGdiObjects();
    CountHeaps(usage);
    return usage;
}

} // namespace quill::fuzz
