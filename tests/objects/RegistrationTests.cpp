#include "core/Registration.h"

#include <gtest/gtest.h>

#include <map>

#include "core/Catalogue.h"
#include "core/TypeLibrary.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

using namespace std::literals;

constexpr wchar_t kProgram[] = L"C:\\Program Files\\made up\\quill.exe";

constexpr wchar_t kEventSource[] =
    L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\Quill";

// What 32-bit and 64-bit programs see of the registry.
constexpr REGSAM kViews[] = {KEY_WOW64_32KEY, KEY_WOW64_64KEY};

// All values below a key, by path; text only.
using Snapshot = std::map<std::wstring, std::wstring>;

void Collect(HKEY parent, const std::wstring& path, Snapshot& snapshot, REGSAM view = 0)
{
    HKEY opened = nullptr;
    if (RegOpenKeyExW(parent, path.c_str(), 0, KEY_READ | view, &opened)) return;
    const RegistryKey key(opened);
    snapshot[path + L"\\"];
    wchar_t name[512];
    for (DWORD index = 0;; ++index) {
        DWORD length = 512;
        wchar_t text[2048]{};
        DWORD bytes = sizeof text - sizeof *text;
        if (RegEnumValueW(opened, index, name, &length, nullptr, nullptr,
                          reinterpret_cast<BYTE*>(text), &bytes))
            break;
        snapshot[path + L"\\" + name + L"="] = text;
    }
    for (DWORD index = 0;; ++index) {
        DWORD length = 512;
        if (RegEnumKeyExW(opened, index, name, &length, nullptr, nullptr, nullptr, nullptr)) break;
        Collect(parent, path + L"\\" + name, snapshot, view);
    }
}

// Everything of ours below Software\Classes, and nothing else's.
Snapshot Registered(HKEY hive)
{
    Snapshot snapshot;
    const auto collect = [&](const std::wstring& path) {
        for (REGSAM view : kViews) {
            Snapshot seen;
            Collect(hive, L"Software\\Classes\\" + path, seen, view);
            for (auto& [key, text] : seen)
                snapshot[std::to_wstring(view) + L':' + key] = std::move(text);
        }
    };
    const auto braced = [](const GUID& id) {
        wchar_t text[39];
        StringFromGUID2(id, text, 39);
        return std::wstring(text);
    };
    for (const CatalogueRow& row : kCatalogue) {
        collect(L"CLSID\\" + braced(row.id));
        collect(std::wstring(L"Quill.") + row.name);
        collect(std::wstring(L"Quill.") + row.name + L".1");
    }
    if (hive == HKEY_LOCAL_MACHINE) Collect(hive, kEventSource, snapshot); // belongs to the machine
    collect(L"Interface\\" + braced(IID__Profile));
    collect(L"TypeLib\\" + braced(LIBID_Quill));
    return snapshot;
}

struct Hive {
    const char* name;
    RegistrationScope scope;
    HKEY key;
    HKEY other;
};

void PrintTo(const Hive& hive, std::ostream* out)
{
    *out << hive.name;
}

class RegistrationTest : public testing::TestWithParam<Hive> {
protected:
    RegistrationTest() { UnregisterServer(kProgram); }
    ~RegistrationTest() override { UnregisterServer(kProgram); }

    std::wstring Read(const std::wstring& key, const wchar_t* name = L"")
    {
        std::wstring seen;
        for (REGSAM view : kViews) {
            HKEY opened = nullptr;
            RegOpenKeyExW(GetParam().key, (L"Software\\Classes\\" + key).c_str(), 0,
                          KEY_READ | view, &opened);
            const RegistryKey owned(opened);
            wchar_t text[512] = L"<none>";
            DWORD bytes = sizeof text;
            if (opened) RegGetValueW(opened, nullptr, name, RRF_RT_REG_SZ, nullptr, text, &bytes);
            if (view != kViews[0] && seen != text) return L"<differs by view>";
            seen = text;
        }
        return seen;
    }
};

TEST_P(RegistrationTest, WritesWhatClientsLookFor)
{
    const Snapshot before = Registered(GetParam().other);
    RegisterServer(GetParam().scope, kProgram);

    EXPECT_EQ(Read(L"Quill.Profile\\CurVer"), L"Quill.Profile.1");
    const std::wstring classId = Read(L"Quill.Profile\\CLSID");
    EXPECT_EQ(Read(L"Quill.Profile.1\\CLSID"), classId);
    const std::wstring key = L"CLSID\\" + classId;
    EXPECT_EQ(Read(key + L"\\LocalServer32"), L'"' + std::wstring(kProgram) + L'"');
    EXPECT_EQ(Read(key + L"\\LocalServer32", L"ServerExecutable"), kProgram);
    EXPECT_EQ(Read(key + L"\\VersionIndependentProgID"), L"Quill.Profile");
    EXPECT_EQ(Read(key + L"\\ProgID"), L"Quill.Profile.1");
    const std::wstring library = Read(key + L"\\TypeLib");
    const std::wstring version = Read(key + L"\\Version");
    EXPECT_EQ(Read(L"TypeLib\\" + library + L'\\' + version + L"\\0\\win32"), kProgram);
    EXPECT_EQ(Read(L"TypeLib\\" + library + L'\\' + version), L"QUILL script helper");
    EXPECT_EQ(Read(L"Interface\\{63C12D0C-9609-4593-A75B-6B5C1EA75706}\\TypeLib"), library);
    EXPECT_EQ(Read(L"Interface\\{63C12D0C-9609-4593-A75B-6B5C1EA75706}\\ProxyStubClsid32"),
              L"{00020424-0000-0000-C000-000000000046}");
    for (const CatalogueRow& row : kCatalogue)
        EXPECT_EQ(Read(std::wstring(L"Quill.") + row.name), std::wstring(L"Quill.") + row.name);

    if (GetParam().scope == RegistrationScope::AllUsers) {
        Snapshot source;
        Collect(HKEY_LOCAL_MACHINE, kEventSource, source);
        EXPECT_EQ(source[kEventSource + L"\\EventMessageFile="s], kProgram);
        EXPECT_EQ(source[kEventSource + L"\\TypesSupported="s], L"\7");
    }

    EXPECT_EQ(Registered(GetParam().other), before);
}

TEST_P(RegistrationTest, TwiceIsAsGoodAsOnceAndRemovingLeavesNothing)
{
    const Snapshot before = Registered(GetParam().key);
    RegisterServer(GetParam().scope, kProgram);
    const Snapshot once = Registered(GetParam().key);
    EXPECT_GT(once.size(), before.size() + 20);
    RegisterServer(GetParam().scope, kProgram);
    EXPECT_EQ(Registered(GetParam().key), once);
    UnregisterServer(kProgram);
    EXPECT_EQ(Registered(GetParam().key), before);
    UnregisterServer(kProgram);
    EXPECT_EQ(Registered(GetParam().key), before);
}

TEST_P(RegistrationTest, WhatPointsAtAnotherExecutableStays)
{
    RegisterServer(GetParam().scope, kProgram);
    const Snapshot registered = Registered(GetParam().key);
    UnregisterServer(L"C:\\elsewhere\\quill.exe");
    EXPECT_EQ(Registered(GetParam().key), registered);

    // A new place takes over all of it; letters of a path differ in case as they like.
    RegisterServer(GetParam().scope, L"C:\\elsewhere\\quill.exe");
    UnregisterServer(kProgram);
    EXPECT_EQ(Registered(GetParam().key).size(), registered.size());
    UnregisterServer(L"c:\\ELSEWHERE\\quill.exe");
    EXPECT_TRUE(Registered(GetParam().key).empty());
}

INSTANTIATE_TEST_SUITE_P(Hives, RegistrationTest,
                         testing::Values(Hive{"AllUsers", RegistrationScope::AllUsers,
                                              HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER},
                                         Hive{"CurrentUser", RegistrationScope::CurrentUser,
                                              HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}),
                         [](const auto& parameter) { return parameter.param.name; });

} // namespace
} // namespace quill::test
