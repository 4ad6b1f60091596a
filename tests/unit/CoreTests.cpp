// Conversions, automation values and the message pump.
#include <gtest/gtest.h>

#include "core/Apartment.h"
#include "core/Conversions.h"
#include "core/MessagePump.h"

namespace quill::test {
namespace {

using namespace std::literals;

TEST(Conversions, TextIsCounted)
{
    for (const std::wstring& text : {L""s, L"a"s, L"a\0b"s, L"\0"s, std::wstring(70'000, L'x')}) {
        BSTR sent = nullptr;
        Return(&sent, text);
        const Bstr owned(sent);
        EXPECT_EQ(SysStringLen(sent), text.size());
        EXPECT_EQ(static_cast<std::wstring>(Argument<BSTR>{sent}), text);
    }
    EXPECT_EQ(static_cast<std::wstring>(Argument<BSTR>{nullptr}), L"");
}

TEST(Conversions, TruthIsMinusOneAndAnythingButZero)
{
    for (const VARIANT_BOOL value : {VARIANT_TRUE, VARIANT_BOOL(1), VARIANT_BOOL(0x100)})
        EXPECT_TRUE(static_cast<bool>(Argument<VARIANT_BOOL>{value})) << value;
    EXPECT_FALSE(static_cast<bool>(Argument<VARIANT_BOOL>{VARIANT_FALSE}));
    VARIANT_BOOL sent = 5;
    Return(&sent, true);
    EXPECT_EQ(sent, VARIANT_TRUE);
    Return(&sent, false);
    EXPECT_EQ(sent, VARIANT_FALSE);
}

TEST(Conversions, RulesOfStoredProperties)
{
    for (const auto& [value, expected] : {std::pair{-1, 7}, {0, 0}, {2, 2}, {3, 7}})
        EXPECT_EQ((Within<0, 2>::Apply(7, value)), expected) << value;
    EXPECT_EQ(CutTo<3>::Apply(L"old", L"abcd"), L"abc");
    EXPECT_EQ(CutTo<3>::Apply(L"old", L"abc"), L"abc");
    EXPECT_EQ(CutTo<3>::Apply(L"old", L"a\0cd"s), L"a\0c"s);
}

TEST(Conversions, NullVariableIsAnError)
{
    const auto take = [](VARIANT&) {};
    EXPECT_THROW(take(Argument<VARIANT*>{nullptr}), AutomationError);
}

TEST(Variants, AreFollowedThroughReferences)
{
    Variant text(L"a\0b"sv);
    VARIANT inner{};
    V_VT(&inner) = VT_BYREF | VT_BSTR;
    V_BSTRREF(&inner) = &V_BSTR(&text);
    VARIANT outer{};
    V_VT(&outer) = VT_BYREF | VT_VARIANT;
    V_VARIANTREF(&outer) = &text;
    for (const VARIANT* reference : {&inner, &outer}) {
        const Variant copy = Variant::Dereferenced(*reference);
        ASSERT_EQ(V_VT(&copy), VT_BSTR);
        EXPECT_NE(V_BSTR(&copy), V_BSTR(&text));
        EXPECT_EQ(SysStringLen(V_BSTR(&copy)), 3u);
    }
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
    EXPECT_TRUE(FindSystemFunction<void()>(L"kernel32.dll", "GetTickCount64"));
    EXPECT_TRUE(FindSystemFunction<void()>(L"winmm.dll", "timeGetTime")); // not loaded before
    EXPECT_FALSE(FindSystemFunction<void()>(L"kernel32.dll", "NoSuchFunction"));
    EXPECT_FALSE(FindSystemFunction<void()>(L"nosuch.dll", "GetTickCount64"));
}

} // namespace
} // namespace quill::test
