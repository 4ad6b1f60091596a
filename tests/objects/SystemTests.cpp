// System, OsVersion and Me: what the computer of the tests cannot be is put in the platform's
// place.
#include "core/Apartment.h"
#include "sysinfo/System.h"

#include <gtest/gtest.h>

#include <process.h>
#include <winternl.h>

#include "support/ScriptObject.h"
#include "sysinfo/Me.h"

namespace quill::test {
namespace {

using namespace std::literals;

FIRMWARE_TYPE firmware;
DWORD firmwareError;
int buffers; // that the platform gave and has not got back

class SystemTest : public testing::Test {
protected:
    ~SystemTest() override { Seam<MachineFunctions>() = before_; }

    const MachineFunctions before_ = Seam<MachineFunctions>();
    ScriptObject system_ = ScriptObject::Make(L"System");
};

TEST_F(SystemTest, BiosModeIsWhatTheFirmwareSays)
{
    MachineFunctions& machine = Seam<MachineFunctions>();
    machine.getFirmwareType = [](FIRMWARE_TYPE* type) WINAPI -> BOOL {
        *type = firmware;
        return firmware != FirmwareTypeMax;
    };
    machine.getFirmwareVariable = [](LPCWSTR, LPCWSTR, void*, DWORD) WINAPI -> DWORD {
        SetLastError(firmwareError);
        return 0;
    };
    for (const auto& [type, mode] : {std::pair{FirmwareTypeUnknown, 0},
                                     {FirmwareTypeBios, 1},
                                     {FirmwareTypeUefi, 2},
                                     {FirmwareTypeMax, 0}}) {
        firmware = type;
        EXPECT_EQ(system_.Call(L"BiosMode"), mode);
    }
    for (const auto& [error, mode] : {std::pair{ERROR_INVALID_FUNCTION, 1},
                                      {ERROR_NOACCESS, 2},
                                      {ERROR_PRIVILEGE_NOT_HELD, 2}}) {
        firmwareError = static_cast<DWORD>(error);
        EXPECT_EQ(system_.Call(L"BiosMode", 1), mode);
    }
    machine = {nullptr, nullptr, nullptr, nullptr};
    EXPECT_EQ(system_.Call(L"BiosMode"), 0);
    EXPECT_EQ(system_.Call(L"BiosMode", -1), 0);
}

TEST_F(SystemTest, ADomainIsToldAndItsBufferGivenBack)
{
    MachineFunctions& machine = Seam<MachineFunctions>();
    machine.getJoinInformation = [](LPCWSTR, LPWSTR* name, NETSETUP_JOIN_STATUS* type)
                                     WINAPI -> DWORD {
        *name = _wcsdup(L"EXAMPLE");
        *type = NetSetupDomainName;
        ++buffers;
        return NERR_Success;
    };
    machine.freeBuffer = [](void* buffer) WINAPI -> DWORD {
        free(buffer);
        --buffers;
        return NERR_Success;
    };
    EXPECT_EQ(system_.Get(L"NetworkName"), L"EXAMPLE");
    EXPECT_EQ(system_.Get(L"NetworkType"), 3);
    EXPECT_EQ(buffers, 0);
    machine.getJoinInformation = [](LPCWSTR, LPWSTR*, NETSETUP_JOIN_STATUS*)
                                     WINAPI -> DWORD { return ERROR_NOT_ENOUGH_MEMORY; };
    EXPECT_EQ(system_.Get(L"NetworkName"), L"");
    EXPECT_EQ(system_.Get(L"NetworkType"), 0);
}

// An empty drive is the current one, whatever that is.
TEST_F(SystemTest, VolumesOfTheCurrentDirectory)
{
    wchar_t before[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, before);
    ASSERT_TRUE(SetCurrentDirectoryW(L"C:\\windows"));
    for (const wchar_t* question :
         {L"VolumeGetSN", L"VolumeGetName", L"VolumeGetFileSys", L"VolumeGetGUID"}) {
        const Value ofRoot = system_.Call(question, L"C:\\");
        EXPECT_EQ(system_.Call(question, L"C:"), Arg(ofRoot));
        EXPECT_EQ(system_.Call(question, L""), Arg(ofRoot));
    }
    SetCurrentDirectoryW(before);
    wchar_t name[MAX_PATH]{};
    DWORD length = 0;
    const std::wstring guid = system_.Call(L"VolumeGetGUID", L"C:").Text();
    ASSERT_TRUE(GetVolumePathNamesForVolumeNameW(guid.c_str(), name, MAX_PATH, &length));
    EXPECT_STREQ(name, L"C:\\");
}

TEST(MeTest, ParentAndCallerAreThoseThatThePlatformTells)
{
    ScriptObject me = ScriptObject::Make(L"Me");
    PROCESS_BASIC_INFORMATION process{};
    const auto query = FindSystemFunction<decltype(NtQueryInformationProcess)>(
        L"ntdll.dll", "NtQueryInformationProcess");
    ASSERT_EQ(
        query(GetCurrentProcess(), ProcessBasicInformation, &process, sizeof process, nullptr), 0);
    EXPECT_EQ(me.Get(L"ParentProcessID"), static_cast<long>(process.InheritedFromUniqueProcessId));

    const auto before = Seam<CallerFunctions>().getThread;
    Seam<CallerFunctions>().getThread = [](DWORD* thread) WINAPI -> HRESULT {
        *thread = 4711;
        return S_FALSE; // another process
    };
    EXPECT_EQ(me.Get(L"CallerTID"), 4711);
    Seam<CallerFunctions>().getThread = [](DWORD*) WINAPI -> HRESULT { return E_NOTIMPL; };
    EXPECT_EQ(me.Get(L"CallerTID"), 0);
    Seam<CallerFunctions>().getThread = before;
}

TEST(MeTest, KnowsWhatItHasAndWhetherAUserIsThere)
{
    ScriptObject me = ScriptObject::Make(L"Me");
    EXPECT_EQ(me.Get(L"FullVersion").Text(), me.Get(L"Version").Text() + L".1");
    for (const wchar_t* name : {L"List", L"quill.list", L"List.SELECTION", L"Clock.Buzz",
                                L"BinFile.BRead", L"Quill.Me.Has"})
        EXPECT_TRUE(me.Call(L"Has", name).Truth()) << Narrow(name);
    for (const wchar_t* name : {L"", L".", L"List.", L"Quill.", L"Nope", L"List.Invoke",
                                L"List.QueryInterface", L"Quill.Quill.List", L"List.Selection.x"})
        EXPECT_FALSE(me.Call(L"Has", name).Truth()) << Narrow(name);
    EXPECT_FALSE(me.Call(L"Has", std::wstring(L"List\0", 5)).Truth());
    EXPECT_TRUE(me.Get(L"Interactive").Truth());
    Seam<StationFunctions>().current = []() WINAPI -> HWINSTA { return nullptr; };
    EXPECT_FALSE(me.Get(L"Interactive").Truth());
    Seam<StationFunctions>() = {};
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
