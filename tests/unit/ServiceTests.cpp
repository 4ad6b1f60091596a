// Of the services, what a script cannot ask.
#include <gtest/gtest.h>

#include <fstream>
#include <thread>

#include <process.h>

#include "core/Platform.h"
#include "services/Logging.h"
#include "support/ScriptObject.h"
#include "support/TemporaryFolder.h"
#include "sysinfo/DateTime.h"

namespace quill::test {
namespace {

// A lock belongs to a handle, so writers on threads meet as those in other processes do.
TEST(EventLogTest, WritersDoNotDisturbEachOther)
{
    constexpr size_t kLines = 100;
    const TemporaryFolder folder;
    const auto write = [path = folder.Path(L"a.log")](wchar_t letter) {
        const Logging service(path, LogMode::File);
        for (size_t line = 0; line < kLines; ++line)
            service.Log(std::wstring(500, letter), LogEventType::Information);
    };
    std::vector<std::thread> writers;
    for (const wchar_t letter : {L'a', L'b', L'c', L'd'})
        writers.emplace_back(write, letter);
    for (std::thread& writer : writers)
        writer.join();
    std::ifstream file(std::filesystem::path(folder.Path(L"a.log")), std::ios::binary);
    std::string line(3, ' ');
    EXPECT_EQ((file.read(line.data(), 3), line), "\xEF\xBB\xBF"); // once, at the beginning
    size_t count = 0;
    for (; std::getline(file, line); ++count)
        EXPECT_TRUE(line.size() == 543 && line.ends_with(std::string(500, line[541]) + '\r'))
            << line;
    EXPECT_EQ(count, writers.size() * kLines);
}

TEST(DateTimeTest, NameAndBiasesFollowTheKind)
{
    TimeZone zone;
    zone.settings = {-60, L"Winter", {}, 5, L"Summer", {}, -60};
    const wchar_t* const names[] = {L"", L"Summer", L"Winter", L"Summer"};
    for (zone.kind = -1; zone.kind <= 2; ++zone.kind) {
        EXPECT_EQ(zone.Name(), names[zone.kind + 1]);
        EXPECT_EQ(zone.StandardBias(), zone.kind == -1 ? 0 : -55);
        EXPECT_EQ(zone.DaylightBias(), zone.kind == -1 ? 0 : -120);
    }
    zone.settings.DaylightName[0] = L'\0';
    std::fill_n(zone.settings.StandardName, 32, L'n');
    EXPECT_EQ(zone.Name(), std::wstring(32, L'n')); // no NUL at its end
}

// A copy of this program for which Wine plays another Windows runs this test again.
TEST(OsVersionTest, IsTheVersionThatRuns)
{
    constexpr wchar_t kKey[] = LR"(Software\Wine\AppDefaults\object_tests.exe)";
    if (const wchar_t* expected = _wgetenv(L"QUILL_TEST_VERSION")) {
        wchar_t* parent;
        const long number = std::wcstol(expected, &parent, 10);
        ScriptObject version = ScriptObject::Make(L"OsVersion");
        EXPECT_EQ(version.Get(L"Number"), number);
        EXPECT_EQ(version.Get(L"Major").Number() * 100 + version.Get(L"Minor").Number(), number);
        EXPECT_EQ(version.Get(L"Product2").Number() != 0, number >= 600);
        EXPECT_EQ(version.Get(L"SPMajor"), number == 501 ? 3 : 2);
        EXPECT_EQ(version.Get(L"SPMinor"), 0);
        EXPECT_EQ(version.Get(L"Suite"), 256); // one user at a time
        EXPECT_EQ(ScriptObject::Make(L"Me").Get(L"ParentProcessID"),
                  std::wcstol(parent, nullptr, 10));
        return;
    }
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    for (const auto& [name, number] : {std::pair{L"winxp", L"501 "}, {L"vista", L"600 "}}) {
        SHSetValueW(HKEY_CURRENT_USER, kKey, L"Version", REG_SZ, name, 12);
        _wputenv_s(L"QUILL_TEST_VERSION",
                   (number + std::to_wstring(GetCurrentProcessId())).c_str());
        EXPECT_EQ(_wspawnl(_P_WAIT, program, program, L"--gtest_filter=OsVersionTest.*", nullptr),
                  0)
            << Narrow(name);
    }
    _wputenv_s(L"QUILL_TEST_VERSION", L"");
    SHDeleteKeyW(HKEY_CURRENT_USER, kKey);
}

} // namespace
} // namespace quill::test
