// Conversions, the message pump, and functions of the platform.
#include <gtest/gtest.h>

#include "core/Apartment.h"
#include "core/Conversions.h"
#include "core/MessagePump.h"
#include "core/Text.h"
#include "support/ScriptObject.h"

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

TEST(Text, NumbersAreReadAsUsersWriteThem)
{
    const std::pair<const wchar_t*, std::optional<double>> cases[] = {
        {L"0", 0},          {L" -12,5 ", -12.5}, {L"+.5", .5},  {L"7.", 7},
        {L"1.5E-3", .0015}, {L"1e+2", 100},      {L"", {}},     {L",", {}},
        {L"1.2.3", {}},     {L"1,234.5", {}},    {L"1E", {}},   {L"1E999", {}},
        {L"- 1", {}},       {L"1 2", {}},        {L"0x10", {}}, {L"infinity", {}}};
    for (const auto& [text, number] : cases)
        EXPECT_EQ(NumberOf(text, L","), number) << Narrow(text);
}

TEST(Text, MasksFit)
{
    const std::wstring hard = [] {
        std::wstring mask;
        while (mask.size() < 10'000)
            mask += L"a*";
        return mask + L"b";
    }();
    const std::tuple<std::wstring, std::wstring, bool> cases[] = {
        {L"A1-23", L"?#-##", true},
        {L"A1-2", L"?#-##", false},
        {L"11-23", L"?#-##", false},
        {L"AB-23", L"?#-##", false},
        {L"\xe9", L"?", true},
        {L"ab", L"AB", false},
        {L"x", L"*", true},
        {L"a.b.c", L"*.c", true},
        {L"a.b.d", L"*.c", false},
        {std::wstring(1024, L'a'), hard, false},
        {std::wstring(6000, L'a') + L"b", hard, true},
    };
    for (const auto& [text, mask, fits] : cases)
        EXPECT_EQ(FitsMask(text, mask), fits) << Narrow(text.substr(0, 20));
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
