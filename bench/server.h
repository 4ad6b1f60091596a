// A registered server as the programs that measure see it: its executable and its process.
#pragma once

#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "measure.h"

namespace bench {

struct HandleCloser {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

// A registered server: its executable and its process.
class Server {
public:
    explicit Server(const wchar_t* progId) : id_(Object::ClassOf(progId))
    {
        wchar_t id[39];
        StringFromGUID2(id_, id, 39);
        wchar_t command[1024];
        DWORD size = sizeof command;
        const std::wstring key = L"CLSID\\" + std::wstring(id) + L"\\LocalServer32";
        Require(RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr,
                             command, &size) == ERROR_SUCCESS,
                "a server is not registered");
        path_ = command;
        path_.erase(std::remove(path_.begin(), path_.end(), L'"'), path_.end());
    }

    const CLSID& Id() const { return id_; }
    const std::wstring& Path() const { return path_; }

    // The running process; null when there is none.
    Handle Process() const
    {
        const Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
        PROCESSENTRY32W entry{};
        entry.dwSize = sizeof entry;
        for (BOOL more = Process32FirstW(snapshot.get(), &entry); more;
             more = Process32NextW(snapshot.get(), &entry)) {
            Handle process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ | SYNCHRONIZE,
                                       FALSE, entry.th32ProcessID));
            wchar_t path[1024];
            DWORD length = 1024;
            if (process && QueryFullProcessImageNameW(process.get(), 0, path, &length) &&
                CompareStringOrdinal(path, -1, path_.c_str(), -1, TRUE) == CSTR_EQUAL)
                return process;
        }
        return nullptr;
    }

    // Lets the server end as it does when nobody needs it.
    void WaitForExit() const
    {
        while (const Handle process = Process())
            Require(WaitForSingleObject(process.get(), 60'000) == WAIT_OBJECT_0,
                    "a server did not end");
    }

    // From the first object's request to the object, by the platform's own activation.
    double ColdStart() const
    {
        WaitForExit();
        return Timed([&] { Object object(id_); });
    }

    // The same without the platform's search for a starting server: the process is started here
    // and asked as soon as it waits for messages, which it does when it can serve.
    double DirectStart() const
    {
        WaitForExit();
        std::wstring command = L'"' + path_ + L"\" -Embedding";
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION started{};
        const double begin = Milliseconds();
        Require(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr,
                               nullptr, &startup, &started),
                "a server did not start");
        const Handle process(started.hProcess);
        const Handle thread(started.hThread);
        Require(WaitForInputIdle(process.get(), 30'000) == 0, "a server did not get ready");
        Object object(id_);
        return Milliseconds() - begin;
    }

    double Megabytes() const
    {
        WIN32_FILE_ATTRIBUTE_DATA data{};
        Require(GetFileAttributesExW(path_.c_str(), GetFileExInfoStandard, &data),
                "an executable was not found");
        return data.nFileSizeLow / 1e6;
    }

    // Memory that only this process has. Under Wine the platform's own figure counts reserved
    // address space, so the kernel's is taken there.
    double PrivateMegabytes() const
    {
        if (const std::wstring folder = UnixProcess(); !folder.empty()) {
            const std::string text = ReadAll(folder + L"\\smaps_rollup");
            return (FieldOf(text, "Private_Clean:") + FieldOf(text, "Private_Dirty:")) * 1024 / 1e6;
        }
        const Handle process = Process();
        PROCESS_MEMORY_COUNTERS_EX counters{};
        Require(process && GetProcessMemoryInfo(
                               process.get(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters),
                               sizeof counters),
                "a server's memory could not be read");
        return static_cast<double>(counters.PrivateUsage) / 1e6;
    }

    // Processor time used so far. Wine's own figure for another process is the caller's.
    double ProcessorMilliseconds() const
    {
        if (const std::wstring folder = UnixProcess(); !folder.empty()) {
            const std::string text = ReadAll(folder + L"\\stat");
            long user = 0;
            long system = 0; // in ticks of 10 ms; the name in brackets may hold spaces
            Require(std::sscanf(text.c_str() + text.rfind(')') + 1,
                                " %*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %ld %ld", &user,
                                &system) == 2,
                    "a server's times could not be read");
            return 10.0 * static_cast<double>(user + system);
        }
        const Handle process = Process();
        FILETIME times[4];
        Require(process &&
                    GetProcessTimes(process.get(), &times[0], &times[1], &times[2], &times[3]),
                "a server's times could not be read");
        const auto ticks = [](const FILETIME& time) { // 100 ns each
            return time.dwHighDateTime * 4294967296.0 + time.dwLowDateTime;
        };
        return (ticks(times[2]) + ticks(times[3])) / 1e4;
    }

    // Open descriptors, in the words of the kernel; of the platform where there is none.
    long Handles() const
    {
        if (const std::wstring folder = UnixProcess(); !folder.empty()) {
            long count = -2; // without . and ..
            WIN32_FIND_DATAW entry;
            const HANDLE search = FindFirstFileW((folder + L"\\fd\\*").c_str(), &entry);
            Require(search != INVALID_HANDLE_VALUE, "a server's descriptors could not be counted");
            do
                ++count;
            while (FindNextFileW(search, &entry));
            FindClose(search);
            return count;
        }
        DWORD count = 0;
        const Handle process = Process();
        Require(process && GetProcessHandleCount(process.get(), &count),
                "a server's handles could not be counted");
        return static_cast<long>(count);
    }

    long Windows() const
    {
        const DWORD id = GetProcessId(Process().get());
        long count = 0;
        HWND window = nullptr;
        while ((window = FindWindowExW(nullptr, window, nullptr, nullptr)) != nullptr) {
            DWORD owner = 0;
            GetWindowThreadProcessId(window, &owner);
            count += owner == id;
        }
        return count;
    }

private:
    // The server's folder below /proc, where there is one; empty on Windows.
    std::wstring UnixProcess() const
    {
        const std::wstring root = L"\\\\?\\unix\\proc\\";
        const std::string sought(path_.begin(), path_.end());
        for (int id = 2; id <= 0x8000; ++id) {
            std::wstring folder = root + std::to_wstring(id);
            const std::string command = ReadAll(folder + L"\\cmdline");
            if (command.compare(0, sought.size(), sought) == 0) return folder;
        }
        return {};
    }

    static std::string ReadAll(const std::wstring& path)
    {
        const HANDLE opened = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                          OPEN_EXISTING, 0, nullptr);
        if (opened == INVALID_HANDLE_VALUE) return {};
        const Handle file(opened);
        char text[8192];
        DWORD length = 0;
        ReadFile(opened, text, sizeof text, &length, nullptr);
        return {text, length};
    }

    static double FieldOf(const std::string& text, const char* name)
    {
        const size_t found = text.find(name);
        Require(found != std::string::npos, "a server's memory could not be read");
        return std::atof(text.c_str() + found + std::strlen(name));
    }

    CLSID id_;
    std::wstring path_;
};

} // namespace bench
