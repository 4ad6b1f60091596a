#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

#include "core/RunAside.h"

namespace quill::test {
namespace {

constexpr DWORD kDeadline = 20'000; // milliseconds

TEST(RunAside, IsSignalledAtTheEndWhateverTheBodyThrows)
{
    std::atomic<bool> ran{false};
    const Thread thread = RunAside([&] {
        ran = true;
        throw std::runtime_error("lost");
    });
    ASSERT_TRUE(thread);
    EXPECT_EQ(WaitForSingleObject(thread.get(), kDeadline), WAIT_OBJECT_0);
    EXPECT_TRUE(ran);
}

TEST(RunAside, ThreadsThatHangDoNotPileUp)
{
    const auto answer = std::make_shared<Event>(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const auto hang = [answer] { WaitForSingleObject(answer->get(), kDeadline); };
    std::vector<Thread> threads;
    while (Thread thread = RunAside(hang))
        threads.push_back(std::move(thread));
    EXPECT_EQ(threads.size(), static_cast<size_t>(kMostAside));
    EXPECT_FALSE(RunAside(hang)) << "a refused one takes no room either";

    SetEvent(answer->get());
    for (const Thread& thread : threads)
        EXPECT_EQ(WaitForSingleObject(thread.get(), kDeadline), WAIT_OBJECT_0);
    EXPECT_TRUE(RunAside([] {})) << "there is room again";
}

} // namespace
} // namespace quill::test
