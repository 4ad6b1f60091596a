// Measures quill.exe against the bare server, both registered and on this machine.
//
//     bench         starts, creations and calls: ours, bare, and ours / bare; size and memory
//     bench calls   of these, only what a running server does
//     bench list    from the call of Quill.List.Selection to its visible window
//     bench idle    processor time of the server while a list is open and nobody touches it
//     bench windows what updates of the output and progress windows cost, against calls that do
//                   nothing, and the processor time of these windows while nothing happens
//
// Ours and bare take turns in every round, and medians are compared, so that other load on the
// machine hits both alike. The exit code is 1 when something could not be measured.
#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>

#include "measure.h"

namespace {

using namespace bench;

constexpr double kSizeAimMegabytes = 1.5;
constexpr double kUpdateAim = 1.5; // of an update to a null call

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

void MeasureAgainstBare(bool starts)
{
    const Server quill(L"Quill.Profile");
    const Server bare(L"QuillBench.Bare");
    std::printf("%-46s %9s %9s %-3s %6s   aim %.2f\n", "", "ours", "bare", "", "ratio", kRatioAim);

    // Loads the platform's own parts once, for both.
    {
        Object first(quill.Id()), second(bare.Id());
    }
    if (starts) {
        Compare(
            "cold start to the first object", 5, [&] { return quill.ColdStart(); },
            [&] { return bare.ColdStart(); });
        Compare(
            "process start to the first object", 9, [&] { return quill.DirectStart(); },
            [&] { return bare.DirectStart(); });
    }

    const Object profile(quill.Id());
    const Object measure(bare.Id());
    const double ourMemory = quill.PrivateMegabytes(); // with this one object, before the calls
    const double bareMemory = bare.PrivateMegabytes();

    const CLSID listId = Object::ClassOf(L"Quill.List");
    const ComPtr<IClassFactory> held[]{Hold(quill.Id()), Hold(listId), Hold(bare.Id())};

    const auto make = [](const CLSID& id) { return Each(1, [&id] { Object made(id); }); };
    Compare("create and release, Profile", 251, make(quill.Id()), make(bare.Id()));
    const Object list(listId); // the apartment that it lives in is there before the clock starts
    Compare("create and release, List (own apartment)", 251, make(listId), make(bare.Id()));

    const DISPID fileName = profile.Find(L"File");
    const DISPID text = measure.Find(L"Text");
    Compare("get of a string, late-bound", 501, Each(5, [&] { profile.Get(fileName); }),
            Each(5, [&] { measure.Get(text); }));

    // Profile has no string property that merely keeps its value (File looks for the file), so
    // the put goes to a caption of List.
    const DISPID caption = list.Find(L"ButtonText");
    const Value thousand(std::wstring(1000, L'x'));
    Compare("put of 1,000 characters, late-bound", 501,
            Each(5, [&] { list.Put(caption, thousand); }),
            Each(5, [&] { measure.Put(text, thousand); }));

    PrintRatio("private memory with one object", ourMemory, bareMemory, "MB");
    const double size = quill.Megabytes();
    std::printf("%-46s %9.3f %9.3f MB  %6.2f   %s (aim: at most %.1f MB)\n",
                "size of the executable", size, bare.Megabytes(), size / bare.Megabytes(),
                size <= kSizeAimMegabytes ? "met" : "MISSED", kSizeAimMegabytes);
}

// A list on show, opened by a call on a thread of its own.
class OpenList {
public:
    OpenList(const std::wstring& lines, const std::wstring& title)
    {
        thread_ = std::thread([=, this] {
            CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
            try {
                const Object list(L"Quill.List");
                const DISPID selection = list.Find(L"Selection");
                Value arguments[]{Value(title), Value(0L), Value(lines)};
                Value result;
                called_ = Milliseconds();
                list.Call(selection, arguments, result); // returns when the dialog is closed
            } catch (const std::exception& failure) {
                std::fprintf(stderr, "bench: %s\n", failure.what());
            }
            CoUninitialize();
        });
        const double deadline = Milliseconds() + 60'000;
        do {
            window_ = FindWindowW(nullptr, title.c_str());
            if (window_ && IsWindowVisible(window_)) {
                shown_ = Milliseconds();
                return;
            }
            Sleep(1);
        } while (Milliseconds() < deadline);
    }
    ~OpenList()
    {
        if (window_) PostMessageW(window_, WM_CLOSE, 0, 0);
        thread_.join();
    }
    OpenList(const OpenList&) = delete;
    OpenList& operator=(const OpenList&) = delete;

    double MillisecondsToShow() const
    {
        Require(shown_ > 0, "a list did not appear");
        return shown_ - called_;
    }

private:
    std::thread thread_;
    HWND window_ = nullptr;
    double called_ = 0; // written before the call that makes the window
    double shown_ = 0;
};

std::wstring Lines(int count)
{
    std::wstring lines;
    for (int line = 1; line <= count; ++line)
        lines += L"Line " + std::to_wstring(line) + L" of the list\r\n";
    return lines;
}

void MeasureList()
{
    const Object warm(L"Quill.List");
    for (const int count : {3, 10'000, 100'000}) {
        const std::wstring lines = Lines(count);
        std::vector<double> times;
        for (int round = 0; round <= 11; ++round) {
            const std::wstring title =
                L"bench " + std::to_wstring(count) + L' ' + std::to_wstring(round);
            const double time = OpenList(lines, title).MillisecondsToShow();
            if (round > 0) times.push_back(time); // the first one loads fonts and the like
        }
        const double median = Median(times);
        const double aim = count == 3 ? 65 : 200.0 * count / 10'000;
        std::printf("list of %6d lines, call to window %22.1f ms   %s (aim: at most %.0f ms)\n",
                    count, median, median <= aim ? "met" : "MISSED", aim);
        std::fflush(stdout);
    }
}

// Processor time that the server of `progId` uses over 10 s.
void MeasureRest(const char* what, const wchar_t* progId)
{
    constexpr DWORD kWatched = 10'000;
    const Server quill(progId);
    Sleep(1'000);
    const double before = quill.ProcessorMilliseconds();
    Sleep(kWatched);
    const double used = quill.ProcessorMilliseconds() - before;
    std::printf("%s, idle for 10 s: processor time %16.0f ms   (%.1f %% of one core)\n", what, used,
                100.0 * used / kWatched);
}

void MeasureIdle()
{
    const OpenList list(Lines(3), L"bench idle");
    list.MillisecondsToShow();
    MeasureRest("open list", L"Quill.List");
}

// 50,000 calls of one kind, in blocks that take turns with as many null calls.
void MeasureUpdates(const char* what, const std::function<void(int)>& update,
                    const std::function<void()>& nullCall)
{
    constexpr int kBlocks = 100;
    constexpr int kBlock = 500;
    std::vector<double> ours;
    std::vector<double> other;
    for (int block = 0; block < kBlocks; ++block) {
        ours.push_back(Timed([&] {
                           for (int index = 0; index < kBlock; ++index)
                               update(block * kBlock + index);
                       }) /
                       kBlock);
        other.push_back(Each(kBlock, nullCall)());
    }
    PrintRatio(what, Median(ours), Median(other), "ms", kUpdateAim);
    const auto tenth = kBlocks / 10;
    const double first = Median({ours.begin(), ours.begin() + tenth});
    const double last = Median({ours.end() - tenth, ours.end()});
    std::printf("%-46s %9.3f %9.3f ms  %6.2f\n", "  the last 5,000, the first 5,000", last, first,
                last / first);
}

void MeasureWindows()
{
    const Object measure(L"QuillBench.Bare");
    const DISPID text = measure.Find(L"Text");
    const Value nothing(std::wstring{});
    const auto nullCall = [&] { measure.Put(text, nothing); };
    const auto create = [](const Object& window) {
        Value result;
        window.Call(window.Find(L"Create"), {}, result);
    };
    std::printf("%-46s %9s %9s %-3s %6s   aim %.2f\n", "50,000 calls", "ours", "null", "", "ratio",
                kUpdateAim);
    const Object windows[]{Object(L"Quill.Window"), Object(L"Quill.Window2")};
    for (const Object& window : windows) {
        const bool box = &window != windows;
        if (box) window.Put(window.Find(L"Scroll"), Value(-1L));
        create(window);
        const DISPID writeLine = window.Find(L"WriteLine");
        Value line[]{Value(std::wstring(80, L'x'))};
        MeasureUpdates(
            box ? "WriteLine of 80 characters, Window2" : "WriteLine of 80 characters, Window",
            [&](int) {
                Value result;
                window.Call(writeLine, line, result);
            },
            nullCall);
    }
    const Object progress(L"Quill.ProgressWindow");
    create(progress);
    const DISPID position = progress.Find(L"Progress");
    MeasureUpdates(
        "put of Progress", [&](int count) { progress.Put(position, Value(LONG{count % 101})); },
        nullCall);
    MeasureRest("three windows", L"Quill.Window");
}

} // namespace

int wmain(int count, wchar_t** arguments)
{
    const std::wstring mode = count > 1 ? arguments[1] : L"";
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    int exitCode = 0;
    try {
        if (mode == L"list")
            MeasureList();
        else if (mode == L"idle")
            MeasureIdle();
        else if (mode == L"windows")
            MeasureWindows();
        else
            MeasureAgainstBare(mode != L"calls");
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bench: %s\n", failure.what());
        exitCode = 1;
    }
    CoUninitialize();
    return exitCode;
}
