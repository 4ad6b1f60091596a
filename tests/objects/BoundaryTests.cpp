// What lies between a script and a class: errors, references, apartments.
#include <gtest/gtest.h>

#include <new>
#include <set>

#include "core/Apartment.h"
#include "core/ApartmentPool.h"
#include "core/Automation.h"
#include "core/Catalogue.h"
#include "core/quillfn.h"
#include "support/Reaction.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

// A class that does what its text tells it when it is asked for it.
class Probe final : public Automation<_Clipboard> {
public:
    static inline std::atomic<int> alive{0};

    Probe() { ++alive; }
    ~Probe() override { --alive; }

    STDMETHODIMP get_Text(BSTR* result) noexcept override { return Call(result, &Probe::Act); }
    STDMETHODIMP put_Text(BSTR text) noexcept override { return Put<CutTo<8>>(text_, text); }
    STDMETHODIMP get_UseUnicode(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP put_UseUnicode(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }

private:
    std::wstring Act()
    {
        if (text_ == L"memory") throw std::bad_alloc();
        if (text_ == L"unknown") throw 42;
        if (text_ == L"raise") Raise(ErrorNumber(0x80040335), L"Quill.Other", L"text");
        if (const int number = _wtoi(text_.c_str()))
            RaiseRuntimeError(static_cast<RuntimeError>(number));
        if (text_ == L"platform") Check(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
        if (text_ == L"release") { // as a client does whose last reference goes meanwhile
            const int before = alive;
            Release();
            return alive == before ? L"here" : L"gone";
        }
        return text_ == L"thread" ? std::to_wstring(GetCurrentThreadId()) : text_;
    }

    std::wstring text_;
};

const CatalogueRow kProbe{CLSID_Clipboard, L"Probe", Placement::Own,
                          []() -> IDispatch* { return new Probe; }};
const CatalogueRow kNothing{CLSID_Clipboard, L"", Placement::Own,
                            []() -> IDispatch* { throw std::bad_alloc(); }};

std::wstring Told(ScriptObject& probe, const wchar_t* text)
{
    probe.Put(L"Text", text);
    return probe.Get(L"text").Text();
}

TEST(Boundary, TurnsExceptionsIntoErrorsOfScripts)
{
    const ScriptError raised(0x80040335, L"Quill.Other", L"text");
    const std::pair<const wchar_t*, ScriptError> cases[] = {
        {L"raise", raised},
        {L"5", {0x800A0005, L"Quill.Clipboard", L"Invalid procedure call or argument"}},
        {L"6", {0x800A0006, L"Quill.Clipboard", L"Overflow"}},
        {L"9", {0x800A0009, L"Quill.Clipboard", L"Subscript out of range"}},
        {L"13", {0x800A000D, L"Quill.Clipboard", L"Type mismatch"}},
        {L"91",
         {0x800A005B, L"Quill.Clipboard", L"Object variable or With block variable not set"}},
        {L"94", {0x800A005E, L"Quill.Clipboard", L"Invalid use of Null"}},
        {L"453", {0x800A01C5, L"Quill.Clipboard", L"Specified DLL function not found"}},
        {L"memory", {0x8007000E, L"", L""}}, // and nothing of the errors before
        {L"raise", raised},
        {L"unknown", {0x8000FFFF, L"", L""}},
        {L"nothing", {}},
    };
    ScriptObject probe(new Probe);
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(ErrorOf([&] { Told(probe, text); }), expected) << Narrow(text);
    const ScriptError platform = ErrorOf([&] { Told(probe, L"platform"); });
    EXPECT_TRUE(platform.number == 0x80070002 && platform.description.size() > 1);
    EXPECT_GT(platform.description.back(), L' ');
    EXPECT_EQ(ErrorOf([&] { probe.Call(L"NoSuchMember"); }).number, 0x80020006u);
}

TEST(Boundary, ChecksAndInitialisesWhereResultsGo)
{
    ComPtr<_Clipboard> probe(new Probe);
    EXPECT_EQ(probe->get_Text(nullptr), E_POINTER);
    EXPECT_EQ(probe->QueryInterface(IID_IDispatch, nullptr), E_POINTER);
    BSTR result = reinterpret_cast<BSTR>(16);
    ASSERT_EQ(probe->put_Text(MakeBstr(L"unknown").get()), S_OK);
    EXPECT_EQ(probe->get_Text(&result), E_UNEXPECTED);
    EXPECT_EQ(result, nullptr);
    result = reinterpret_cast<BSTR>(16);
    ASSERT_EQ(probe->put_Text(MakeBstr(L"abcdefghi").get()), S_OK);
    ASSERT_EQ(probe->get_Text(&result), S_OK);
    EXPECT_EQ(Taken(result), L"abcdefgh");

    ComPtr<IErrorInfo> info;
    IID raiser{};
    ASSERT_EQ(probe->put_Text(MakeBstr(L"raise").get()), S_OK);
    EXPECT_EQ(probe->get_Text(&result), ErrorNumber(0x80040335));
    ASSERT_EQ(GetErrorInfo(0, &info), S_OK);
    EXPECT_TRUE(SUCCEEDED(info->GetGUID(&raiser)) && raiser == IID__Clipboard);

    // Nobody fetches the information on this error, which explains none that comes later.
    EXPECT_EQ(probe->get_Text(&result), ErrorNumber(0x80040335));
    ScriptObject other(new Probe);
    EXPECT_EQ(ErrorOf([&] { Told(other, L"memory"); }), ScriptError(0x8007000E, L"", L""));
}

TEST(Boundary, ObjectsOutliveTheCallThatTheirClientLeaves)
{
    const int alive = Probe::alive;
    ComPtr<_Clipboard> probe(new Probe);
    BSTR result = nullptr;
    EXPECT_EQ(probe->put_Text(MakeBstr(L"release").get()), S_OK);
    EXPECT_EQ(probe.Detach()->get_Text(&result), S_OK);
    EXPECT_EQ(Taken(result), L"here");
    EXPECT_EQ(Probe::alive, alive);
}

GUID IdOf(const ComPtr<ITypeInfo>& info)
{
    TYPEATTR* type = nullptr;
    Check(info->GetTypeAttr(&type));
    const GUID id = type->guid;
    info->ReleaseTypeAttr(type);
    return id;
}

TEST(Boundary, EveryClassSaysWhichItIs)
{
    Bstr name;
    for (const CatalogueRow& row : kCatalogue) {
        SCOPED_TRACE(Narrow(row.name));
        ComPtr<IDispatch> object;
        ComPtr<IProvideClassInfo2> provider;
        ComPtr<ISupportErrorInfo> errors;
        ComPtr<IConnectionPointContainer> events;
        ComPtr<ITypeInfo> info;
        GUID id;
        Check(CreateHere(row, IID_PPV_ARGS(&object)));
        Check(object.As(&provider));
        Check(object.As(&errors));
        Check(provider->GetClassInfo(&info));
        EXPECT_TRUE(IdOf(info) == row.id);
        const HRESULT silent = SUCCEEDED(object.As(&events)) ? S_OK : E_UNEXPECTED;
        EXPECT_EQ(provider->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &id), silent);
        EXPECT_EQ(id == GUID_NULL, silent != S_OK);
        EXPECT_EQ(provider->GetGUID(0, &id), E_INVALIDARG);
        EXPECT_EQ(object->GetTypeInfo(1, 0, &info), DISP_E_BADINDEX);
        Check(object->GetTypeInfo(0, 0, &info));
        Check(info->GetDocumentation(MEMBERID_NIL, Into(name), nullptr, nullptr, nullptr));
        EXPECT_EQ(name.get(), std::wstring(L"_") + row.name);
        EXPECT_EQ(errors->InterfaceSupportsErrorInfo(IdOf(info)), S_OK);
        EXPECT_EQ(errors->InterfaceSupportsErrorInfo(row.id), S_FALSE);
    }
    Check(TypeLibrary()->GetDocumentation(-1, nullptr, nullptr, nullptr, Into(name)));
    EXPECT_TRUE(std::wstring_view(name.get()).ends_with(L"quill.chm"));
}

TEST(Boundary, ClientsSeeTheirConnections)
{
    Reaction sinks[]{Reaction([] {}), Reaction([] {}), Reaction([] {})};
    ScriptObject clock = ScriptObject::Make(L"Clock");
    for (Reaction& sink : sinks)
        sink.Hear(clock.Dispatch());
    ComPtr<IConnectionPoint> point = PointOf(clock.Dispatch());
    ComPtr<IConnectionPoint> other;
    ComPtr<IConnectionPointContainer> owner;
    ComPtr<IEnumConnections> all;
    ComPtr<IEnumConnections> rest;
    Check(point->GetConnectionPointContainer(&owner));
    Check(point->EnumConnections(&all));
    IID events;
    Check(point->GetConnectionInterface(&events));
    EXPECT_EQ(owner->FindConnectionPoint(events, &point), S_OK);
    EXPECT_EQ(owner->FindConnectionPoint(IID_IDispatch, &other), CONNECT_E_NOCONNECTION);
    const auto next = [](const ComPtr<IEnumConnections>& connections) {
        CONNECTDATA data{};
        if (connections->Next(1, &data, nullptr) == S_OK) data.pUnk->Release();
        return data.dwCookie;
    };
    EXPECT_EQ(all->Skip(2), S_OK);
    Check(all->Clone(&rest));
    EXPECT_EQ(all->Skip(1), S_OK);
    EXPECT_EQ(all->Skip(1), S_FALSE);
    EXPECT_EQ(next(all), 0u);
    EXPECT_EQ(next(rest), sinks[2].cookie);
    Check(all->Reset());
    EXPECT_EQ(next(all), sinks[0].cookie);
    DWORD cookie = 5;
    EXPECT_EQ(point->Advise(all.Get(), &cookie), CONNECT_E_CANNOTCONNECT);
    EXPECT_EQ(cookie, 0u);

    for (const HRESULT gone : {HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE), RPC_E_SERVER_DIED,
                               RPC_E_SERVER_DIED_DNE, CO_E_OBJNOTCONNECTED}) {
        Reaction dead([] {});
        dead.result = gone;
        dead.Hear(clock.Dispatch());
        for (int round = 1; round <= 2; ++round) {
            const int heard = sinks[2].calls;
            clock.Call(L"SetTimer", 1);
            EXPECT_TRUE(PumpUntil([&] { return sinks[2].calls > heard; }));
            EXPECT_EQ(dead.calls, 1) << gone;
        }
    }
    point.Reset();
    clock.Release();
    EXPECT_EQ((owner->AddRef(), owner->Release()), 1u);
}

// Beyond the limit each gets a second one; then the one with fewer is the next.
TEST(ApartmentPool, GivesEachObjectItsOwnUpToTheLimit)
{
    ApartmentPool pool;
    const auto create = [&pool] {
        ComPtr<IDispatch> object;
        Check(pool.Create(kProbe, IID_IDispatch, &object));
        return ScriptObject(object.Get());
    };
    std::vector<ScriptObject> probes;
    std::multiset<std::wstring> threads{std::to_wstring(GetCurrentThreadId())};
    ScriptObject early = create();
    const std::wstring first = Told(early, L"thread");
    early.Release(); // is empty again
    for (size_t index = 0; index < 2 * ApartmentPool::kLimit; ++index) {
        probes.push_back(create());
        const std::wstring thread = Told(probes.back(), L"thread");
        threads.insert(thread);
        EXPECT_EQ(threads.count(thread), index < ApartmentPool::kLimit ? 1u : 2u) << index;
    }
    EXPECT_EQ(Told(probes.front(), L"thread"), first);
    const std::wstring freed = Told(probes[7], L"thread");
    probes.erase(probes.begin() + 7);
    probes.push_back(create());
    EXPECT_EQ(Told(probes.back(), L"thread"), freed);
}

// A class of this name that refuses to make windows stands in for a system that has none left.
TEST(ApartmentPool, PassesFailuresOnAndTriesAnewTheNextTime)
{
    const HMODULE module = GetModuleHandleW(nullptr);
    UnregisterClassW(L"quill.Apartment", module);
    WNDCLASSEXW refusing{};
    refusing.cbSize = sizeof refusing;
    refusing.lpfnWndProc = [](HWND, UINT, WPARAM, LPARAM) WINAPI -> LRESULT { return 0; };
    refusing.hInstance = module;
    refusing.lpszClassName = L"quill.Apartment";
    ASSERT_TRUE(RegisterClassExW(&refusing));
    ApartmentPool pool;
    ComPtr<IDispatch> object;
    for (int count = 0; count < 2; ++count)
        EXPECT_EQ(pool.Create(kProbe, IID_IDispatch, &object), E_OUTOFMEMORY);
    EXPECT_TRUE(UnregisterClassW(L"quill.Apartment", module));
    EXPECT_EQ(pool.Create(kNothing, IID_IDispatch, &object), E_OUTOFMEMORY);
    EXPECT_EQ(pool.Create(kProbe, IID_IStream, &object), E_NOINTERFACE);
    EXPECT_FALSE(object);
    EXPECT_HRESULT_SUCCEEDED(pool.Create(kProbe, IID_IDispatch, &object));
    object.Reset();
    pool.Close();
    EXPECT_EQ(pool.Create(kProbe, IID_IDispatch, &object), CO_E_SERVER_STOPPING);
    EXPECT_EQ(Probe::alive, 0);
}

TEST(Apartment, TriesAgainForAWhileWhenAClientIsBusy)
{
    ComPtr<IMessageFilter> filter;
    ASSERT_HRESULT_SUCCEEDED(CoRegisterMessageFilter(nullptr, &filter));
    ASSERT_TRUE(filter);
    CoRegisterMessageFilter(filter.Get(), nullptr);
    EXPECT_EQ(filter->RetryRejectedCall(nullptr, 2'900, SERVERCALL_RETRYLATER), 100u);
    EXPECT_EQ(filter->RetryRejectedCall(nullptr, 3'000, SERVERCALL_RETRYLATER), DWORD(-1));
    EXPECT_EQ(filter->MessagePending(nullptr, 0, 0), DWORD{PENDINGMSG_WAITDEFPROCESS});
    EXPECT_EQ(filter->HandleInComingCall(CALLTYPE_NESTED, nullptr, 0, nullptr),
              DWORD{SERVERCALL_ISHANDLED});
}

} // namespace
} // namespace quill::test
