// Routines, as far as no script reaches what is tested here.
#include <gtest/gtest.h>

#include <regex>
#include <stdexcept>

#include <sddl.h>

#include "core/Conversions.h"
#include "core/MessagePump.h"
#include "core/RunAside.h"
#include "core/Security.h"
#include "core/Text.h"
#include "support/LateBound.h"
#include "sysinfo/DateTime.h"

namespace quill::test {
namespace {

TEST(Conversions, TakeWhatCompiledClientsPass)
{
    EXPECT_TRUE(static_cast<bool>(Argument<VARIANT_BOOL>{VARIANT_BOOL(0x100)}));
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
    const std::tuple<std::wstring, std::wstring, bool> cases[] = {
        {L"A0-29", L"?#-##", true},  {L"\xe9", L"?", true},
        {L"x", L"*", true},          {L"a.b.c", L"*.c", true},
        {L"A1-2", L"?#-##", false},  {L"11-23", L"?#-##", false},
        {L"AB-23", L"?#-##", false}, {L":", L"#", false},
        {L"/", L"#", false},         {L"ab", L"AB", false},
        {L"a.b.d", L"*.c", false},   {std::wstring(1024, L'a'), hard + L"b", false}};
    for (const auto& [text, mask, fits] : cases)
        EXPECT_EQ(FitsMask(text, mask), fits) << Narrow(mask.substr(0, 20));
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

// The user from this computer (1 and 2 of the rights, not 4), the system and administrators; no
// program of a lower level, which Wine shows in other words.
TEST(AccessRights, AdmitTheUserFromThisComputerAndNobodyElse)
{
    Owned<LPWSTR, LocalFree> text;
    AccessRights rights;
    ConvertSecurityDescriptorToStringSecurityDescriptorW(
        rights.Descriptor(), SDDL_REVISION_1,
        OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION | SACL_SECURITY_INFORMATION,
        Into(text), nullptr);
    EXPECT_TRUE(std::regex_match(
        text.get(), std::wregex(LR"(O:(S-1-5-21-[-\d]+)D:\(A;;CCDC;;;\1\)\(A;;CCDC;;;SY\))"
                                LR"(\(A;;CCDC;;;BA\)S:\((ML;;NX|;;LC);;;HI\))")))
        << Narrow(text.get());
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
    EXPECT_EQ(*ran, 0);
    SetEvent(answer->get());
    for (const Thread& thread : threads)
        EXPECT_EQ(WaitForSingleObject(thread.get(), 20'000), WAIT_OBJECT_0);
    EXPECT_EQ(*ran, kMostAside);
    EXPECT_TRUE(RunAside([] {})) << "there is room again";
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

} // namespace
} // namespace quill::test
