#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <thread>

#include "services/Logging.h"
#include "support/TemporaryFolder.h"

namespace quill::test {
namespace {

// A lock belongs to a handle, so writers on threads meet as those in other processes do.
TEST(EventLogTest, WritersDoNotDisturbEachOther)
{
    const TemporaryFolder folder;
    const std::wstring path = folder.Path(L"a.log");
    constexpr int kWriters = 4;
    constexpr int kLines = 50;
    std::vector<std::thread> writers;
    for (int writer = 0; writer < kWriters; ++writer)
        writers.emplace_back([&path, writer] {
            const Logging service(path, LogMode::File);
            for (int line = 0; line < kLines; ++line)
                service.Log(L"<" + std::wstring(500, static_cast<wchar_t>(L'a' + writer)) + L">",
                            LogEventType::Information);
        });
    for (std::thread& writer : writers)
        writer.join();

    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    const std::string contents(std::istreambuf_iterator<char>(file), {});
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
