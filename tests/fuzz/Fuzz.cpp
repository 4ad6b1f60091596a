// Calls every member of every published class, late-bound, with whatever a script can pass, and
// fails when one crashes, hangs, answers what no script can use, or leaves something behind.
//
// The classes run in this program, built with checks for undefined behaviour that trap.
// QUILL_FUZZ_CALLS is their number. The same --gtest_random_seed makes the same calls; what a user
// does meanwhile, and calls that come in while a dialog is open, depend on time, too.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <map>
#include <random>
#include <span>
#include <thread>

#include "core/Catalogue.h"
#include "core/MessagePump.h"
#include "core/TypeLibrary.h"
#include "fuzz/Held.h"
#include "support/LateBound.h"
#include "support/Listener.h"
#include "support/Robot.h"
#include "support/TemporaryFolder.h"

namespace quill::fuzz {
namespace {

using namespace std::string_view_literals;

constexpr DWORD kLongestCall = 30'000; // milliseconds; more is a hang
constexpr size_t kDeepest = 3;         // calls inside calls
constexpr size_t kObjectsOfClass = 3;  // that live at a time
constexpr unsigned kSession = 500;     // calls, then all objects are released and made anew

// clang-format off
constexpr LONGLONG kNumbers[] = {
    0, 1, -1, 2, 3, 4, 5, 7, 8, 9, 10, 11, 16, 17, 30, 31, 32, 33, 48, 64, 65, 100, 101, 127, 128,
    255, 256, 257, 1024, 3600, 3601, 32512, 32518, 32767, 32768, -32768, -32769, 65535, 65536,
    INT32_MAX, INT32_MIN, 1LL << 31, UINT32_MAX, 1LL << 53, INT64_MAX, INT64_MIN};

// With the last second that a date can be.
constexpr double kFractions[] = {0.5, -0.5, 1.5, 36526.25, 2958465.999988426, 2958466, -657434,
                                 -657435, 1e308, -1e308, 1e-310, NAN, INFINITY};

// Texts that mean something to one class or another. Paths are relative to the folder of the run,
// or name nothing that exists.
constexpr std::wstring_view kTexts[] = {
    L"", L" ", L"a", L"0", L"-1", L" 12 ", L"1e400", L"&H7F", L"2024-02-30", L"12:30", L"True",
    L"\x0663\x0664", L"a\r\nb\r\nc", L"\n\r", L"a=b\r\nc", L"Text\0*.txt\0All\0*.*\0\0"sv, L"key",
    L"hidden\0behind"sv, L"\0"sv, L"%s%n%1!s!%%n%", L"%PATH%%NOTHING%%", L"{0}\\u0041\\", L"[a-",
    L"*a*b*c*d*e*f*g", L";;;", L"x\xDC00y", L"\xD83D\xDE00", L"\x202Eolleh", L"CON", L".", L"//",
    L"..\\..\\up.txt", L"\\\\.\\", L"\\\\?\\", L"\\\\nohost\\share\\x", L"Q:\\", L"Q:x", L"C:",
    L".\\text.ini", L".\\icon.ico", L".\\program.exe", L"*.txt", L"section", L"\\\\\\", L"- -",
    L"HKEY_CURRENT_USER\\", L"HKEY_LOCAL_MACHINE\\System\\\\", L"HKEY_CLASSES_ROOT\\.txt\\", L"\t",
    L"SHA256", L"00ff 7F", L"QQ==", L"====", L"http://u:p@host:80/p/a?q=1#f", L"http://[::1",
    L"file:///Q:/a%20b", L"%zz%C3%28%", L"shell32.dll", L"#99999", L"SystemAsterisk"};

// As often as each is to be taken; the elements of arrays have those after the first four.
constexpr VARTYPE kTypes[] = {
    VT_EMPTY, VT_NULL, VT_ARRAY, VT_ARRAY, VT_VARIANT, VT_VARIANT, VT_BSTR, VT_BSTR, VT_BSTR,
    VT_BSTR, VT_DISPATCH, VT_DISPATCH, VT_ERROR, VT_I1, VT_I2, VT_I4, VT_I8, VT_UI1, VT_UI2, VT_UI4,
    VT_UI8, VT_INT, VT_UINT, VT_R4, VT_R8, VT_CY, VT_DATE, VT_BOOL, VT_DECIMAL};

constexpr std::pair<const wchar_t*, std::string_view> kFiles[] = {
    {L"text.ini", "first\r\n[section]\r\nkey=value\r\n[a]\r\nb=c\r\n\x81\0\xFF"sv},
    {L"icon.ico", "\0\0\1\0\1\0\x10\x10\0\0\1\0\x20\0\xFF\xFF\0\0"sv},
    {L"program.exe", "MZ..........................................................\xF0\xFF\xFF\x7F"sv}};
// clang-format on

struct Member {
    const CatalogueRow* row; // null for what only other objects return
    ComPtr<ITypeInfo> info;
    const FUNCDESC& function; // the type information's
    std::string name;
};

// One that runs, with random numbers of its own: what it takes does not change the next.
struct Call {
    std::mt19937 random;
    std::string text = "a new object"; // for a failure's message
    ComPtr<IDispatch> object = {};     // calls inside may release it
};

const char* const wantedCalls = std::getenv("QUILL_FUZZ_CALLS");
const unsigned calls = wantedCalls ? std::stoul(wantedCalls) : 12'000;

class Fuzz : public testing::Test {
public:
    Fuzz()
    {
        fuzzer_ = this;
        CountTaskBlocks();
        SetCurrentDirectoryW(folder_.Path().c_str());
        ComPtr<ITypeInfo> info;
        for (const CatalogueRow& row : kCatalogue) {
            ComPtr<IDispatch> object;
            Check(CreateHere(row, IID_PPV_ARGS(&object)));
            Check(object->GetTypeInfo(0, LOCALE_NEUTRAL, info.ReleaseAndGetAddressOf()));
            AddMembers(&row, row.name, info);
        }
        Check(TypeLibrary()->GetTypeInfoOfGuid(IID__BinFile, info.ReleaseAndGetAddressOf()));
        AddMembers(nullptr, L"BinFile", info);
        SetTimer(nullptr, 0, 20, [](HWND, UINT, UINT_PTR, DWORD) WINAPI { fuzzer_->OnTick(); });
        AddVectoredExceptionHandler(1, [](EXCEPTION_POINTERS* pointers) WINAPI -> LONG {
            // Errors, not warnings or C++ exceptions; failed checks of behaviour end in an illegal
            // instruction.
            const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
            if (fuzzer_ && record.ExceptionCode >> 28 == 0xC)
                fuzzer_->Fail("an exception", reinterpret_cast<ULONG_PTR>(record.ExceptionAddress));
            return EXCEPTION_CONTINUE_SEARCH;
        });
    }

    ~Fuzz() override { fuzzer_ = nullptr; }

    void AddMembers(const CatalogueRow* row, std::wstring_view name, const ComPtr<ITypeInfo>& info)
    {
        FUNCDESC* function = nullptr;
        for (UINT place = 0; SUCCEEDED(info->GetFuncDesc(place, &function)); ++place) {
            BSTR member = nullptr;
            Check(info->GetDocumentation(function->memid, &member, nullptr, nullptr, nullptr));
            const std::wstring full = std::wstring(name) + L'.' + test::Taken(member);
            if (!(function->wFuncFlags & FUNCFLAG_FRESTRICTED))
                members_.push_back({row, info, *function, test::Narrow(full)});
        }
    }

    [[noreturn]] void Fail(const char* reason, ULONG_PTR place = 0) const
    {
        std::printf("fuzz: FAILED: %s %#lx\n  seed %d, call %u%s\n", reason, place,
                    GTEST_FLAG_GET(random_seed), number_.load(), since_ ? "" : ", after it");
        for (const Call& call : calls_)
            std::printf("    %s\n", call.text.c_str());
        std::fflush(stdout);
        TerminateProcess(GetCurrentProcess(), 3);
        std::abort();
    }

    // The user, and a watch, on a thread of their own.
    void Answer(const std::stop_token& end) const
    {
        for (unsigned look = 0; !end.stop_requested(); Sleep(15)) {
            const ULONGLONG begin = since_;
            const ULONGLONG running = begin ? GetTickCount64() - begin : 0;
            if (running > kLongestCall) Fail("the call does not return");
            look = running > 30 ? look + 1 : 0;
            // One thing at a time: a dialog may ask something in a window of its own then.
            for (HWND window : look % 8 == 1 ? test::Listed(nullptr) : std::vector<HWND>())
                AnswerWindow(window, number_ + look / 8);
        }
    }

    // Closes it or presses its first button, by turns.
    static void AnswerWindow(HWND window, unsigned turn)
    {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        // No call waits for the shell's progress dialog. Under Wine, a cancel that meets the call
        // that ends it leaves both waiting for each other.
        if (process != GetCurrentProcessId() || !IsWindowVisible(window) ||
            !IsWindowEnabled(window) ||
            (test::Desk::ClassOf(window) == L"#32770" &&
             FindWindowExW(window, nullptr, PROGRESS_CLASSW, nullptr)))
            return;
        const HWND button = FindWindowExW(window, nullptr, WC_BUTTONW, nullptr);
        const bool presses = button && turn % 2;
        PostMessageW(presses ? button : window, presses ? BM_CLICK : WM_CLOSE, 0, 0);
    }

    std::uint32_t Below(size_t limit) { return calls_.back().random() % limit; }
    bool Percent(unsigned chance) { return Below(100) < chance; }
    auto& Pick(auto&& list) { return std::begin(list)[Below(std::size(list))]; }

    // A script's object, or its sink of events.
    struct ScriptObject final : test::CountedDispatch {
        STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result,
                            EXCEPINFO* exception, UINT*) noexcept override
        {
            const ComPtr<IDispatch> self(this); // which a call inside may release
            if (fuzzer_->Percent(20)) return DISP_E_MEMBERNOTFOUND;
            if (fuzzer_->Percent(20)) fuzzer_->CallInside();
            if (exception) exception->scode = E_FAIL;
            if (fuzzer_->Percent(20)) return DISP_E_EXCEPTION;
            if (result) *result = fuzzer_->Any(VT_VARIANT, 2).Detach();
            return S_OK;
        }
    };

    std::wstring Text()
    {
        constexpr size_t kSpans[] = {0, 0x20, 0xFFA0}; // of characters; 0 for lines
        constexpr size_t kLengths[] = {1, 2, 3, 12, 31, 64, 128, 260, 600, 100'000};
        if (Percent(70)) return std::wstring(Pick(kTexts));
        // No other path than those: the platform takes seconds for the parts of a long one.
        std::wstring text;
        const size_t span = Pick(kSpans);
        for (size_t count = Pick(kLengths); count > 0; --count)
            text += span ? std::wstring(1, static_cast<wchar_t>(L']' + Below(span))) : L"a\r\n";
        return text;
    }

    // What a variable of this type can hold; VT_VARIANT is anything.
    Variant Any(VARTYPE type, int depth = 0)
    {
        while (type == VT_VARIANT)
            type = Pick(kTypes);
        if (type == VT_ARRAY) return depth < 3 ? AnyArray(depth) : Variant();
        if (type == VT_BSTR && Percent(95)) return Variant(Text());
        if (type == VT_DISPATCH && Percent(80))
            return Variant(ComPtr<IDispatch>(new ScriptObject).Get());
        Variant value;
        V_VT(&value) = type;
        if (type == VT_BSTR || type == VT_DISPATCH) return value; // null
        V_I8(&value) = Percent(85) ? Pick(kNumbers) : Below(UINT_MAX);
        if (type == VT_R8 || type == VT_DATE)
            V_R8(&value) = Percent(50) ? static_cast<double>(V_I8(&value)) : Pick(kFractions);
        if (type == VT_ERROR) V_ERROR(&value) = DISP_E_PARAMNOTFOUND;
        if (type == VT_DECIMAL) V_DECIMAL(&value).scale = static_cast<BYTE>(Below(29));
        return value;
    }

    Variant AnyArray(int depth)
    {
        constexpr LONG kBounds[] = {0, 0, 0, 0, 0, 0, 1, -5, INT32_MIN, 2'147'000'000};
        constexpr ULONG kCounts[] = {0, 1, 1, 2, 3, 3, 10, 11, 33, 300, 100'000};
        constexpr UINT kDimensions[] = {1, 1, 1, 1, 1, 1, 1, 1, 2, 60};
        const VARTYPE type = Percent(30) ? VARTYPE{VT_VARIANT} : Pick(std::span(kTypes).subspan(4));
        Variant value;
        V_VT(&value) = static_cast<VARTYPE>(VT_ARRAY | type);
        if (Percent(5)) return value; // null
        std::vector<SAFEARRAYBOUND> bounds(Pick(kDimensions), {1, 0});
        bounds[0] = {Pick(kCounts), Pick(kBounds)};
        V_ARRAY(&value) = SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data());
        std::vector<LONG> place(bounds.size(), bounds[0].lLbound);
        for (ULONG count = std::min(bounds[0].cElements, 40UL); count > 0; --count, ++place[0]) {
            Variant element = Any(type, depth + 1);
            const bool pointer = type == VT_BSTR || type == VT_DISPATCH;
            SafeArrayPutElement(V_ARRAY(&value), place.data(),
                                pointer ? V_BYREF(&element) : DataOf(element, type));
        }
        return value;
    }

    // Where it has what a variable of this type holds.
    static void* DataOf(Variant& value, VARTYPE type)
    {
        const bool whole = type == VT_VARIANT || type == VT_DECIMAL;
        return whole ? static_cast<void*>(&value) : &V_UI1(&value);
    }

    // What an argument of this type may be: of its type when `exact`, else anything. `referred`
    // holds what it refers to.
    Variant Argument(const TYPEDESC& described, bool exact, std::deque<Variant>& referred)
    {
        VARTYPE type = described.vt == VT_PTR ? described.lptdesc->vt : described.vt;
        if (type == VT_USERDEFINED) type = VT_I4;
        Variant value = Any(exact || Percent(50) ? type : VARTYPE{VT_VARIANT});
        // Anything by a Variant: Wine copies what is given by value, or by a variable with a type,
        // and forgets the copy when it refuses the call for another argument.
        if (exact && Percent(70)) return value;
        Variant& variable = referred.emplace_back(std::move(value));
        type = exact && V_VT(&variable) > VT_NULL ? V_VT(&variable) : VARTYPE{VT_VARIANT};
        return test::Reference(type, DataOf(variable, type));
    }

    // Any member of any object.
    void CallAny(std::uint32_t randomSeed)
    {
        Call& call = calls_.emplace_back(Call{std::mt19937(randomSeed)});
        const Member& member = Pick(members_);
        auto& objects = objects_[member.row];
        if (member.row && objects.size() < kObjectsOfClass && (objects.empty() || Percent(5))) {
            ComPtr<IDispatch>& made = objects.emplace_back();
            Check(CreateHere(*member.row, IID_PPV_ARGS(&made)));
            ComPtr<IConnectionPointContainer> source;
            for (DWORD cookie = 0; SUCCEEDED(made.As(&source)) && Percent(60);)
                test::PointOf(made.Get())->Advise(new ScriptObject, &cookie);
        }
        if (objects.empty()) return;
        call.object = Pick(objects);
        call.text = member.name;

        const bool exact = Percent(50);
        std::vector<Variant> arguments;
        std::deque<Variant> referred; // stay where they are
        for (SHORT index = 0; index < member.function.cParams; ++index)
            arguments.push_back(
                Argument(member.function.lprgelemdescParam[index].tdesc, exact, referred));
        auto flags = static_cast<WORD>(member.function.invkind);
        const bool puts = flags == INVOKE_PROPERTYPUT;
        if (!puts && Percent(50)) flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET; // as scripts
        std::vector<DISPID> named(puts, DISPID_PROPERTYPUT);
        if (!exact) {
            // Too few or too many. Wine takes those of a value for indexes, and does not survive
            // them where the value is an array of null.
            if (Percent(20) && !arguments.empty()) arguments.resize(Below(arguments.size() + 3));
            if (Percent(2)) named.assign(1 + Below(2), static_cast<DISPID>(Below(5)) - 1);
            if (Percent(1)) flags = static_cast<WORD>(1U << Below(4));
        }
        if (named.size() > arguments.size()) named.clear();
        for (const Variant& argument : arguments)
            call.text += ' ' + test::Describe(argument);
        // Themselves: the object may replace one that it takes by reference.
        std::ranges::reverse(arguments);
        DISPPARAMS parameters{arguments.data(), named.data(), static_cast<UINT>(arguments.size()),
                              static_cast<UINT>(named.size())};

        const bool last = Percent(2);
        const bool heard = Percent(95); // or the caller wants neither result nor error
        Variant result;
        EXCEPINFO error{};
        UINT bad = 0;
        const long before = taskBlocks;
        const HRESULT code = call.object->Invoke(
            member.function.memid, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
            heard && !puts ? &result : nullptr, heard ? &error : nullptr, heard ? &bad : nullptr);
        const std::wstring source = test::Taken(error.bstrSource);
        const std::wstring description = test::Taken(error.bstrDescription);
        const Bstr help(error.bstrHelpFile);
        call.text += " -> " + std::to_string(code) + ' ' + test::Describe(result) + ", " +
                     std::to_string(error.scode) + test::Narrow(source + L": " + description);
        // Where memory is short there is none for a text either.
        if (code == DISP_E_EXCEPTION && heard && error.scode != E_OUTOFMEMORY &&
            ((SUCCEEDED(error.scode) && error.wCode == 0) || description.empty() ||
             !source.starts_with(L"Quill.")))
            Fail("an error without number, source or text");
        if (code == E_UNEXPECTED || code == HRESULT_FROM_WIN32(ERROR_NOACCESS))
            Fail("an error that nobody raises");
        // Wine forgets what it has converted for a call that it refuses on our behalf.
        if (FAILED(code) && code != DISP_E_EXCEPTION)
            taskBlocks = std::min<long>(taskBlocks, before);
        // The platform may make a result of the type, but not of any value.
        if (FAILED(code) &&
            (V_VT(&result) == VT_BSTR ? SysStringLen(V_BSTR(&result)) != 0
                                      : V_VT(&result) != VT_EMPTY && V_I8(&result) != 0))
            Fail("an error with a result");
        if (V_ISBYREF(&result)) Fail("a result that refers to a variable");
        if (member.function.elemdescFunc.tdesc.vt == VT_BOOL && V_BOOL(&result) != VARIANT_TRUE &&
            V_BOOL(&result) != VARIANT_FALSE)
            Fail("neither True nor False");
        // A file that a call opened is called from now on, too.
        auto& files = objects_[nullptr];
        if (member.name == "File.OpenBinary" && V_DISPATCH(&result))
            files.insert(files.begin(), V_DISPATCH(&result));
        if (files.size() > kObjectsOfClass) files.pop_back();
        if (last) std::erase(objects, call.object);
        call.object.Reset();
    }

    // During another one.
    void CallInside()
    {
        if (since_ == 0 || calls_.size() > kDeepest) return;
        CallAny(calls_.back().random());
        calls_.pop_back();
    }

    // While a call waits, other clients call, too. When it waits for long, they die.
    void OnTick()
    {
        const ULONGLONG running = GetTickCount64() - since_;
        if (since_ == 0 || running < 60) return;
        CallInside();
        for (const Call& call : calls_)
            if (running > 500 && call.object) test::LastClient(call.object.Get()).Die();
    }

    // What is held then, when nothing is used.
    Held RunTo(unsigned end)
    {
        for (; number_ < end; since_ = 0) {
            if (number_ % kSession == 0) ReleaseAll();
            since_ = GetTickCount64();
            calls_.clear();
            CallAny(1'000'003U * static_cast<unsigned>(GTEST_FLAG_GET(random_seed)) + ++number_);
            DispatchPending();
        }
        ReleaseAll();
        for (int round = 0; round < 20; ++round)
            WaitForMessages(15);
        const Held now = HeldNow();
        std::printf("fuzz: %u calls", number_.load());
        for (size_t kind = 0; kind < kHeld.size(); ++kind)
            std::printf(", %ld %s", now[kind], kHeld[kind]);
        std::puts("");
        return now;
    }

    void ReleaseAll()
    {
        objects_.clear();
        DispatchPending();
        for (const auto& [name, bytes] : kFiles)
            folder_.Write(name, bytes);
    }

    static inline Fuzz* fuzzer_ = nullptr;

    std::atomic<unsigned> number_ = 0; // of the call
    std::atomic<ULONGLONG> since_ = 0; // milliseconds; 0 between calls
    std::deque<Call> calls_;           // the outermost first
    std::vector<Member> members_;
    std::map<const CatalogueRow*, std::vector<ComPtr<IDispatch>>> objects_; // by class
    const test::TemporaryFolder folder_;
};

TEST_F(Fuzz, EveryMemberTakesAnything)
{
    const std::jthread user([this](const std::stop_token& end) { Answer(end); });
    const Held warm = RunTo(calls / 2);
    const Held now = RunTo(calls);
    // Handles: Wine's file dialog keeps a key of the registry each time in a new prefix. Wine's
    // caches are among the task blocks, and little of ours.
    const long later = static_cast<long>(calls / 20'000);
    const Held growth{7 + 6 * later, 0, 0, 2, 5 + later, 12 + 2 * later};
    for (size_t kind = 0; kind < kHeld.size(); ++kind)
        EXPECT_LE(now[kind], warm[kind] + growth[kind]) << kHeld[kind];
}

} // namespace
} // namespace quill::fuzz
