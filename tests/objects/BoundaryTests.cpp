// What lies between a script and a class: errors, references, apartments.
#include <gtest/gtest.h>

#include <new>
#include <set>

#include "core/Apartment.h"
#include "core/ApartmentPool.h"
#include "core/Automation.h"
#include "core/quillfn.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

// A class that does what the name of a section tells it.
class Probe final : public Automation<_Profile> {
public:
    static inline std::atomic<int> alive{0};

    Probe() { ++alive; }
    ~Probe() override { --alive; }

    STDMETHODIMP GetValue(BSTR section, BSTR key, BSTR* result) noexcept override
    {
        return Call(result, &Probe::Act, section, key);
    }
    STDMETHODIMP get_File(BSTR* value) noexcept override { return Get(value, file_); }
    STDMETHODIMP put_File(BSTR value) noexcept override { return Put<CutTo<3>>(file_, value); }

    STDMETHODIMP SetValue(BSTR, BSTR, BSTR, VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP get_ErrorLevel(SHORT*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP put_ErrorLevel(SHORT) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetSection(BSTR, VARIANT_BOOL, BSTR*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetSectionNames(VARIANT_BOOL, BSTR*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP SetSection(BSTR, BSTR, VARIANT_BOOL, VARIANT_BOOL*) noexcept override
    {
        return E_NOTIMPL;
    }

private:
    std::wstring Act(const std::wstring& action, const std::wstring& detail)
    {
        if (action == L"memory") throw std::bad_alloc();
        if (action == L"unknown") throw 42;
        if (action == L"raise") Raise(ErrorNumber(0x80040335), L"Quill.Other", detail);
        if (action == L"overflow") RaiseRuntimeError(RuntimeError::Overflow);
        if (action == L"platform") Check(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
        if (action == L"release") { // as a client does whose last reference goes meanwhile
            const int before = alive;
            Release();
            return alive == before ? L"here" : L"gone";
        }
        if (action == L"thread") return std::to_wstring(GetCurrentThreadId());
        if (action == L"program") return ThisApartment().programPath;
        return file_ + detail;
    }

    std::wstring file_;
};

IDispatch* CreateProbe()
{
    return new Probe;
}

IDispatch* CreateNothing()
{
    throw std::bad_alloc();
}

const CatalogueRow kProbe{CLSID_Profile, L"Probe", Placement::Own, CreateProbe};

TEST(Boundary, TurnsExceptionsIntoErrorsOfScripts)
{
    const struct {
        const wchar_t* action;
        ScriptError expected;
    } cases[] = {
        {L"raise", {0x80040335, L"Quill.Other", L"text"}},
        {L"overflow", {0x800A0006, L"Quill.Profile", L"Overflow"}},
        {L"memory", {0x8007000E, L"", L""}}, // and nothing of the errors before
        {L"raise", {0x80040335, L"Quill.Other", L"text"}},
        {L"unknown", {0x8000FFFF, L"", L""}},
        {L"nothing", {}},
    };
    ScriptObject probe(CreateProbe());
    for (const auto& [action, expected] : cases)
        EXPECT_EQ(ErrorOf([&] { probe.Call(L"GetValue", action, L"text"); }), expected)
            << Narrow(action);
    const ScriptError platform = ErrorOf([&] { probe.Call(L"GetValue", L"platform", L""); });
    EXPECT_EQ(platform.number, 0x80070002);
    EXPECT_NE(platform.description, L"");
    EXPECT_EQ(ErrorOf([&] { probe.Call(L"getvalue", L"only one"); }).number, 0x8002000Eu);
    EXPECT_EQ(ErrorOf([&] { probe.Call(L"NoSuchMember"); }).number, 0x80020006u);
}

TEST(Boundary, WhatAnEarlierErrorLeftDoesNotExplainALaterOne)
{
    ComPtr<_Profile> early;
    ScriptObject late(CreateProbe());
    ASSERT_HRESULT_SUCCEEDED(late.Dispatch()->QueryInterface(IID_PPV_ARGS(&early)));
    BSTR result = nullptr;
    EXPECT_EQ(early->GetValue(MakeBstr(L"raise").get(), MakeBstr(L"stale").get(), &result),
              ErrorNumber(0x80040335)); // and nobody fetches the error information
    EXPECT_EQ(ErrorOf([&] { late.Call(L"GetValue", L"memory", L""); }),
              (ScriptError{0x8007000E, L"", L""}));
}

TEST(Boundary, ChecksAndInitialisesWhereResultsGo)
{
    ComPtr<_Profile> probe;
    ASSERT_HRESULT_SUCCEEDED(ComPtr<IDispatch>(CreateProbe()).As(&probe));
    EXPECT_EQ(probe->GetValue(nullptr, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(probe->get_File(nullptr), E_POINTER);
    EXPECT_EQ(probe->QueryInterface(IID_IDispatch, nullptr), E_POINTER);
    BSTR result = reinterpret_cast<BSTR>(16);
    EXPECT_EQ(probe->GetValue(MakeBstr(L"unknown").get(), nullptr, &result), E_UNEXPECTED);
    EXPECT_EQ(result, nullptr);
    result = reinterpret_cast<BSTR>(16);
    ASSERT_EQ(probe->put_File(MakeBstr(L"abcd").get()), S_OK);
    ASSERT_EQ(probe->GetValue(nullptr, MakeBstr(L"ef").get(), &result), S_OK);
    EXPECT_STREQ(Bstr(result).get(), L"abcef");
}

TEST(Boundary, ObjectsOutliveTheCallThatTheirClientLeaves)
{
    ComPtr<_Profile> probe;
    ASSERT_HRESULT_SUCCEEDED(ComPtr<IDispatch>(CreateProbe()).As(&probe));
    const int alive = Probe::alive;
    BSTR result = nullptr;
    EXPECT_EQ(probe.Detach()->GetValue(MakeBstr(L"release").get(), nullptr, &result), S_OK);
    EXPECT_STREQ(Bstr(result).get(), L"here");
    EXPECT_EQ(Probe::alive, alive - 1);
}

ScriptObject CreateInPool(ApartmentPool& pool)
{
    ComPtr<IDispatch> object;
    Check(pool.Create(kProbe, IID_IDispatch, &object));
    return ScriptObject(object.Get());
}

std::wstring ThreadOf(ScriptObject& probe)
{
    return probe.Call(L"GetValue", L"thread", L"").Text();
}

TEST(ApartmentPool, GivesEachObjectItsOwnUpToTheLimit)
{
    ApartmentPool pool;
    std::vector<ScriptObject> probes;
    std::set<std::wstring> threads{std::to_wstring(GetCurrentThreadId())};
    for (size_t index = 0; index < ApartmentPool::kLimit; ++index) {
        probes.push_back(CreateInPool(pool));
        EXPECT_TRUE(threads.insert(ThreadOf(probes.back())).second) << index;
    }
    EXPECT_EQ(probes.front().Call(L"GetValue", L"program", L""), ThisApartment().programPath);

    // Beyond the limit each gets a second one; then the one with fewer is the next.
    for (size_t index = 0; index < ApartmentPool::kLimit; ++index)
        probes.push_back(CreateInPool(pool));
    std::multiset<std::wstring> shared;
    for (ScriptObject& probe : probes)
        shared.insert(ThreadOf(probe));
    for (const std::wstring& thread : shared)
        EXPECT_EQ(shared.count(thread), 2u);
    const std::wstring freed = ThreadOf(probes[7]);
    probes.erase(probes.begin() + 7);
    probes.push_back(CreateInPool(pool));
    EXPECT_EQ(ThreadOf(probes.back()), freed);
}

TEST(ApartmentPool, UsesAnEmptyApartmentAgain)
{
    ApartmentPool pool;
    ScriptObject first = CreateInPool(pool);
    ScriptObject second = CreateInPool(pool);
    const std::wstring thread = ThreadOf(first);
    first.Release();
    ScriptObject third = CreateInPool(pool);
    EXPECT_EQ(ThreadOf(third), thread);
}

TEST(ApartmentPool, PassesTheFailureOfACreationOn)
{
    {
        ApartmentPool pool;
        ComPtr<IDispatch> object;
        EXPECT_EQ(pool.Create({CLSID_Profile, L"", Placement::Own, CreateNothing}, IID_IDispatch,
                              &object),
                  E_OUTOFMEMORY);
        EXPECT_FALSE(object);
        EXPECT_EQ(pool.Create(kProbe, IID_IStream, &object), E_NOINTERFACE);
        EXPECT_FALSE(object);
    }
    EXPECT_EQ(Probe::alive, 0);
}

// A class of this name that refuses to make windows stands in for a system that has none left.
TEST(ApartmentPool, RefusesWhatHasNoWindowAndTriesAnewTheNextTime)
{
    UnregisterClassW(L"quill.Apartment", GetModuleHandleW(nullptr));
    WNDCLASSEXW refusing{};
    refusing.cbSize = sizeof refusing;
    refusing.lpfnWndProc = [](HWND, UINT, WPARAM, LPARAM) WINAPI -> LRESULT { return 0; };
    refusing.hInstance = GetModuleHandleW(nullptr);
    refusing.lpszClassName = L"quill.Apartment";
    ASSERT_TRUE(RegisterClassExW(&refusing));
    ApartmentPool pool;
    ComPtr<IDispatch> object;
    EXPECT_EQ(pool.Create(kProbe, IID_IDispatch, &object), E_OUTOFMEMORY);
    EXPECT_EQ(pool.Create(kProbe, IID_IDispatch, &object), E_OUTOFMEMORY);
    EXPECT_TRUE(UnregisterClassW(L"quill.Apartment", GetModuleHandleW(nullptr)));
    EXPECT_HRESULT_SUCCEEDED(pool.Create(kProbe, IID_IDispatch, &object));
    object.Reset();
    pool.Close();
    EXPECT_EQ(pool.Create(kProbe, IID_IDispatch, &object), CO_E_SERVER_STOPPING);
}

TEST(Apartment, TriesAgainForAWhileWhenAClientIsBusy)
{
    ComPtr<IMessageFilter> filter;
    ASSERT_HRESULT_SUCCEEDED(CoRegisterMessageFilter(nullptr, &filter));
    ASSERT_TRUE(filter);
    CoRegisterMessageFilter(filter.Get(), nullptr);
    constexpr DWORD kRefused = 2; // SERVERCALL_RETRYLATER
    EXPECT_EQ(filter->RetryRejectedCall(nullptr, 0, kRefused), 100u);
    EXPECT_EQ(filter->RetryRejectedCall(nullptr, 2'900, kRefused), 100u);
    EXPECT_EQ(filter->RetryRejectedCall(nullptr, 3'000, kRefused), DWORD(-1));
    EXPECT_EQ(filter->HandleInComingCall(CALLTYPE_NESTED, nullptr, 0, nullptr),
              DWORD{SERVERCALL_ISHANDLED});
}

} // namespace
} // namespace quill::test
