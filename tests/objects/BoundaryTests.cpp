// What lies between a class and its clients, and between the platform's callbacks and a class:
// errors, references, events, apartments, stubs.
#include <gtest/gtest.h>

#include <new>
#include <set>

#include "core/Apartment.h"
#include "core/ApartmentPool.h"
#include "core/Automation.h"
#include "core/Catalogue.h"
#include "core/quillfn.h"
#include "gui/modPushParamThunk.h"
#include "support/Listener.h"
#include "support/Stage.h"

namespace quill::test {
namespace {

// A class that does what the test says when it is asked for its text.
class Probe final : public Automation<_Clipboard> {
public:
    static inline std::atomic<int> alive{0};

    Probe() { ++alive; }
    ~Probe() override { --alive; }

    STDMETHODIMP get_Text(BSTR* result) noexcept override { return Call(result, &Probe::Act); }
    STDMETHODIMP put_Text(BSTR) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP get_UseUnicode(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP put_UseUnicode(VARIANT_BOOL) noexcept override { return E_NOTIMPL; }

    std::function<void()> act;

private:
    std::wstring Act() const
    {
        act();
        return L"done";
    }
};

TEST(Boundary, InitialisesResultsAndLeavesNoErrorBehind)
{
    const ComPtr<Probe> probe(new Probe);
    BSTR result = reinterpret_cast<BSTR>(16);
    EXPECT_EQ(probe->get_Text(nullptr), E_POINTER);
    probe->act = [] { Raise(ErrorNumber(0x80040335), L"Quill.Other", L"text"); };
    EXPECT_EQ(probe->get_Text(&result), ErrorNumber(0x80040335));
    EXPECT_EQ(result, nullptr);
    ComPtr<IErrorInfo> info;
    IID raiser{};
    Bstr source;
    ASSERT_EQ(GetErrorInfo(0, &info), S_OK);
    EXPECT_TRUE(SUCCEEDED(info->GetGUID(&raiser)) && raiser == IID__Clipboard);
    Check(info->GetSource(Into(source)));
    EXPECT_STREQ(source.get(), L"Quill.Other");

    // Nobody fetches the information on this error, which explains none that comes later.
    EXPECT_EQ(probe->get_Text(&result), ErrorNumber(0x80040335));
    probe->act = [] { throw 42; };
    EXPECT_EQ(probe->get_Text(&result), E_UNEXPECTED);
    EXPECT_EQ(GetErrorInfo(0, &info), S_FALSE);
}

TEST(Boundary, ObjectsOutliveTheCallThatTheirClientLeaves)
{
    int during = 0;
    const int alive = Probe::alive;
    auto* const probe = new Probe;
    probe->AddRef();
    probe->act = [&] { probe->Release(), during = Probe::alive; };
    Bstr result;
    EXPECT_EQ(probe->get_Text(Into(result)), S_OK);
    EXPECT_EQ(during, alive + 1);
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
    for (const CatalogueRow& row : kCatalogue) {
        SCOPED_TRACE(Narrow(row.name));
        const ComPtr<IDispatch> object = Stage::Make(row.name);
        ComPtr<IProvideClassInfo2> provider;
        ComPtr<ISupportErrorInfo> errors;
        ComPtr<IConnectionPointContainer> events;
        ComPtr<ITypeInfo> info;
        GUID id;
        Check(object.As(&provider));
        Check(object.As(&errors));
        Check(provider->GetClassInfo(&info));
        EXPECT_TRUE(IdOf(info) == row.id);
        const HRESULT silent = SUCCEEDED(object.As(&events)) ? S_OK : E_UNEXPECTED;
        EXPECT_EQ(provider->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &id), silent);
        EXPECT_EQ(id == GUID_NULL, silent != S_OK);
        Check(object->GetTypeInfo(0, 0, &info));
        EXPECT_EQ(errors->InterfaceSupportsErrorInfo(IdOf(info)), S_OK);
        EXPECT_EQ(errors->InterfaceSupportsErrorInfo(row.id), S_FALSE);
    }
    Bstr help;
    Check(TypeLibrary()->GetDocumentation(-1, nullptr, nullptr, nullptr, Into(help)));
    EXPECT_TRUE(std::wstring_view(help.get()).ends_with(L"quill.chm"));
}

TEST(Boundary, ClientsSeeTheirConnections)
{
    ComPtr<IDispatch> clock = Stage::Make(L"Clock");
    const ComPtr<Listener> sinks[]{Listener::Of(clock.Get()), Listener::Of(clock.Get())};
    ComPtr<IConnectionPoint> point = PointOf(clock.Get());
    ComPtr<IConnectionPoint> other;
    ComPtr<IConnectionPointContainer> owner;
    ComPtr<IEnumConnections> all;
    ComPtr<IEnumConnections> rest;
    IID events;
    Check(point->GetConnectionPointContainer(&owner));
    Check(point->EnumConnections(&all));
    Check(point->GetConnectionInterface(&events));
    EXPECT_EQ(owner->FindConnectionPoint(events, &point), S_OK);
    EXPECT_EQ(owner->FindConnectionPoint(IID_IDispatch, &other), CONNECT_E_NOCONNECTION);
    const auto next = [](const ComPtr<IEnumConnections>& connections) {
        CONNECTDATA data{};
        if (connections->Next(1, &data, nullptr) == S_OK) data.pUnk->Release();
        return data.dwCookie;
    };
    EXPECT_EQ(all->Skip(1), S_OK);
    Check(all->Clone(&rest));
    EXPECT_EQ(next(rest), sinks[1]->cookie);
    EXPECT_EQ(all->Skip(2), S_FALSE);
    EXPECT_EQ(next(all), 0u);
    Check(all->Reset());
    EXPECT_EQ(next(all), sinks[0]->cookie);
    DWORD cookie = 5;
    EXPECT_EQ(point->Advise(all.Get(), &cookie), CONNECT_E_CANNOTCONNECT);
    EXPECT_EQ(cookie, 0u);
    for (const HRESULT result : {S_OK, CONNECT_E_NOCONNECTION})
        EXPECT_EQ(point->Unadvise(sinks[0]->cookie), result);
    point.Reset();
    clock.Reset();
    EXPECT_EQ((owner->AddRef(), owner->Release()), 1u);
}

// The message of the old timer is out of the queue when the new one starts.
TEST(Boundary, AnOldTimerDoesNotRingForTheNewOne)
{
    const ComPtr<IDispatch> clock = Stage::Make(L"Clock");
    const Variant milliseconds[] = {Variant(10L), Variant(60'000L)};
    Invoke(clock.Get(), L"SetTimer", {&milliseconds[0], 1});
    MSG old{};
    ASSERT_GT(GetMessageW(&old, nullptr, WM_TIMER, WM_TIMER), 0);
    Invoke(clock.Get(), L"SetTimer", {&milliseconds[1], 1});
    DispatchMessageW(&old);
    const Variant running = Invoke(clock.Get(), L"Running");
    EXPECT_EQ(V_BOOL(&running), VARIANT_TRUE);
}

// The clients of all classes but these may have to wait for a call. Message-only windows are those
// of the apartments.
TEST(ApartmentPool, GivesObjectsThatMayWaitTheirOwn)
{
    ApartmentPool pool;
    std::vector<ComPtr<IDispatch>> objects(kCatalogue.end() - kCatalogue.begin());
    std::set<HWND> apartments;
    for (size_t index = 0; index < objects.size(); ++index) {
        const CatalogueRow& row = kCatalogue.begin()[index];
        const size_t before = apartments.size();
        Check(pool.Create(row, IID_PPV_ARGS(&objects[index])));
        HWND window = nullptr;
        while ((window = FindWindowExW(HWND_MESSAGE, window, L"quill.Apartment", nullptr)))
            apartments.insert(window);
        const std::set<std::wstring> shared{L"OsVersion", L"DateTime"}; // with Me
        EXPECT_EQ(apartments.size() - before, shared.contains(row.name) ? 0 : 1)
            << Narrow(row.name);
    }
}

// A class of this name that refuses to make windows stands in for a system that has none left.
TEST(ApartmentPool, PassesFailuresOnAndTriesAnewTheNextTime)
{
    const CatalogueRow& row = *kCatalogue.begin();
    const HMODULE module = GetModuleHandleW(nullptr);
    UnregisterClassW(L"quill.Apartment", module);
    WNDCLASSW refusing{};
    refusing.lpfnWndProc = [](HWND, UINT, WPARAM, LPARAM) WINAPI -> LRESULT { return 0; };
    refusing.hInstance = module;
    refusing.lpszClassName = L"quill.Apartment";
    ASSERT_TRUE(RegisterClassW(&refusing));
    ApartmentPool pool;
    ComPtr<IDispatch> object;
    for (int count = 0; count < 2; ++count)
        EXPECT_EQ(pool.Create(row, IID_IDispatch, &object), E_OUTOFMEMORY);
    EXPECT_TRUE(UnregisterClassW(L"quill.Apartment", module));
    EXPECT_EQ(pool.Create(row, IID_IStream, &object), E_NOINTERFACE);
    EXPECT_FALSE(object);
    EXPECT_HRESULT_SUCCEEDED(pool.Create(row, IID_IDispatch, &object));
    object.Reset();
    pool.Close();
    EXPECT_EQ(pool.Create(row, IID_IDispatch, &object), CO_E_SERVER_STOPPING);
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

struct Target : ExecutableObject {
    PushParamThunk thunk{};
    int more = 1'000;
};

int CALLBACK AddUp(Target* target, int first, int second, int third) noexcept
{
    return target->more + 100 * first + 10 * second + third;
}

// Called as the platform would: the object comes in front, the arguments keep their order, the
// stack is as it was. Memory that is both writable and executable is there, and nowhere else.
TEST(PushParamThunk, LeadsToItsObject)
{
    const auto protectionOf = [](const void* place) {
        MEMORY_BASIC_INFORMATION memory{};
        VirtualQuery(place, &memory, sizeof memory);
        return memory.Protect;
    };
    const auto target = std::make_unique<Target>();
    void* entry = BuildPushParamThunk(target->thunk, target.get(), reinterpret_cast<void*>(AddUp));
    const auto call = reinterpret_cast<int(CALLBACK*)(int, int, int)>(entry);
    for (int round = 0; round < 3; ++round)
        EXPECT_EQ(call(4, 3, 2), 1'432);
    EXPECT_EQ(protectionOf(target.get()), DWORD{PAGE_EXECUTE_READWRITE});
    EXPECT_EQ(protectionOf(std::make_unique<BYTE[]>(4096).get()), DWORD{PAGE_READWRITE});

    std::set<void*> places; // the heap uses them again
    for (int round = 0; round < 1'000; ++round)
        places.insert(std::make_unique<Target>().get());
    EXPECT_LT(places.size(), 1'000U);
}

} // namespace
} // namespace quill::test
