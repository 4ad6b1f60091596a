// Calls every member of every published class, late-bound, with whatever a script can pass, and
// fails when one crashes, hangs, answers what no script can use, or leaves something behind.
//
// The classes run in this program, built with checks for undefined behaviour that trap.
// QUILL_FUZZ_CALLS and QUILL_FUZZ_SEED are numbers; the same seed makes the same calls. What a user
// does meanwhile, and calls that come in while a dialog is open, depend on time, too.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <thread>
#include <utility>

#include "core/Catalogue.h"
#include "core/MessagePump.h"
#include "core/TypeLibrary.h"
#include "fuzz/Held.h"
#include "fuzz/Hostile.h"
#include "support/LateBound.h"
#include "support/Listener.h"
#include "support/Robot.h"
#include "support/TemporaryFolder.h"

namespace quill::fuzz {
namespace {

using test::Describe;

constexpr DWORD kLongestCall = 30'000;    // milliseconds; more is a hang
constexpr size_t kObjectsOfClass = 3;     // that live at a time
constexpr std::uint64_t kSession = 500;   // calls, then all objects are released and made anew
constexpr std::uint64_t kCheckpoints = 8; // the first half is warm-up

std::uint64_t NumberFrom(const wchar_t* variable, std::uint64_t otherwise)
{
    const wchar_t* const value = _wgetenv(variable);
    return value ? wcstoull(value, nullptr, 10) : otherwise;
}
const std::uint64_t calls = NumberFrom(L"QUILL_FUZZ_CALLS", 8'000);
const std::uint64_t seed = NumberFrom(L"QUILL_FUZZ_SEED", 1);

// The call that runs, for a failure's message; the handler and the watch read it.
std::string current;
std::atomic<std::uint64_t> number{0};
std::atomic<ULONGLONG> since{0}; // milliseconds; 0 between calls

[[noreturn]] void Fail(const char* reason)
{
    std::printf("fuzz: FAILED: %s\n  seed %llu, call %llu: %s\n", reason, seed, number.load(),
                current.c_str());
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 3);
    std::abort();
}

LONG WINAPI OnException(EXCEPTION_POINTERS* pointers)
{
    // Errors, not warnings or C++ exceptions; failed checks of behaviour end in an illegal
    // instruction.
    if (pointers->ExceptionRecord->ExceptionCode >> 28 != 0xC) return EXCEPTION_CONTINUE_SEARCH;
    const std::string reason =
        "an exception at " +
        std::to_string(reinterpret_cast<uintptr_t>(pointers->ExceptionRecord->ExceptionAddress));
    Fail(reason.c_str());
}

// A user who closes every window that a call shows, and a watch that ends the run when a call takes
// too long.
class Companion {
public:
    ~Companion()
    {
        SetEvent(stop_.get());
        thread_.join();
    }

private:
    void Run()
    {
        while (WaitForSingleObject(stop_.get(), 15) == WAIT_TIMEOUT) {
            const ULONGLONG begin = since;
            const ULONGLONG running = begin ? GetTickCount64() - begin : 0;
            if (running > kLongestCall) Fail("the call does not return");
            if (running <= 30) looks_.clear();
            for (HWND window : running > 30 ? test::Listed(nullptr) : std::vector<HWND>())
                if (IsToAnswer(window))
                    if (const unsigned looks = looks_[window]++; looks % 8 == 0)
                        Answer(window, looks / 8);
        }
    }
    // No call waits for the shell's progress dialog. Under Wine, a cancel that meets the call that
    // ends it leaves both waiting for each other.
    static bool IsToAnswer(HWND window)
    {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        return process == GetCurrentProcessId() && IsWindowVisible(window) &&
               IsWindowEnabled(window) &&
               (GetClassLongW(window, GCW_ATOM) != 32770 ||
                !FindWindowExW(window, nullptr, PROGRESS_CLASSW, nullptr));
    }
    // Cancels or accepts, by turns: one thing at a time, as a user does, for a dialog may ask
    // something in a window of its own then. What does not go by that gets every answer there is,
    // the buttons that a script gave a task dialog among them.
    static void Answer(HWND window, unsigned attempt)
    {
        const unsigned turn = attempt / 4;
        HWND button = nullptr;
        for (unsigned passed = 0; passed <= turn; ++passed)
            button = FindWindowExW(window, button, WC_BUTTONW, nullptr);
        switch ((number + attempt) % 4) {
        case 0: PostMessageW(window, WM_CLOSE, 0, 0); break;
        case 1: PostMessageW(button ? button : window, BM_CLICK, 0, 0); break;
        default: PostMessageW(window, WM_COMMAND, 1 + (turn < 2 ? attempt % 2 : turn % 11), 0);
        }
        if (turn >= 2)
            PostMessageW(window, TDM_CLICK_BUTTON, turn % 2 ? 1 + turn % 11 : 101 + turn % 32, 0);
    }

    std::map<HWND, unsigned> looks_;
    Event stop_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::thread thread_{[this] { Run(); }};
};

struct Member {
    DISPID id;
    INVOKEKIND access;
    std::string name;
    VARTYPE result;
    std::vector<VARTYPE> parameters; // of references, what is behind
};

// All that is published of an interface.
std::vector<Member> MembersOf(ITypeInfo* info)
{
    std::vector<Member> members;
    FUNCDESC* function = nullptr;
    for (UINT place = 0; SUCCEEDED(info->GetFuncDesc(place, &function)); ++place) {
        BSTR name = nullptr;
        Check(info->GetDocumentation(function->memid, &name, nullptr, nullptr, nullptr));
        Member member{function->memid,
                      function->invkind,
                      test::Narrow(test::Taken(name)),
                      function->elemdescFunc.tdesc.vt,
                      {}};
        for (SHORT index = 0; index < function->cParams; ++index) {
            const TYPEDESC& type = function->lprgelemdescParam[index].tdesc;
            const VARTYPE kind = type.vt == VT_PTR ? type.lptdesc->vt : type.vt;
            member.parameters.push_back(kind == VT_USERDEFINED ? VARTYPE{VT_I4} : kind);
        }
        if (!(function->wFuncFlags & FUNCFLAG_FRESTRICTED)) members.push_back(member);
        info->ReleaseFuncDesc(function);
    }
    return members;
}

// A class, and objects of it.
struct Live {
    std::string name;
    const CatalogueRow* row; // null for what only other objects return
    std::vector<Member> members;
    std::vector<ComPtr<IDispatch>> objects;
};

// Shows a window, or asks the system for much: called less often than the others.
bool IsSlow(const Member& member)
{
    constexpr std::string_view kSlow[] = {
        "Show", "ShowEx", "Selection", "SelectionA", "InputS",    "InputM",      "Dialog",
        "Wait", "Ring",   "Play",      "PlayFile",   "PlayEvent", "Search",      "Application",
        "Add",  "Create", "StartDlg",  "ExeType2",   "ExeType3",  "ShowBalloon", "ChangeIcon"};
    return std::ranges::find(kSlow, member.name) != std::end(kSlow);
}

class Fuzzer {
public:
    Fuzzer()
    {
        fuzzer_ = this;
        ComPtr<ITypeInfo> info;
        for (const CatalogueRow& row : kCatalogue) {
            ComPtr<IDispatch> object;
            Check(CreateHere(row, IID_PPV_ARGS(&object)));
            Check(object->GetTypeInfo(0, LOCALE_NEUTRAL, info.ReleaseAndGetAddressOf()));
            live_.push_back({test::Narrow(row.name), &row, MembersOf(info.Get()), {}});
        }
        Check(TypeLibrary()->GetTypeInfoOfGuid(IID__BinFile, info.ReleaseAndGetAddressOf()));
        live_.push_back({"BinFile", nullptr, MembersOf(info.Get()), {}});
        for (size_t index = 0; index < live_.size(); ++index)
            picks_.insert(picks_.end(), live_[index].members.size(), index);
        folder_ = folderOfRun_.Path(L"1\\2\\3\\4");
        std::filesystem::create_directories(folder_);
        SetCurrentDirectoryW(folder_.c_str());
        timer_ = SetTimer(nullptr, 0, 20, Tick);
    }
    ~Fuzzer()
    {
        KillTimer(nullptr, timer_);
        SetCurrentDirectoryW(L"\\");
    }
    Fuzzer(const Fuzzer&) = delete;
    Fuzzer& operator=(const Fuzzer&) = delete;

    void Run()
    {
        const Companion companion;
        std::vector<Held> held; // at each checkpoint
        FillFolder();
        while (held.size() < kCheckpoints) {
            const std::uint64_t end = calls * (held.size() + 1) / kCheckpoints;
            while (number < end) {
                Step();
                if (number % kSession == 0 || number == end) ReleaseAll();
            }
            held.push_back(Rest());
        }
        const Held& warm = held[kCheckpoints / 2 - 1];
        const Held& now = held.back();
        EXPECT_LE(now.windows, warm.windows);
        EXPECT_LE(now.menus, warm.menus);
        EXPECT_LE(now.threads, warm.threads + 2);
        // Caches of the platform grow once by several blocks, or now and then by one. What a call
        // leaves grows from each checkpoint to the next.
        const auto steady = [&](long Held::*what) {
            long largest = 0;
            for (size_t index = kCheckpoints / 2; index < kCheckpoints; ++index)
                largest = std::max(largest, held[index].*what - held[index - 1].*what);
            return now.*what - warm.*what - largest;
        };
        const long later = static_cast<long>(calls / 10'000);
        EXPECT_LE(steady(&Held::own), 3 + later);
        // Wine's caches are there, and little of ours: several grow by themselves now and then.
        EXPECT_LE(steady(&Held::task), 8 + 2 * later);
        // Until each dialog was shown in each of its forms, the platform is still loading. Wine's
        // file dialog keeps a key of the registry each time in a new prefix.
        EXPECT_TRUE(calls < 100'000 || steady(&Held::handles) <= 8 + fileDialogs_ / 2);
    }

private:
    void FillFolder() const
    {
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
            std::error_code ignored;
            std::filesystem::remove_all(entry.path(), ignored);
        }
        for (const auto& [name, bytes] :
             std::initializer_list<std::pair<const wchar_t*, std::string>>{
                 {L"text.txt", "first\r\nsecond\r\n"},
                 {L"values.ini", "[section]\r\nkey=value\r\n[a]\r\nb=c\r\n"},
                 {L"bytes.bin", std::string(5000, '\x81')},
                 {L"icon.ico", std::string("\0\0\1\0\1\0\x10\x10\0\0\1\0\x20\0\xFF\xFF\0\0", 18)},
                 {L"program.exe", "MZ" + std::string(58, '\0') + "\xF0\xFF\xFF\x7F"}})
            std::ofstream(std::filesystem::path(folder_) / name, std::ios::binary) << bytes;
    }

    ComPtr<IDispatch> Make(const Live& live)
    {
        ComPtr<IDispatch> object;
        Check(CreateHere(*live.row, IID_PPV_ARGS(&object)));
        const Variant log(folder_ + L"\\events.log"); // EventLog's own file would lie elsewhere
        if (live.name == "EventLog")
            test::Invoke(object.Get(), L"File", {&log, 1}, DISPATCH_PROPERTYPUT);
        ComPtr<IConnectionPointContainer> source;
        Random random(static_cast<std::uint32_t>(number));
        DWORD cookie = 0;
        for (int sink = 0; SUCCEEDED(object.As(&source)) && sink < 2; ++sink)
            test::PointOf(object.Get())
                ->Advise(new ScriptObject(random.Below(7), callBack_), &cookie);
        return object;
    }

    Live& PickLive(Random& random)
    {
        for (;;) {
            Live& live = live_[random.Pick(picks_)];
            // Wine forgets a kilobyte of its own at most reads of the clipboard.
            if (live.name == "Clipboard" && !random.Percent(5)) continue;
            if (live.row || !live.objects.empty()) return live;
        }
    }

    void Invoke(IDispatch* object, const Member& member, WORD flags, Arguments& arguments,
                Random& random, std::vector<DISPID> named)
    {
        std::vector<VARIANT> values = arguments.Reversed();
        DISPPARAMS parameters{values.data(), named.data(), static_cast<UINT>(values.size()),
                              static_cast<UINT>(named.size())};
        Variant result;
        EXCEPINFO exception{};
        UINT bad = 0;
        const bool put = flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF);
        const bool unheard = random.Percent(5); // a caller that wants neither result nor error
        const long blocks = TaskBlocks();
        const HRESULT code =
            object->Invoke(member.id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                           put || unheard ? nullptr : &result, unheard ? nullptr : &exception,
                           unheard ? nullptr : &bad);
        const Bstr source(exception.bstrSource);
        const Bstr description(exception.bstrDescription);
        const Bstr help(exception.bstrHelpFile);
        if (code == DISP_E_EXCEPTION && !unheard)
            current += "; raises " + std::to_string(exception.scode) + ' ' +
                       (source ? test::Narrow(source.get()) : "") + ": " +
                       (description ? test::Narrow(description.get()) : "");
        // Where memory is short there is none for a text either.
        if (code == DISP_E_EXCEPTION && !unheard && exception.scode != E_OUTOFMEMORY &&
            ((SUCCEEDED(exception.scode) && exception.wCode == 0) || !description || !source ||
             !std::wstring_view(source.get()).starts_with(L"Quill.")))
            Fail("an error without number, source or text");
        if (code == E_UNEXPECTED || code == HRESULT_FROM_WIN32(ERROR_NOACCESS))
            Fail("an error that nobody raises");
        current += "; result " + Describe(result);
        if (FAILED(code)) {
            // The platform may make a result of the type, but not of any value.
            if (V_VT(&result) == VT_BSTR ? SysStringLen(V_BSTR(&result)) != 0
                                         : V_VT(&result) != VT_EMPTY && V_I8(&result) != 0)
                Fail("an error with a result");
            if (code != DISP_E_EXCEPTION) {
                ++refused_;
                refusedBlocks_ += std::max(0L, TaskBlocks() - blocks);
            }
        }
        if (V_ISBYREF(&result)) Fail("a result that refers to a variable");
        if (member.result == VT_BOOL && V_BOOL(&result) != VARIANT_TRUE &&
            V_BOOL(&result) != VARIANT_FALSE)
            Fail("neither True nor False");
        // A file that a call opened is called from now on, too.
        if (auto& files = live_.back().objects;
            V_VT(&result) == VT_DISPATCH && V_DISPATCH(&result)) {
            if (files.size() >= kObjectsOfClass) files.erase(files.begin());
            files.emplace_back(V_DISPATCH(&result));
        }
    }

    // One call of a random member of a random object of the class.
    void CallRandom(Live& live, Random& random, bool slowToo)
    {
        const std::string outside = std::exchange(current, "a new " + live.name);
        if (live.row &&
            (live.objects.empty() || (live.objects.size() < kObjectsOfClass && random.Percent(5))))
            live.objects.push_back(Make(live));
        const Member& member = random.Pick(live.members);
        if (IsSlow(member) && (!slowToo || !random.Percent(40))) return;
        const bool put = member.access == INVOKE_PROPERTYPUT;
        // Nested calls may release the object that is being called.
        const ComPtr<IDispatch> object = random.Pick(live.objects);
        // A property that held its own object would keep it.
        std::vector<ComPtr<IDispatch>> others;
        for (const Live& other : live_)
            if (!put && !other.objects.empty()) others.push_back(other.objects.back());

        Arguments arguments(random, others, callBack_);
        const bool fileOnly =
            member.name == "File" && (live.name == "EventLog" || live.name == "Profile");
        const bool exact = random.Percent(50);
        constexpr std::wstring_view kPaths[] = {L".\\text.txt", L".\\values.ini", L".\\none.txt",
                                                L"a?b",         L"CON",           L".\\no\\folder"};
        for (const VARTYPE parameter : member.parameters)
            if (fileOnly)
                arguments.Add(random.Pick(kPaths));
            else
                arguments.Add(parameter, exact);
        WORD flags = static_cast<WORD>(member.access);
        if (!put && random.Percent(50))
            flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET; // as scripts do
        std::vector<DISPID> named;
        if (put) named.push_back(DISPID_PROPERTYPUT);
        if (!fileOnly && !exact) {
            while (!arguments.values.empty() && random.Percent(12))
                arguments.values.pop_back();
            if (random.Percent(4))
                for (std::uint32_t more = 1 + random.Below(40); more > 0; --more)
                    arguments.Add(VT_VARIANT, false);
            for (std::uint32_t count = random.Percent(2) ? random.Below(3) : 0; count > 0; --count)
                named.push_back(static_cast<DISPID>(random.Below(5)) - 1); // of any name
            if (random.Percent(1)) flags = static_cast<WORD>(1U << random.Below(4));
        }
        if (named.size() > arguments.values.size()) named.clear();
        current = live.name + '.' + member.name + (put ? " =" : "");
        for (const Variant& value : arguments.values)
            current += ' ' + Describe(value);
        if (!outside.empty()) current += " (inside " + outside + ')';

        IDispatch* const waiting =
            std::exchange(waiting_, member.name == "Wait" ? object.Get() : nullptr);
        if (member.name == "Dialog") ++fileDialogs_;
        ++depth_;
        Invoke(object.Get(), member, flags, arguments, random, named);
        --depth_;
        waiting_ = waiting;
        if (random.Percent(2)) std::erase(live.objects, object);
        current = outside.empty() ? "after " + current : outside;
    }

    // A call during another one.
    void CallInside(std::uint64_t salt)
    {
        Random random(static_cast<std::uint32_t>(1'000'003 * (seed + number) + salt));
        CallRandom(PickLive(random), random, false);
    }

    // While a call waits: other clients call the same objects, stop its clock, or die.
    void OnTick()
    {
        const ULONGLONG running = GetTickCount64() - since;
        if (depth_ == 0 || depth_ > 2 || running < 60) return;
        if (waiting_ && running > 150) test::Invoke(waiting_, L"RemoveTimer");
        CallInside(running);
        Random random(static_cast<std::uint32_t>(running));
        Live& live = PickLive(random);
        ComPtr<IExternalConnection> client;
        if (!random.Percent(3) || live.objects.empty() || FAILED(live.objects[0].As(&client)))
            return;
        client->AddConnection(EXTCONN_STRONG, 0);
        client->ReleaseConnection(EXTCONN_STRONG, 0, TRUE);
    }

    void Step()
    {
        // Each call has numbers of its own: what one takes does not change the next.
        Random random(static_cast<std::uint32_t>(1'000'003 * seed + ++number));
        since = GetTickCount64();
        CallRandom(PickLive(random), random, true);
        since = 0;
        current.clear();
        if (number % 16 == 0) DispatchPending();
    }

    void ReleaseAll()
    {
        for (Live& live : live_)
            live.objects.clear();
        DispatchPending();
        FillFolder();
    }

    // What is held when nothing is used.
    Held Rest() const
    {
        for (int round = 0; round < 20; ++round)
            WaitForMessages(15);
        Held now = HeldNow();
        now.task -= refusedBlocks_;
        std::printf(
            "fuzz: seed %llu, %llu calls, %ld refused: %ld handles, %ld windows, %ld menus, "
            "%ld threads, %ld own and %ld task blocks\n",
            seed, number.load(), refused_, now.handles, now.windows, now.menus, now.threads,
            now.own, now.task);
        std::fflush(stdout);
        return now;
    }

    static void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD) { fuzzer_->OnTick(); }

    static inline Fuzzer* fuzzer_ = nullptr;

    std::vector<Live> live_;
    std::vector<size_t> picks_; // each as often as it has members
    test::TemporaryFolder folderOfRun_;
    std::wstring folder_;
    UINT_PTR timer_ = 0;
    // A script's object that is asked for its value calls, too.
    const std::function<void()> callBack_ = [this] {
        if (depth_ > 0 && depth_ <= 3) CallInside(static_cast<std::uint64_t>(depth_));
    };
    IDispatch* waiting_ = nullptr; // object of a call that waits for a clock
    int depth_ = 0;
    // Wine forgets what it has converted for a call that it refuses on our behalf.
    long refused_ = 0;
    long refusedBlocks_ = 0;
    long fileDialogs_ = 0;
};

TEST(Fuzz, EveryMemberTakesAnything)
{
    const auto handler = AddVectoredExceptionHandler(1, OnException);
    CountTaskBlocks();
    Fuzzer().Run();
    RemoveVectoredExceptionHandler(handler);
}

} // namespace
} // namespace quill::fuzz
