// OsVersion and Me: what a script cannot ask.
#include "core/Platform.h"

#include <gtest/gtest.h>

#include <process.h>
#include <winternl.h>

#include "support/ScriptObject.h"

namespace quill::test {
namespace {

TEST(MeTest, TheParentIsTheOneThatThePlatformTells)
{
    ScriptObject me = ScriptObject::Make(L"Me");
    PROCESS_BASIC_INFORMATION process{};
    const auto query = FindSystemFunction<decltype(NtQueryInformationProcess)>(
        L"ntdll.dll", "NtQueryInformationProcess");
    ASSERT_EQ(
        query(GetCurrentProcess(), ProcessBasicInformation, &process, sizeof process, nullptr), 0);
    EXPECT_EQ(me.Get(L"ParentProcessID"), static_cast<long>(process.InheritedFromUniqueProcessId));
}

// A copy of this program for which Wine plays another Windows runs this test again.
TEST(OsVersionTest, IsTheVersionThatRuns)
{
    constexpr wchar_t kKey[] = LR"(Software\Wine\AppDefaults\object_tests.exe)";
    if (const wchar_t* expected = _wgetenv(L"QUILL_TEST_VERSION")) {
        ScriptObject version = ScriptObject::Make(L"OsVersion");
        const long number = std::wcstol(expected, nullptr, 10);
        EXPECT_EQ(version.Get(L"Number"), number);
        EXPECT_EQ(version.Get(L"Major").Number() * 100 + version.Get(L"Minor").Number(), number);
        EXPECT_EQ(version.Get(L"Product2").Number() != 0, number >= 600);
        return;
    }
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    for (const auto& [name, number] :
         {std::pair{L"winxp", L"501"}, {L"vista", L"600"}, {L"win10", L"1000"}}) {
        SHSetValueW(HKEY_CURRENT_USER, kKey, L"Version", REG_SZ, name,
                    static_cast<DWORD>((wcslen(name) + 1) * sizeof(wchar_t)));
        _wputenv_s(L"QUILL_TEST_VERSION", number);
        EXPECT_EQ(_wspawnl(_P_WAIT, program, program, L"--gtest_filter=OsVersionTest.*", nullptr),
                  0)
            << Narrow(name);
    }
    _wputenv_s(L"QUILL_TEST_VERSION", L"");
    SHDeleteKeyW(HKEY_CURRENT_USER, kKey);
}

} // namespace
} // namespace quill::test
