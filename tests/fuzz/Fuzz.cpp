// Calls every member of every published class, late-bound, with whatever a script can pass, and
// fails when one crashes, hangs, keeps a value outside its limits, or leaves something behind.
//
// The classes run in this program, built with checks for undefined behaviour that trap; with
// QUILL_SERVER set they run in the registered server. QUILL_FUZZ_CALLS and QUILL_FUZZ_SEED are
// numbers; the same seed makes the same calls. What a user does meanwhile, and calls that come in
// while a dialog is open, depend on time, too.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "core/Catalogue.h"
#include "core/MessagePump.h"
#include "core/TypeLibrary.h"
#include "fuzz/Companion.h"
#include "fuzz/Hostile.h"
#include "fuzz/Ledger.h"
#include "fuzz/Rules.h"
#include "fuzz/Usage.h"
#include "support/TemporaryFolder.h"

namespace quill::fuzz {
namespace {

constexpr DWORD kLongestCall = 30'000;  // milliseconds; more is a hang
constexpr size_t kObjectsOfClass = 3;   // that live at a time
constexpr std::uint64_t kSession = 500; // calls, then all objects are released and made anew
constexpr int kCheckpoints = 8;         // the first half is warm-up
// Caches of the platform grow by a block now and then, at moments that depend on time; what one of
// 500 members leaves at each call comes to more.
constexpr long kCachedBlocks = 4;

std::uint64_t NumberFrom(const wchar_t* variable, std::uint64_t otherwise)
{
    const wchar_t* const value = _wgetenv(variable);
    return value ? wcstoull(value, nullptr, 10) : otherwise;
}

struct Options {
    std::uint64_t calls = std::max(NumberFrom(L"QUILL_FUZZ_CALLS", 8'000), 1ULL * kCheckpoints);
    std::uint64_t seed = NumberFrom(L"QUILL_FUZZ_SEED", 1);
    bool server = _wgetenv(L"QUILL_SERVER") != nullptr;
};

struct Parameter {
    VARTYPE type;
    bool optional;
};

struct Member {
    std::wstring name;
    DISPID id;
    INVOKEKIND kind;
    VARTYPE result;
    std::vector<Parameter> parameters;
};

struct Class {
    std::wstring name;
    const CatalogueRow* row; // null for what only other objects return
    std::vector<Member> members;
    const Member* Getter(DISPID id) const
    {
        for (const Member& member : members)
            if (member.id == id && member.kind == INVOKE_PROPERTYGET) return &member;
        return nullptr;
    }
};

struct Outcome {
    HRESULT code;
    Variant result;
};

// Shows a window, or asks the system for much: called less often than the others.
bool IsSlow(const Member& member)
{
    constexpr std::wstring_view slow[] = {
        L"Show",     L"ShowEx",      L"Selection", L"SelectionA", L"InputS",   L"InputM",
        L"Dialog",   L"Wait",        L"Ring",      L"Play",       L"PlayFile", L"PlayEvent",
        L"Search",   L"Application", L"Add",       L"Create",     L"StartDlg", L"ExeType2",
        L"ExeType3", L"ShowBalloon", L"ChangeIcon"};
    return std::ranges::find(slow, member.name) != std::end(slow);
}

// What the program does, for a failure's message; the handler and the watch read it.
std::wstring current;
std::uint64_t currentNumber = 0;
const Options options;

std::string Narrow(const std::wstring& text)
{
    std::string narrow;
    for (const wchar_t unit : text)
        narrow += unit < 0x80 ? static_cast<char>(unit) : '?';
    return narrow;
}

[[noreturn]] void Fail(const wchar_t* reason)
{
    std::printf("fuzz: FAILED: %s\n  seed %llu, call %llu: %s\n", Narrow(reason).c_str(),
                options.seed, currentNumber, Narrow(current).c_str());
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 3);
    std::abort();
}

LONG WINAPI OnException(EXCEPTION_POINTERS* pointers)
{
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    switch (record.ExceptionCode) {
    case EXCEPTION_ACCESS_VIOLATION:
    case EXCEPTION_ILLEGAL_INSTRUCTION: // the checks of undefined behaviour end in one
    case EXCEPTION_STACK_OVERFLOW:
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
    case EXCEPTION_INT_OVERFLOW:
    case EXCEPTION_DATATYPE_MISALIGNMENT:
    case EXCEPTION_ARRAY_BOUNDS_EXCEEDED:
    case EXCEPTION_PRIV_INSTRUCTION:
    case 0xC0000374:   // a heap is damaged
    case 0xC0000409: { // a stack is
        wchar_t module[MAX_PATH] = L"?";
        HMODULE base = nullptr;
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                               GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           static_cast<LPCWSTR>(record.ExceptionAddress), &base);
        if (base) GetModuleFileNameW(base, module, MAX_PATH);
        static wchar_t reason[MAX_PATH + 100];
        swprintf(reason, std::size(reason), L"exception 0x%08lx at %p, %ls + 0x%x, of thread %lx",
                 record.ExceptionCode, record.ExceptionAddress, module,
                 static_cast<unsigned>(static_cast<BYTE*>(record.ExceptionAddress) -
                                       reinterpret_cast<BYTE*>(base)),
                 GetCurrentThreadId());
        Fail(reason);
    }
    default: return EXCEPTION_CONTINUE_SEARCH;
    }
}

// The published members, from the type library.
Class ReadClass(ITypeInfo* classInfo)
{
    Class read{};
    BSTR name = nullptr;
    Check(classInfo->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr));
    read.name = Bstr(name).get();
    for (const CatalogueRow& row : kCatalogue)
        if (read.name == row.name) read.row = &row;

    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> info;
    Check(classInfo->GetRefTypeOfImplType(0, &reference));
    Check(classInfo->GetRefTypeInfo(reference, &info));
    TYPEATTR* attributes = nullptr;
    Check(info->GetTypeAttr(&attributes));
    const WORD functions = attributes->cFuncs;
    info->ReleaseTypeAttr(attributes);
    for (UINT index = 0; index < functions; ++index) {
        FUNCDESC* function = nullptr;
        Check(info->GetFuncDesc(index, &function));
        if (function->memid > 0 && function->memid < 0x10000) {
            Member member{{}, function->memid, function->invkind, VT_EMPTY, {}};
            Check(info->GetDocumentation(function->memid, &name, nullptr, nullptr, nullptr));
            member.name = Bstr(name).get();
            member.result = function->elemdescFunc.tdesc.vt;
            for (SHORT number = 0; number < function->cParams; ++number) {
                const ELEMDESC& element = function->lprgelemdescParam[number];
                const USHORT flags = element.paramdesc.wParamFlags;
                VARTYPE type = element.tdesc.vt;
                if (type == VT_PTR) type = element.tdesc.lptdesc->vt;
                if (type == VT_USERDEFINED) type = VT_I4;
                if (flags & PARAMFLAG_FRETVAL)
                    member.result = type;
                else
                    member.parameters.push_back({type, (flags & PARAMFLAG_FOPT) != 0});
            }
            read.members.push_back(std::move(member));
        }
        info->ReleaseFuncDesc(function);
    }
    return read;
}

std::vector<Class> ReadClasses()
{
    std::vector<Class> classes;
    ITypeLib* library = TypeLibrary();
    for (UINT index = 0; index < library->GetTypeInfoCount(); ++index) {
        TYPEKIND kind{};
        Check(library->GetTypeInfoType(index, &kind));
        if (kind != TKIND_COCLASS) continue;
        ComPtr<ITypeInfo> info;
        Check(library->GetTypeInfo(index, &info));
        classes.push_back(ReadClass(info.Get()));
    }
    return classes;
}

// Objects of a class, and the sinks that hear their events.
struct Live {
    const Class* type;
    std::vector<ComPtr<IDispatch>> objects;
};

// What is held at a moment of the run, and what had happened until then.
struct Checkpoint {
    Usage usage;
    long refused = 0;     // calls
    long fileDialogs = 0; // that were asked for
};

class Fuzzer {
public:
    Fuzzer() : random_(options.seed), classes_(ReadClasses())
    {
        for (const Class& type : classes_)
            live_.push_back({&type, {}});
        for (const Class& type : classes_)
            members_ += static_cast<long>(type.members.size());
        folder_ = folder_of_run_.Path(L"1\\2\\3\\4");
        std::filesystem::create_directories(folder_);
        SetCurrentDirectoryW(folder_.c_str());
    }
    ~Fuzzer() { SetCurrentDirectoryW(L"\\"); }
    Fuzzer(const Fuzzer&) = delete;
    Fuzzer& operator=(const Fuzzer&) = delete;

    void Run();

private:
    void FillFolder() const;
    void Step();
    void Session(std::uint64_t end);
    void CallRandom(Live& live, Random& random, bool slowToo);
    Outcome Invoke(IDispatch* object, const Member& member, WORD flags, Arguments& arguments,
                   Random& random, std::vector<DISPID> named) const;
    void CheckOutcome(const Class& type, const Member& member, const Outcome& outcome);
    Variant Read(IDispatch* object, const Member& getter) const;
    void Keep(IDispatch* object);
    void CallInside(Random random);
    void CallBack();
    void OnTick();
    static void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD) { fuzzer_->OnTick(); }
    ComPtr<IDispatch> Make(const Class& type);
    Checkpoint Rest();
    void Print(const Checkpoint& now) const;
    static void ExpectNoGrowth(const Checkpoint& before, const Checkpoint& after);
    ComPtr<IDispatch> HoldServer();
    const Class* ClassOf(IDispatch* object) const;
    Live& PickLive(Random& random);
    std::vector<ComPtr<IDispatch>> SomeObjects() const;

    static inline Fuzzer* fuzzer_ = nullptr;

    Random random_;
    std::vector<Class> classes_;
    std::vector<Live> live_;
    long members_ = 0;
    test::TemporaryFolder folder_of_run_;
    std::wstring folder_;
    std::unique_ptr<Companion> companion_;
    std::function<void()> callBack_ = [this] { CallBack(); };
    const Member* outer_ = nullptr; // the member that is being called
    IDispatch* called_ = nullptr;   // and its object
    int depth_ = 0;
    DWORD process_ = GetCurrentProcessId();
    Event server_;
    long succeeded_ = 0;
    long raised_ = 0;
    long refused_ = 0;
    long forgotten_ = 0;    // objects of the script
    long leftBlocks_ = 0;   // of the task allocator, by calls that the platform refused
    long insideBlocks_ = 0; // that calls inside this one have left
    long nested_ = 0;
    long fileDialogs_ = 0;
};

void Fuzzer::FillFolder() const
{
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
        std::error_code ignored;
        std::filesystem::remove_all(entry.path(), ignored);
    }
    const auto write = [this](const wchar_t* name, std::string_view bytes) {
        std::ofstream(std::filesystem::path(folder_) / name, std::ios::binary)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    };
    write(L"text.txt", "first\r\nsecond\r\n");
    write(L"values.ini", "[section]\r\nkey=value\r\n[a]\r\nb=c\r\n");
    write(L"bytes.bin", std::string(5000, '\x81'));
    write(L"icon.ico", std::string_view("\0\0\1\0\1\0\x10\x10\0\0\1\0\x20\0\xFF\xFF\0\0", 18));
    write(L"program.exe",
          std::string("MZ") + std::string(58, '\0') + std::string("\xF0\xFF\xFF\x7F", 4));
}

ComPtr<IDispatch> Fuzzer::Make(const Class& type)
{
    ComPtr<IDispatch> object;
    if (options.server)
        Check(CoCreateInstance(type.row->id, nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&object)));
    else
        Check(CreateHere(*type.row, IID_PPV_ARGS(&object)));
    if (type.name == L"EventLog") { // its own file would lie elsewhere
        VARIANT file = Variant(folder_ + L"\\events.log").Detach();
        DISPID put = DISPID_PROPERTYPUT;
        DISPPARAMS parameters{&file, &put, 1, 1};
        for (const Member& member : type.members)
            if (member.name == L"File" && member.kind == INVOKE_PROPERTYPUT)
                Check(object->Invoke(member.id, IID_NULL, 0, DISPATCH_PROPERTYPUT, &parameters,
                                     nullptr, nullptr, nullptr));
        VariantClear(&file);
    }
    ComPtr<IConnectionPointContainer> source;
    ComPtr<IEnumConnectionPoints> points;
    ComPtr<IConnectionPoint> point;
    if (SUCCEEDED(object.As(&source)) && SUCCEEDED(source->EnumConnectionPoints(&points)) &&
        points->Next(1, &point, nullptr) == S_OK) {
        DWORD cookie = 0;
        for (int sink = 0; sink < 2; ++sink)
            point->Advise(MakeScriptObject(random_, callBack_).Get(), &cookie);
    }
    return object;
}

const Class* Fuzzer::ClassOf(IDispatch* object) const
{
    ComPtr<ITypeInfo> info;
    BSTR name = nullptr;
    if (FAILED(object->GetTypeInfo(0, 0, &info)) ||
        FAILED(info->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr)))
        return nullptr;
    const Bstr owned(name);
    for (const Class& type : classes_)
        if (L'_' + type.name == name) return &type;
    return nullptr;
}

// An object that a call returned is called from now on, too.
void Fuzzer::Keep(IDispatch* object)
{
    const Class* type = ClassOf(object);
    if (!type) return; // one of ours, that a property held
    for (Live& live : live_)
        if (live.type == type) {
            if (live.objects.size() >= kObjectsOfClass) live.objects.erase(live.objects.begin());
            live.objects.emplace_back(object);
        }
}

std::vector<ComPtr<IDispatch>> Fuzzer::SomeObjects() const
{
    std::vector<ComPtr<IDispatch>> objects;
    for (const Live& live : live_)
        if (!live.objects.empty()) objects.push_back(live.objects.back());
    return objects;
}

Live& Fuzzer::PickLive(Random& random)
{
    for (;;) {
        Live& live = live_[random.Below(static_cast<std::uint32_t>(live_.size()))];
        // Wine forgets a kilobyte of its own at most reads of the clipboard.
        if (live.type->name == L"Clipboard" && !random.Percent(5)) continue;
        if (live.type->row || !live.objects.empty()) return live;
    }
}

Outcome Fuzzer::Invoke(IDispatch* object, const Member& member, WORD flags, Arguments& arguments,
                       Random& random, std::vector<DISPID> named) const
{
    std::vector<VARIANT> values = arguments.Reversed();
    DISPPARAMS parameters{values.data(), named.data(), static_cast<UINT>(values.size()),
                          static_cast<UINT>(named.size())};
    Outcome outcome{};
    EXCEPINFO exception{};
    UINT bad = 0;
    const bool put = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
    const bool unheard = random.Percent(5); // a caller that wants neither result nor error
    outcome.code = object->Invoke(member.id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                  put || unheard ? nullptr : &outcome.result,
                                  unheard ? nullptr : &exception, unheard ? nullptr : &bad);
    // Where memory is short there is none for a text either.
    if (outcome.code == DISP_E_EXCEPTION && !unheard && exception.scode != E_OUTOFMEMORY) {
        const Bstr source(exception.bstrSource);
        const Bstr description(exception.bstrDescription);
        const Bstr help(exception.bstrHelpFile);
        if (SUCCEEDED(exception.scode) && exception.wCode == 0) Fail(L"an error without a number");
        if (!source || std::wstring_view(source.get()).substr(0, 6) != L"Quill.")
            Fail(L"an error without a source");
        if (!description) Fail(L"an error without a text");
    }
    return outcome;
}

Variant Fuzzer::Read(IDispatch* object, const Member& getter) const
{
    DISPPARAMS none{};
    Variant value;
    if (FAILED(object->Invoke(getter.id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                              &value, nullptr, nullptr)))
        return {};
    return value;
}

void Fuzzer::CheckOutcome(const Class& type, const Member& member, const Outcome& outcome)
{
    const VARTYPE kind = V_VT(&outcome.result);
    if (FAILED(outcome.code)) {
        if (outcome.code == E_UNEXPECTED || outcome.code == static_cast<HRESULT>(0x800703E6))
            Fail(L"an error that nobody raises");
        // The platform may make a result of the type, but not of any value.
        if (kind == VT_BSTR ? SysStringLen(V_BSTR(&outcome.result)) != 0
                            : kind != VT_EMPTY && V_I8(&outcome.result) != 0) {
            current += L" left " + Describe(outcome.result);
            Fail(L"an error with a result");
        }
        return;
    }
    if (member.result == VT_BOOL && kind == VT_BOOL && V_BOOL(&outcome.result) != VARIANT_TRUE &&
        V_BOOL(&outcome.result) != VARIANT_FALSE)
        Fail(L"neither True nor False");
    if (V_ISBYREF(&outcome.result)) Fail(L"a result that refers to a variable");
    const Rule* rule = FindRule(type.name, member.name);
    if (rule && kind != VT_EMPTY && member.kind != INVOKE_PROPERTYPUT &&
        !Possible(*rule, outcome.result)) {
        current += L" returned " + Describe(outcome.result);
        Fail(L"a result outside its limits");
    }
}

// One call of a random member of a random object of the class.
void Fuzzer::CallRandom(Live& live, Random& random, bool slowToo)
{
    const Class& type = *live.type;
    const std::wstring before = current;
    current = L"a new " + type.name;
    if (type.row &&
        (live.objects.empty() || (live.objects.size() < kObjectsOfClass && random.Percent(5))))
        live.objects.push_back(Make(type));
    const Member* member = &random.Pick(type.members);
    if (IsSlow(*member) && (!slowToo || !random.Percent(40))) {
        member = &random.Pick(type.members);
        if (IsSlow(*member)) {
            current = before;
            return;
        }
    }
    // Nested calls may release the object that is being called.
    ComPtr<IDispatch> object = random.Pick(live.objects);

    // A property that held its own object would keep it for ever.
    const std::vector<ComPtr<IDispatch>> others =
        member->kind == INVOKE_PROPERTYPUT ? std::vector<ComPtr<IDispatch>>() : SomeObjects();
    Arguments arguments(random, others, callBack_, options.server);
    const bool fileOnly =
        member->name == L"File" && (type.name == L"EventLog" || type.name == L"Profile");
    const bool server = options.server && member->name == L"Wait";
    const bool exact = random.Percent(50);
    for (const Parameter& parameter : member->parameters) {
        if (fileOnly)
            arguments.Add(arguments.PathInFolder());
        else if (server)
            arguments.Add(Variant(static_cast<LONG>(random.Below(100))));
        else
            arguments.Add(parameter.type, exact);
    }
    std::vector<DISPID> named;
    WORD flags = static_cast<WORD>(member->kind);
    if (member->kind == INVOKE_PROPERTYPUT) {
        named.push_back(DISPID_PROPERTYPUT);
    } else if (random.Percent(50)) {
        flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET; // as scripts call both
    }
    if (!fileOnly && !server && !exact) {
        while (!arguments.Values().empty() && random.Percent(12))
            arguments.Values().pop_back();
        if (random.Percent(4))
            for (std::uint32_t more = 1 + random.Below(40); more > 0; --more)
                arguments.Add(VT_VARIANT, false);
        if (random.Percent(2)) // named arguments, of any name
            for (size_t count = random.Below(3);
                 count > 0 && named.size() < arguments.Values().size(); --count)
                named.push_back(static_cast<DISPID>(random.Below(5)) - 1);
        if (random.Percent(1)) flags = static_cast<WORD>(1U << random.Below(4));
    }
    if (named.size() > arguments.Values().size()) named.clear();

    current = type.name + L'.' + member->name +
              (member->kind == INVOKE_PROPERTYPUT ? L" = " : L" ") + arguments.Describe() +
              (before.empty() ? L"" : L" (inside " + before + L")");
    const bool isPut = member->kind == INVOKE_PROPERTYPUT && flags == DISPATCH_PROPERTYPUT &&
                       arguments.Values().size() == 1;
    const Member* getter = isPut ? type.Getter(member->id) : nullptr;
    const Variant old = getter ? Read(object.Get(), *getter) : Variant();
    // What the property is given, when that can be told without asking an object of the script.
    Variant given;
    if (getter && SUCCEEDED(VariantCopyInd(&given, &arguments.Values()[0])) &&
        V_VT(&given) != VT_DISPATCH && V_VT(&given) != VT_UNKNOWN)
        if (FAILED(VariantChangeTypeEx(&given, &given, LOCALE_USER_DEFAULT, 0, getter->result)))
            given = Variant();

    const Member* const outside = std::exchange(outer_, member);
    IDispatch* const outsideObject = std::exchange(called_, object.Get());
    ++depth_;
    const long nestedBefore = nested_;
    if (type.name == L"FileSelection" && member->name == L"Dialog") ++fileDialogs_;
    const long insideOutside = std::exchange(insideBlocks_, 0);
    const long blocks = Balance().task;
    const Outcome outcome = Invoke(object.Get(), *member, flags, arguments, random, named);
    const long left = Balance().task - blocks - std::exchange(insideBlocks_, insideOutside);
    --depth_;
    outer_ = outside;
    called_ = outsideObject;

    CheckOutcome(type, *member, outcome);
    if (SUCCEEDED(outcome.code)) {
        ++succeeded_;
    } else if (outcome.code == DISP_E_EXCEPTION) {
        ++raised_;
    } else {
        ++refused_;
        leftBlocks_ += left;
    }
    // A call that came in meanwhile may have put something, too.
    if (getter && nested_ == nestedBefore && type.name != L"Clipboard") {
        const Variant now = Read(object.Get(), *getter);
        const Rule* rule = FindRule(type.name, member->name);
        const auto tell = [&] {
            current += L"; before " + Describe(old) + L", after " + Describe(now);
        };
        if (FAILED(outcome.code) && !Same(old, now)) {
            tell();
            Fail(L"a put that failed has changed the property");
        }
        if (SUCCEEDED(outcome.code) && rule && V_VT(&given) == getter->result &&
            !Obeyed(*rule, old, given, now)) {
            tell();
            Fail(L"the property keeps a value that it does not take");
        }
    }
    if (V_VT(&outcome.result) == VT_DISPATCH && V_DISPATCH(&outcome.result))
        Keep(V_DISPATCH(&outcome.result));
    current = L"after " + current;
    if (random.Percent(2)) std::erase(live.objects, object);
    object.Reset();
    current = before;
}

// A call during another one, which is not blamed for what it leaves.
void Fuzzer::CallInside(Random random)
{
    ++nested_;
    const long blocks = Balance().task;
    CallRandom(PickLive(random), random, false);
    insideBlocks_ += Balance().task - blocks;
}

// A script's object that is asked for its value calls, too.
void Fuzzer::CallBack()
{
    if (depth_ == 0 || depth_ > 3) return;
    CallInside(Random(options.seed ^ (currentNumber << 20) ^ static_cast<std::uint64_t>(depth_)));
}

// While a call waits: other clients call the same objects, stop its clock, or die.
void Fuzzer::OnTick()
{
    if (depth_ == 0 || depth_ > 2 || companion_->Running() < 60) return;
    if (outer_->name == L"Wait" && companion_->Running() > 150) {
        DISPPARAMS none{};
        for (const Class& type : classes_)
            for (const Member& member : type.members)
                if (member.name == L"RemoveTimer")
                    called_->Invoke(member.id, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr,
                                    nullptr, nullptr);
    }
    Random random(options.seed ^ (currentNumber << 20) ^ companion_->Running());
    CallInside(random);
    if (random.Percent(3)) {
        Live& live = PickLive(random);
        ComPtr<IExternalConnection> client;
        if (live.objects.empty() || FAILED(live.objects[0].As(&client))) return;
        client->AddConnection(EXTCONN_STRONG, 0);
        client->ReleaseConnection(EXTCONN_STRONG, 0, TRUE);
    }
}

void Fuzzer::Step()
{
    // Each call has numbers of its own: what one takes does not change the next.
    Random random(Mixed(Mixed(options.seed) + ++currentNumber));
    companion_->Begin(currentNumber);
    const long before = LiveScriptObjects();
    const long refusedBefore = refused_;
    CallRandom(PickLive(random), random, true);
    // Wine forgets objects of calls that it refuses on our behalf.
    if (refused_ != refusedBefore) forgotten_ += std::max(0L, LiveScriptObjects() - before);
    companion_->End();
    current.clear();
    if (currentNumber % 16 == 0) DispatchPending();
}

void Fuzzer::Session(std::uint64_t end)
{
    FillFolder();
    while (currentNumber < end && currentNumber % kSession != kSession - 1)
        Step();
    if (currentNumber < end) Step();
    for (Live& live : live_)
        live.objects.clear();
    DispatchPending();
    // Wine takes its time to release what another process held.
    if (const long left = LiveScriptObjects() - forgotten_; left > 0 && !options.server) {
        current = std::to_wstring(left) + L" of them, since the last release of all objects";
        Fail(L"objects of the script were not released");
    }
}

// What is held when nothing is used.
Checkpoint Fuzzer::Rest()
{
    FillFolder();
    for (int round = 0; round < 20; ++round)
        WaitForMessages(15);
    Checkpoint now{UsageOf(process_), refused_, fileDialogs_};
    now.usage.blocks.task -= leftBlocks_;
    return now;
}

void Fuzzer::Print(const Checkpoint& now) const
{
    const Usage& usage = now.usage;
    std::printf("%9llu %8ld %8ld %6ld %8ld %8ld %8ld\n", currentNumber, usage.handles,
                usage.windows, usage.menus, usage.threads, usage.blocks.own, usage.blocks.task);
    std::fflush(stdout);
}

void Fuzzer::ExpectNoGrowth(const Checkpoint& before, const Checkpoint& after)
{
    const Usage& warm = before.usage;
    const Usage& now = after.usage;
    // In a long run caches still grow by a few, those of the platform by more.
    const long later = static_cast<long>(options.calls) / 10'000;
    EXPECT_LE(now.windows, warm.windows);
    EXPECT_LE(now.menus, warm.menus);
    EXPECT_LE(now.threads, warm.threads + 2);
    EXPECT_LE(now.blocks.own, warm.blocks.own + kCachedBlocks + later);
    EXPECT_LE(now.blocks.task, warm.blocks.task + kCachedBlocks + 2 * later);
    // Until each dialog was shown in each of its forms, the platform is still loading.
    if (options.calls < (options.server ? 20'000 : 100'000)) return;
    // Wine's file dialog keeps one each time in a new prefix, and a server objects of the script
    // that came with calls which the platform refused.
    EXPECT_LE(now.handles, warm.handles + 16 + after.fileDialogs - before.fileDialogs +
                               (options.server ? (after.refused - before.refused) / 20 : 0));
}

// Keeps the server, and knows its process.
ComPtr<IDispatch> Fuzzer::HoldServer()
{
    ComPtr<IDispatch> me;
    for (const Class& type : classes_)
        if (type.name == L"Me") {
            me = Make(type);
            for (const Member& member : type.members)
                if (member.name == L"ProcessID") {
                    const Variant id = Read(me.Get(), member);
                    process_ = static_cast<DWORD>(V_I4(&id));
                }
        }
    server_.reset(OpenProcess(SYNCHRONIZE, FALSE, process_));
    return me;
}

void Fuzzer::Run()
{
    fuzzer_ = this;
    const ComPtr<IDispatch> me = options.server ? HoldServer() : nullptr;
    companion_ = std::make_unique<Companion>(process_, kLongestCall, Fail);
    const UINT_PTR timer = options.server ? 0 : SetTimer(nullptr, 0, 20, Tick);
    std::printf("fuzz: seed %llu, %llu calls, %u classes, %ld members, %s\n", options.seed,
                options.calls, static_cast<unsigned>(classes_.size()), members_,
                options.server ? "in the server" : "in this process");
    std::printf("%9s %8s %8s %6s %8s %8s %8s\n", "calls", "handles", "windows", "menus", "threads",
                "own", "task");
    const ULONGLONG begin = GetTickCount64();
    Checkpoint warm;
    Checkpoint now;
    for (int checkpoint = 1; checkpoint <= kCheckpoints; ++checkpoint) {
        const std::uint64_t end = options.calls * static_cast<unsigned>(checkpoint) / kCheckpoints;
        while (currentNumber < end)
            Session(end);
        now = Rest();
        Print(now);
        if (checkpoint == kCheckpoints / 2) warm = now;
    }
    const double seconds = static_cast<double>(GetTickCount64() - begin) / 1000;
    if (timer) KillTimer(nullptr, timer);
    std::printf("fuzz: %.0f s, %.0f calls/s; %ld succeeded, %ld raised an error, %ld were refused, "
                "%ld inside others, %ld windows closed\n",
                seconds, static_cast<double>(currentNumber) / seconds, succeeded_, raised_,
                refused_, nested_, companion_->Closed());
    companion_.reset();
    if (options.server) {
        EXPECT_EQ(WaitForSingleObject(server_.get(), 0), DWORD{WAIT_TIMEOUT})
            << "the server has ended";
    }
    ExpectNoGrowth(warm, now);
}

TEST(Fuzz, EveryMemberTakesAnything)
{
    const auto handler = AddVectoredExceptionHandler(1, OnException);
    // Strings that were freed would seem to be in use.
    using NoCache = void WINAPI();
    if (const auto noCache = FindSystemFunction<NoCache>(L"oleaut32.dll", "SetOaNoCache"))
        noCache();
    OpenLedger();
    Fuzzer().Run();
    RemoveVectoredExceptionHandler(handler);
}

} // namespace
} // namespace quill::fuzz
