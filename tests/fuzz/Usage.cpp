#include "fuzz/Usage.h"

#include <tlhelp32.h>

#include <algorithm>
#include <span>
#include <vector>

#include "core/Platform.h"

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

long CountHandles(DWORD process)
{
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
    if (status != 0) return 0;
    const auto& table = *reinterpret_cast<const SystemHandles*>(buffer.data());
    const std::span<const SystemHandle> handles(table.handles, table.count);
    return static_cast<long>(
        std::ranges::count(handles, static_cast<USHORT>(process), &SystemHandle::process));
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

// Handles of menus are numbers in a table; those without a generation are taken for any.
long CountMenus()
{
    long count = 0;
    for (ULONG_PTR handle = 0x20; handle < 0x10000; handle += 2)
        if (IsMenu(reinterpret_cast<HMENU>(handle))) ++count;
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

} // namespace

Usage UsageOf(DWORD process)
{
    const bool here = process == GetCurrentProcessId();
    return {CountHandles(process), CountWindows(process), here ? CountMenus() : 0,
            CountThreads(process), here ? Balance() : Account{}};
}

} // namespace quill::fuzz
