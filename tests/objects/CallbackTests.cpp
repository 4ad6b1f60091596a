// What the platform calls back: stubs, hooks of windows, timers and the sinks of events.
#include <gtest/gtest.h>

#include <memory>
#include <set>

#include "gui/MessageHook.h"
#include "gui/TimerFn.h"
#include "gui/modPushParamThunk.h"
#include "support/Reaction.h"
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

DWORD ProtectionOf(const void* place)
{
    MEMORY_BASIC_INFORMATION memory{};
    VirtualQuery(place, &memory, sizeof memory);
    return memory.Protect;
}

// Called as the platform would: the object comes in front, the arguments keep their order, the
// stack is as it was. Memory that is both writable and executable is there, and nowhere else.
TEST(PushParamThunk, LeadsToItsObject)
{
    const auto target = std::make_unique<Target>();
    void* entry = BuildPushParamThunk(target->thunk, target.get(), reinterpret_cast<void*>(AddUp));
    EXPECT_EQ(target->thunk.words[0], reinterpret_cast<DWORD>(entry));
    const auto call = reinterpret_cast<int(CALLBACK*)(int, int, int)>(entry);
    for (int round = 0; round < 3; ++round)
        EXPECT_EQ(call(4, 3, 2), 433);
    EXPECT_EQ(target->sum, 432);
    EXPECT_EQ(ProtectionOf(target.get()), DWORD{PAGE_EXECUTE_READWRITE});
    EXPECT_EQ(ProtectionOf(std::make_unique<BYTE[]>(4096).get()), DWORD{PAGE_READWRITE});

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
    EXPECT_EQ(GetWindowTextLengthW(window), 1);
    EXPECT_TRUE(RemoveHook(window, &owner, CountTexts));
    EXPECT_FALSE(RemoveHook(window, &owner, CountTexts));
    SetWindowTextW(window, L"b");
    EXPECT_EQ(owner, 5);
    DestroyWindow(window);
}

// The message of the old timer is out of the queue when the new one starts.
TEST(ClockTest, AnOldTimerDoesNotRingForTheNewOne)
{
    ScriptObject clock = ScriptObject::Make(L"Clock");
    clock.Call(L"SetTimer", 10);
    MSG old{};
    ASSERT_GT(GetMessageW(&old, nullptr, WM_TIMER, WM_TIMER), 0);
    clock.Call(L"SetTimer", 60'000);
    DispatchMessageW(&old);
    EXPECT_TRUE(clock.Get(L"Running"));
}

// One that fails does not keep the next from hearing; one that is gone is dropped.
TEST(ClockTest, SinksAreIndependent)
{
    ScriptObject clock = ScriptObject::Make(L"Clock");
    Reaction failing([] {}), gone([] {}), last([] {});
    failing.result = E_FAIL;
    gone.result = RPC_E_DISCONNECTED;
    for (Reaction* reaction : {&failing, &gone, &last})
        reaction->Hear(clock.Dispatch());
    for (int round = 1; round <= 2; ++round) {
        clock.Call(L"SetTimer", 10);
        EXPECT_TRUE(PumpUntil([&] { return last.calls == round; }));
    }
    EXPECT_EQ(failing.calls, 2);
    EXPECT_EQ(gone.calls, 1);

    const ComPtr<IConnectionPoint> point = PointOf(clock.Dispatch());
    ComPtr<IEnumConnections> connections;
    CONNECTDATA left[3]{};
    ULONG count = 0;
    ASSERT_HRESULT_SUCCEEDED(point->EnumConnections(&connections));
    EXPECT_EQ(connections->Next(3, left, &count), S_FALSE);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(left[1].dwCookie, last.cookie);
    for (const DWORD cookie : {gone.cookie, DWORD{0}})
        EXPECT_EQ(point->Unadvise(cookie), CONNECT_E_NOCONNECTION);
}

// The platform refuses calls out of a message that another thread waits for; it gets its answer
// first.
TEST(ClockTest, AnEventFromASentMessageReachesItsSink)
{
    static ScriptObject* ringing;
    ScriptObject clock = ScriptObject::Make(L"Clock");
    ringing = &clock;
    DWORD state = 0;
    Reaction sink([&] { state = InSendMessageEx(nullptr); });
    sink.Hear(clock.Dispatch());
    // The timer starts and rings while the sender waits.
    const HWND window = CreateHiddenWindow(
        L"quill.SentEvent",
        [](HWND receiver, UINT message, WPARAM wParam, LPARAM lParam) WINAPI -> LRESULT {
            if (message != WM_APP) return DefWindowProcW(receiver, message, wParam, lParam);
            ringing->Call(L"SetTimer", 10);
            MSG timer;
            while (!PeekMessageW(&timer, nullptr, WM_TIMER, WM_TIMER, PM_REMOVE))
                Sleep(1);
            return DispatchMessageW(&timer);
        },
        nullptr, true);
    std::thread sender([&] { SendMessageW(window, WM_APP, 0, 0); });
    EXPECT_TRUE(PumpUntil([&] { return sink.calls == 1; }));
    sender.join();
    EXPECT_TRUE(state & ISMEX_REPLIED);
    DestroyWindow(window);
}

} // namespace
} // namespace quill::test
