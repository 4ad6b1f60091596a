// Conversions, the message pump, functions of the platform, threads beside the apartments.
#include <gtest/gtest.h>

#include <stdexcept>

#include <sddl.h>

#include "core/Apartment.h"
#include "core/Conversions.h"
#include "core/MessagePump.h"
#include "core/RunAside.h"
#include "core/Security.h"
#include "core/Text.h"
#include "core/quillfn.h"
#include "support/Remote.h"
#include "support/Values.h"

namespace quill::test {
namespace {

TEST(Conversions, TruthIsMinusOneAndAnythingButZero)
{
    EXPECT_TRUE(static_cast<bool>(Argument<VARIANT_BOOL>{VARIANT_BOOL(0x100)}));
    VARIANT_BOOL sent = 5;
    Return(&sent, true);
    EXPECT_EQ(sent, VARIANT_TRUE);
    const auto take = [](VARIANT&) {};
    EXPECT_THROW(take(Argument<VARIANT*>{nullptr}), AutomationError);
    Variant nowhere = OfType(VT_BYREF | VT_I4);
    EXPECT_THROW(Assign(nowhere, Variant(1L)), AutomationError);
    EXPECT_EQ(ToText(Variant(true)), L"True");
    EXPECT_EQ(ToText(Variant(std::wstring_view(L"a\0b", 3))).size(), 3u);
}

TEST(Text, NumbersAreReadAsUsersWriteThem)
{
    const std::pair<const wchar_t*, std::optional<double>> cases[] = {
        {L" -12,5 ", -12.5}, {L"+.5", .5}, {L"7.", 7},     {L"1.5E-3", .0015}, {L"1e+2", 100},
        {L"", {}},           {L",", {}},   {L"1.2.3", {}}, {L"1,234.5", {}},   {L"1E", {}},
        {L"1E999", {}},      {L"- 1", {}}, {L"1 2", {}},   {L"0x10", {}},      {L"infinity", {}}};
    for (const auto& [text, number] : cases)
        EXPECT_EQ(NumberOf(text, L","), number) << Narrow(text);
}

TEST(Text, MasksFit)
{
    std::wstring hard;
    while (hard.size() < 10'000)
        hard += L"a*";
    const auto fits = [](std::wstring_view text, std::wstring_view mask) {
        return FitsMask(text, mask);
    };
    EXPECT_TRUE(fits(L"A0-29", L"?#-##") && fits(L"\xe9", L"?") && fits(L"x", L"*"));
    EXPECT_TRUE(fits(L"a.b.c", L"*.c") && fits(std::wstring(6000, L'a') + L"b", hard + L"b"));
    const std::pair<std::wstring, std::wstring> others[] = {
        {L"A1-2", L"?#-##"},  {L"11-23", L"?#-##"},
        {L"AB-23", L"?#-##"}, {L":", L"#"},
        {L"/", L"#"},         {L"ab", L"AB"},
        {L"a.b.d", L"*.c"},   {std::wstring(1024, L'a'), hard + L"b"}};
    for (const auto& [text, mask] : others)
        EXPECT_FALSE(fits(text, mask)) << Narrow(mask.substr(0, 20));
}

TEST(MessagePump, PutsQuitBackForTheLoopOutside)
{
    PostQuitMessage(42);
    ASSERT_FALSE(WaitForMessages(0));
    ASSERT_FALSE(DispatchPending());
    EXPECT_EQ(RunMessageLoop(), 42);
    EXPECT_TRUE(DispatchPending());
}

TEST(MessagePump, TurnsKeysIntoCharacters)
{
    const HWND edit =
        CreateWindowExW(0, L"EDIT", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    PostMessageW(edit, WM_KEYDOWN, L'7', MAKELPARAM(1, MapVirtualKeyW(L'7', MAPVK_VK_TO_VSC)));
    EXPECT_TRUE(DispatchPending());
    EXPECT_EQ(GetWindowTextLengthW(edit), 1);
    DestroyWindow(edit);
}

TEST(FindSystemFunction, IsNullForWhatThisWindowsLacks)
{
    EXPECT_TRUE(FindSystemFunction<void()>(L"winmm.dll", "timeGetTime")); // not loaded before
    EXPECT_FALSE(FindSystemFunction<void()>(L"kernel32.dll", "NoSuchFunction"));
    EXPECT_FALSE(FindSystemFunction<void()>(L"nosuch.dll", "GetTickCount64"));
}

TEST(ElementCount, CountsZeroBasedArraysByTheirFirstDimension)
{
    const auto count = [](std::vector<SAFEARRAYBOUND> bounds) {
        const auto dimensions = static_cast<UINT>(bounds.size());
        return ElementCount(Variant(Array(SafeArrayCreate(VT_UI1, dimensions, bounds.data()))));
    };
    EXPECT_TRUE(count({{5, 1}}) == 0 && count({{3, 0}, {7, 1}}) == 3 &&
                count({{3, 1}, {7, 0}}) == 0);
    EXPECT_EQ(count({{32767, 0}}), 32767);
    EXPECT_THROW(count({{32768, 0}}), AutomationError);
    for (const int type : {VT_ARRAY | VT_VARIANT, VT_BYREF | VT_ARRAY | VT_VARIANT, +VT_I4})
        EXPECT_EQ(ElementCount(OfType(static_cast<VARTYPE>(type))), 0) << type;
}

// The user from this computer (1 and 2 of the rights, not 4), the system and administrators; no
// program of a lower level.
TEST(AccessRights, AdmitTheUserFromThisComputerAndNobodyElse)
{
    alignas(TOKEN_USER) BYTE user[256];
    DWORD size = 0;
    Handle token;
    Owned<LPWSTR, LocalFree> name;
    Owned<LPWSTR, LocalFree> text;
    OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, Into(token));
    GetTokenInformation(token.get(), TokenUser, user, sizeof user, &size);
    ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(user)->User.Sid, Into(name));
    AccessRights rights;
    ConvertSecurityDescriptorToStringSecurityDescriptorW(
        rights.Descriptor(), SDDL_REVISION_1,
        OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION | SACL_SECURITY_INFORMATION,
        Into(text), nullptr);
    const std::wstring sid = name.get();
    EXPECT_EQ(text.get(), L"O:" + sid + L"D:(A;;CCDC;;;" + sid +
                              L")(A;;CCDC;;;SY)(A;;CCDC;;;BA)S:" +
                              (OnWine() ? L"(;;LC;;;HI)" : L"(ML;;NX;;;HI)"));
}

TEST(RunAside, ThreadsThatHangDoNotPileUp)
{
    const auto answer = std::make_shared<Event>(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const auto ran = std::make_shared<std::atomic<int>>(0);
    const auto hang = [=] {
        WaitForSingleObject(answer->get(), 20'000);
        ++*ran;
        throw std::runtime_error("lost");
    };
    std::vector<Thread> threads;
    while (Thread thread = RunAside(hang))
        threads.push_back(std::move(thread));
    EXPECT_EQ(threads.size(), static_cast<size_t>(kMostAside));
    EXPECT_FALSE(RunAside(hang)) << "a refused one takes no room either";
    EXPECT_EQ(WaitForSingleObject(threads[0].get(), 0), DWORD{WAIT_TIMEOUT});

    SetEvent(answer->get());
    for (const Thread& thread : threads)
        EXPECT_EQ(WaitForSingleObject(thread.get(), 20'000), WAIT_OBJECT_0);
    EXPECT_EQ(*ran, kMostAside);
    EXPECT_TRUE(RunAside([] {})) << "there is room again";
}

} // namespace
} // namespace quill::test
