// Conversions, the message pump, and functions of the platform.
#include <gtest/gtest.h>

#include "core/Apartment.h"
#include "core/Conversions.h"
#include "core/MessagePump.h"

namespace quill::test {
namespace {

TEST(Conversions, TruthIsMinusOneAndAnythingButZero)
{
    for (const VARIANT_BOOL value : {VARIANT_TRUE, VARIANT_BOOL(1), VARIANT_BOOL(0x100)})
        EXPECT_TRUE(static_cast<bool>(Argument<VARIANT_BOOL>{value})) << value;
    VARIANT_BOOL sent = 5;
    Return(&sent, true);
    EXPECT_EQ(sent, VARIANT_TRUE);
}

TEST(Conversions, NullVariableIsAnError)
{
    const auto take = [](VARIANT&) {};
    EXPECT_THROW(take(Argument<VARIANT*>{nullptr}), AutomationError);
}

TEST(MessagePump, PutsQuitBackForTheLoopOutside)
{
    PostQuitMessage(42);
    ASSERT_FALSE(WaitForMessages(0));
    ASSERT_FALSE(DispatchPending());
    EXPECT_EQ(RunMessageLoop(), 42);
    EXPECT_TRUE(DispatchPending());
}

TEST(MessagePump, WaitEndsWithTheFirstMessage)
{
    static int seen = 0;
    ThisApartment().preview = [](MSG& message) { return message.message == WM_TIMER && ++seen; };
    const UINT_PTR timer = SetTimer(nullptr, 0, 50, nullptr);
    const ULONGLONG begin = GetTickCount64();
    EXPECT_TRUE(WaitForMessages(10'000));
    EXPECT_LT(GetTickCount64() - begin, 5'000u);
    DispatchPending();
    KillTimer(nullptr, timer);
    ThisApartment().preview = nullptr;
    EXPECT_GE(seen, 1);
}

TEST(FindSystemFunction, IsNullForWhatThisWindowsLacks)
{
    EXPECT_TRUE(FindSystemFunction<void()>(L"winmm.dll", "timeGetTime")); // not loaded before
    EXPECT_FALSE(FindSystemFunction<void()>(L"kernel32.dll", "NoSuchFunction"));
    EXPECT_FALSE(FindSystemFunction<void()>(L"nosuch.dll", "GetTickCount64"));
}

} // namespace
} // namespace quill::test
