#include <gtest/gtest.h>

#include <memory>
#include <set>

#include "gui/MessageHook.h"
#include "gui/TimerFn.h"
#include "gui/modPushParamThunk.h"
#include "support/EventListener.h"
#include "support/Reaction.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

struct Target : ExecutableObject {
    PushParamThunk thunk{};
    int sum = 0;
};

int CALLBACK AddUp(Target* target, int first, int second, int third) noexcept
{
    target->sum = 100 * first + 10 * second + third;
    return target->sum + 1;
}

// Called as the platform would: the object comes in front, the arguments keep their order, the
// stack is as it was.
TEST(PushParamThunk, LeadsToItsObject)
{
    const auto target = std::make_unique<Target>();
    void* entry = BuildPushParamThunk(target->thunk, target.get(), reinterpret_cast<void*>(AddUp));
    EXPECT_EQ(target->thunk.words[0], reinterpret_cast<DWORD>(entry));
    const auto* code = static_cast<const BYTE*>(entry);
    EXPECT_EQ(std::vector<BYTE>(code, code + 4), (std::vector<BYTE>{0xFF, 0x34, 0x24, 0xB8}));

    const auto call = reinterpret_cast<int(CALLBACK*)(int, int, int)>(entry);
    for (int round = 0; round < 3; ++round)
        EXPECT_EQ(call(4, 3, 2), 433);
    EXPECT_EQ(target->sum, 432);
}

// Memory that is both writable and executable is where the stubs are, and nowhere else.
TEST(PushParamThunk, LivesInTheOnlyExecutableHeap)
{
    const auto target = std::make_unique<Target>();
    MEMORY_BASIC_INFORMATION memory{};
    ASSERT_NE(VirtualQuery(target.get(), &memory, sizeof memory), 0U);
    EXPECT_EQ(memory.Protect, DWORD{PAGE_EXECUTE_READWRITE});
    const auto plain = std::make_unique<BYTE[]>(4096);
    ASSERT_NE(VirtualQuery(plain.get(), &memory, sizeof memory), 0U);
    EXPECT_EQ(memory.Protect, DWORD{PAGE_READWRITE});

    std::set<void*> places; // the heap uses them again
    for (int round = 0; round < 1'000; ++round)
        places.insert(std::make_unique<Target>().get());
    EXPECT_LT(places.size(), 1'000U);
}

LRESULT CALLBACK CountTexts(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR owner,
                            DWORD_PTR reference)
{
    if (message == WM_SETTEXT) *reinterpret_cast<int*>(owner) += static_cast<int>(reference);
    return DefSubclassProc(window, message, wParam, lParam);
}

TEST(MessageHook, SeesMessagesUntilItIsRemoved)
{
    const HWND window = CreateWindowExW(0, WC_STATICW, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                                        nullptr, nullptr);
    int owner = 0;
    ASSERT_TRUE(InstallHook(window, &owner, CountTexts, 5));
    SetWindowTextW(window, L"a");
    EXPECT_EQ(owner, 5);
    EXPECT_EQ(Desk::TextOf(window), L"a");
    EXPECT_TRUE(RemoveHook(window, &owner, CountTexts));
    EXPECT_FALSE(RemoveHook(window, &owner, CountTexts));
    SetWindowTextW(window, L"b");
    EXPECT_EQ(owner, 5);
    DestroyWindow(window);
}

class ClockTest : public testing::Test {
protected:
    bool Running() { return clock_.Get(L"Running").Truth(); }
    bool Start(int milliseconds) { return clock_.Call(L"SetTimer", milliseconds).Truth(); }

    ScriptObject clock_ = ScriptObject::Make(L"Clock");
};

// The message of the old timer is out of the queue when the new one starts.
TEST_F(ClockTest, AnOldTimerDoesNotRingForTheNewOne)
{
    EventListener listener(clock_.Dispatch());
    Start(10);
    MSG old{};
    ASSERT_GT(GetMessageW(&old, nullptr, WM_TIMER, WM_TIMER), 0);
    Start(60'000);
    DispatchMessageW(&old);
    EXPECT_EQ(listener.Count(), 0U);
    EXPECT_TRUE(Running());
}

TEST_F(ClockTest, AReleasedClockIsSilent)
{
    Reaction reaction([] {});
    reaction.Hear(clock_.Dispatch());
    Start(20);
    clock_.Release();
    EXPECT_FALSE(PumpUntil([&] { return reaction.calls > 0; }, 100));
}

// One that fails does not keep the next from hearing; one that is gone is dropped.
TEST_F(ClockTest, SinksAreIndependent)
{
    Reaction failing([] {});
    Reaction gone([] {});
    Reaction last([] {});
    failing.result = E_FAIL;
    gone.result = RPC_E_DISCONNECTED;
    const ComPtr<IConnectionPoint> point = PointOf(clock_.Dispatch());
    for (Reaction* reaction : {&failing, &gone, &last})
        reaction->Hear(clock_.Dispatch());
    for (int round = 1; round <= 2; ++round) {
        Start(10);
        EXPECT_TRUE(PumpUntil([&] { return last.calls == round; }));
    }
    EXPECT_EQ(failing.calls, 2);
    EXPECT_EQ(gone.calls, 1);

    ComPtr<IEnumConnections> connections;
    CONNECTDATA left[3]{};
    ULONG count = 0;
    ASSERT_HRESULT_SUCCEEDED(point->EnumConnections(&connections));
    EXPECT_EQ(connections->Next(3, left, &count), S_FALSE);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(left[1].dwCookie, last.cookie);
    EXPECT_EQ(point->Unadvise(gone.cookie), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(point->Unadvise(0), CONNECT_E_NOCONNECTION);
}

// The platform refuses calls out of a message that another thread waits for; it gets its answer
// first.
TEST_F(ClockTest, AnEventFromASentMessageReachesItsSink)
{
    DWORD state = 0;
    Reaction sink([&] { state = InSendMessageEx(nullptr); });
    sink.Hear(clock_.Dispatch());
    const HWND window = CreateHiddenWindow(
        L"quill.SentEvent",
        [](HWND receiver, UINT message, WPARAM wParam, LPARAM lParam) WINAPI -> LRESULT {
            if (message != WM_APP) return DefWindowProcW(receiver, message, wParam, lParam);
            (*reinterpret_cast<const std::function<void()>*>(lParam))();
            return 0;
        },
        nullptr, true);
    // The timer starts and rings while the sender waits.
    const std::function<void()> ring = [&] {
        Start(10);
        MSG timer;
        while (!PeekMessageW(&timer, nullptr, WM_TIMER, WM_TIMER, PM_REMOVE))
            Sleep(1);
        DispatchMessageW(&timer);
    };
    std::thread sender([&] { SendMessageW(window, WM_APP, 0, reinterpret_cast<LPARAM>(&ring)); });
    EXPECT_TRUE(PumpUntil([&] { return sink.calls == 1; }));
    sender.join();
    EXPECT_TRUE(state & ISMEX_REPLIED);
    DestroyWindow(window);
}

} // namespace
} // namespace quill::test
