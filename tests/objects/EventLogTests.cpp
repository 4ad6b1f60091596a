#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <thread>

#include "core/Apartment.h"
#include "services/Logging.h"
#include "support/ScriptObject.h"
#include "support/TemporaryFolder.h"

namespace quill::test {
namespace {

using namespace std::literals;

struct Reported {
    WORD type;
    WORD category;
    DWORD id;
    std::vector<std::wstring> texts;
};

thread_local std::vector<Reported> reported;
thread_local DWORD refusal;      // what the system's event log answers; 0: it takes the event
thread_local size_t takenBefore; // events that it takes before it refuses

BOOL WINAPI RecordEvent(HANDLE, WORD type, WORD category, DWORD id, PSID, WORD count, DWORD,
                        LPCWSTR* texts, void*)
{
    SetLastError(refusal);
    if (refusal && reported.size() >= takenBefore) return FALSE;
    reported.push_back({type, category, id, {texts, texts + count}});
    return TRUE;
}

std::string Contents(const std::wstring& path)
{
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    std::ostringstream contents;
    contents << file.rdbuf();
    return contents.str();
}

// The platform's own log takes everything here and keeps nothing, so what goes to it is recorded in
// front of it. How the event viewer shows an event cannot be seen; which text the message table
// makes of it can.
class EventLogTest : public testing::Test {
protected:
    EventLogTest()
    {
        reported.clear();
        refusal = 0;
        takenBefore = 0;
        Seam<EventLogFunctions>().report = RecordEvent;
    }
    ~EventLogTest() override { Seam<EventLogFunctions>().report = ReportEventW; }

    const TemporaryFolder folder_;
    const std::wstring path_ = folder_.Path(L"a.log");
    ScriptObject log_ = ScriptObject::Make(L"EventLog");
};

TEST_F(EventLogTest, AnEmptyTextIsRecordedQuietly)
{
    log_.Put(L"ErrorLevel", 0);
    log_.Call(L"Report", L"", 16);
    ASSERT_EQ(reported.size(), 1u);
    EXPECT_EQ(reported[0].texts, std::vector<std::wstring>{L""});
    EXPECT_EQ(reported[0].type, EVENTLOG_ERROR_TYPE);
}

TEST_F(EventLogTest, IconsAreTypesOfEvents)
{
    log_.Put(L"File", path_);
    const std::pair<Arg, WORD> cases[] = {{16, 1},        {48, 2}, {64, 4},
                                          {Missing(), 4}, {17, 4}, {-1, 4}};
    for (const auto& [icon, type] : cases) {
        reported.clear();
        log_.Call(L"Report", L"text", icon.value);
        ASSERT_EQ(reported.size(), 1u);
        EXPECT_EQ(reported[0].type, type);
        EXPECT_EQ(reported[0].category, 0);
    }
    EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(EventLogTest, TheEventViewerShowsTheText)
{
    const std::wstring text = L"100% of %1, %%2 and %n\0 end\r\nline"s;
    log_.Call(L"Report", text);
    ASSERT_EQ(reported.size(), 1u);
    ASSERT_EQ(reported[0].texts.size(), 1u);
    const std::wstring insertion = reported[0].texts[0];
    DWORD_PTR arguments[] = {reinterpret_cast<DWORD_PTR>(insertion.c_str())};
    wchar_t shown[200]{};
    FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY,
                   GetModuleHandleW(nullptr), reported[0].id, 0, shown, 200,
                   reinterpret_cast<va_list*>(arguments));
    EXPECT_EQ(shown, insertion + L"\r\n");
    // Nothing in it is replaced a second time, and nothing cuts it off.
    EXPECT_EQ(insertion, L"100% of %\u200B1, %%\u200B2 and %n\u2400 end\r\nline");
}

TEST_F(EventLogTest, ALongTextBecomesSeveralEvents)
{
    std::wstring text(31'838, L'a');
    text += L"\U0001F600"; // lies across the limit
    text += std::wstring(40'000, L'b');
    log_.Call(L"Report", text, 48);
    ASSERT_EQ(reported.size(), 3u);
    std::wstring together;
    for (const Reported& event : reported) {
        EXPECT_EQ(event.type, EVENTLOG_WARNING_TYPE);
        EXPECT_LE(event.texts[0].size(), 31'839u);
        together += event.texts[0];
    }
    EXPECT_EQ(together, text);
    EXPECT_EQ(reported[0].texts[0].back(), L'a');
}

TEST_F(EventLogTest, ARefusedEventGoesToTheFileInAutomaticMode)
{
    refusal = ERROR_ACCESS_DENIED;
    log_.Put(L"File", path_);
    log_.Call(L"Report", L"kept", 16);
    EXPECT_TRUE(Contents(path_).ends_with("\tError\tkept\r\n"));
    log_.Put(L"mode", 1);
    EXPECT_EQ(ErrorOf([&] { log_.Call(L"Report", L"refused"); }).number, 0x80070005u);
    EXPECT_EQ(Contents(path_).find("refused"), std::string::npos);
}

TEST_F(EventLogTest, WhatTheSystemsLogHasIsNotRecordedAgain)
{
    refusal = ERROR_LOG_FILE_FULL;
    takenBefore = 1;
    log_.Put(L"File", path_);
    log_.Call(L"Report", std::wstring(31'839, L'a') + L"rest");
    EXPECT_EQ(reported.size(), 1U);
    EXPECT_TRUE(Contents(path_).ends_with("\tInformation\trest\r\n"));
}

// A lock belongs to a handle, so writers on threads meet as those in other processes do.
TEST_F(EventLogTest, WritersDoNotDisturbEachOther)
{
    constexpr int kWriters = 4;
    constexpr int kLines = 50;
    std::vector<std::thread> writers;
    for (int writer = 0; writer < kWriters; ++writer)
        writers.emplace_back([this, writer] {
            const Logging service(path_, LogMode::File);
            for (int line = 0; line < kLines; ++line)
                service.Log(L"<" + std::wstring(500, static_cast<wchar_t>(L'a' + writer)) + L">",
                            LogEventType::Information);
        });
    for (std::thread& writer : writers)
        writer.join();

    const std::string contents = Contents(path_);
    EXPECT_EQ(contents.rfind("\xEF\xBB\xBF"), 0u); // once, at the beginning
    std::istringstream lines(contents);
    int counts[kWriters]{};
    for (std::string line; std::getline(lines, line);) {
        const size_t begin = line.find('<');
        ASSERT_TRUE(line.ends_with(">\r") && line.size() - begin == 503) << line;
        ASSERT_EQ(line.find_first_not_of(line[begin + 1], begin + 1), begin + 501) << line;
        ++counts[line[begin + 1] - 'a'];
    }
    for (int count : counts)
        EXPECT_EQ(count, kLines);
}

} // namespace
} // namespace quill::test
