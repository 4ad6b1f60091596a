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

#include <thread>

#include "server.h"

namespace {

using namespace bench;

constexpr double kSizeAimMegabytes = 1.5;
constexpr double kUpdateAim = 1.5; // of an update to a null call

void MeasureAgainstBare(bool starts)
{
    const Server quill(L"Quill.Me");
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

    const Object first(quill.Id());
    const Object measure(bare.Id());
    const double ourMemory = quill.PrivateMegabytes(); // with this one object, before the calls
    const double bareMemory = bare.PrivateMegabytes();

    const CLSID listId = Object::ClassOf(L"Quill.List");
    const ComPtr<IClassFactory> held[]{Hold(quill.Id()), Hold(listId), Hold(bare.Id())};

    const auto make = [](const CLSID& id) { return Each(1, [&id] { Object made(id); }); };
    Compare("create and release, Me", 251, make(quill.Id()), make(bare.Id()));
    const Object list(listId); // the apartment that it lives in is there before the clock starts
    Compare("create and release, List (own apartment)", 251, make(listId), make(bare.Id()));

    const Object profile(Object::ClassOf(L"Quill.Profile"));
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
    // `columns`: with a filter and three columns.
    OpenList(const std::wstring& lines, const std::wstring& title, bool columns = false)
    {
        thread_ = std::thread([=, this] {
            CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
            try {
                const Object list(L"Quill.List");
                if (columns) {
                    list.Put(list.Find(L"Filter"), Value(-1L));
                    PutHeadings(list);
                }
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

    // From a letter in the filter box to the lines that are left, drawn.
    double MillisecondsToFilter(wchar_t letter) const
    {
        const HWND box = FindWindowExW(window_, nullptr, L"Edit", nullptr);
        const HWND lines = FindWindowExW(window_, nullptr, L"SysListView32", nullptr);
        Require(box && lines, "a list has no filter");
        return Timed([=] {
            SendMessageW(box, WM_CHAR, letter, 0);
            RedrawWindow(lines, nullptr, nullptr, RDW_UPDATENOW);
        });
    }

private:
    static void PutHeadings(const Object& list)
    {
        Value headings;
        V_ARRAY(&headings) = SafeArrayCreateVector(VT_BSTR, 0, 3);
        V_VT(&headings) = VT_ARRAY | VT_BSTR;
        for (LONG column = 0; column < 3; ++column) {
            const Value heading(L"Column " + std::to_wstring(column));
            SafeArrayPutElement(V_ARRAY(&headings), &column, V_BSTR(&heading));
        }
        list.Put(list.Find(L"Columns"), headings);
    }

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

// 100,000 lines in columns, with a filter.
void MeasureColumns()
{
    constexpr int kCount = 100'000;
    const Object warm(L"Quill.List");
    const Object bare(L"QuillBench.Bare");
    std::wstring lines;
    for (int line = 1; line <= kCount; ++line)
        lines += std::to_wstring(line) + L"\tservice" + std::to_wstring(line % 977) + L"\ton\r\n";
    std::vector<double> shown;
    std::vector<double> filtered;
    std::vector<double> carried;
    for (int round = 0; round <= 5; ++round) {
        const OpenList list(lines, L"bench columns " + std::to_wstring(round), true);
        const double time = list.MillisecondsToShow();
        for (wchar_t letter : std::wstring(L"service9")) {
            const double letterTime = list.MillisecondsToFilter(letter);
            if (round > 0) filtered.push_back(letterTime);
        }
        if (round > 0) shown.push_back(time);
    }
    const Value text(lines);
    const DISPID put = bare.Find(L"Text");
    for (int round = 0; round < 5; ++round)
        carried.push_back(Timed([&] { bare.Put(put, text); }));
    const auto print = [](const char* what, double time, double aim) {
        std::printf("%-54s %12.1f ms   %s (aim: at most %.0f ms)\n", what, time,
                    time <= aim ? "met" : "MISSED", aim);
    };
    print("100,000 lines, filter and columns, call to window", Median(shown), 100);
    std::printf("%-54s %12.1f ms\n", "  of which the same text takes to a server", Median(carried));
    print("  a letter in the filter", Median(filtered), 50);
    print("  the slowest letter", *std::max_element(filtered.begin(), filtered.end()), 50);
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
    MeasureColumns();
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
