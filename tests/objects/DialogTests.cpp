// What lines of a table cannot say of the selection dialogs: typed variables, and what stays in
// memory.
#include <gtest/gtest.h>

#include <tuple>

#include "dialogs/frmDTPick.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

constexpr wchar_t kTitle[] = L"About you";

// The units of a password that nothing of the test holds as a text.
constexpr size_t kPasswordLength = 20;
constexpr wchar_t PasswordUnit(size_t index)
{
    return static_cast<wchar_t>(L'a' + index * 7 % 26);
}

// True for its units from this one on.
bool IsPassword(const wchar_t* text, size_t first)
{
    size_t index = first;
    while (index < kPasswordLength && text[index - first] == PasswordUnit(index))
        ++index;
    return index == kPasswordLength;
}

// Memory that was freed has lost its beginning only.
size_t PasswordsInMemory()
{
    size_t found = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (auto* at = static_cast<const char*>(nullptr); VirtualQuery(at, &region, sizeof region);
         at = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        if (region.State != MEM_COMMIT || region.Protect != PAGE_READWRITE) continue;
        const auto* begin = static_cast<const wchar_t*>(region.BaseAddress);
        const auto* end = begin + region.RegionSize / sizeof *begin - kPasswordLength;
        for (; begin < end; ++begin)
            found += IsPassword(begin, kPasswordLength / 2);
    }
    return found;
}

TEST(MInputBox, PasswordsDoNotStayInMemory)
{
    ScriptObject box = ScriptObject::Make(L"MInputBox");
    box.Put(L"Title", kTitle);
    box.Put(L"InputFlags", 1);
    for (const WORD key : {WORD{VK_ESCAPE}, WORD{VK_RETURN}}) {
        Variant texts;
        Robot robot([&](Desk& desk) {
            desk.Control(kTitle, L"Edit");
            for (size_t index = 0; index < kPasswordLength; ++index)
                desk.Type(PasswordUnit(index));
            desk.Press(key);
        });
        const bool accepted = box.Call(L"InputM", &texts).Truth();
        EXPECT_EQ(accepted, key == VK_RETURN);
        // The result is the script's.
        EXPECT_EQ(PasswordsInMemory(), accepted ? 1U : 0U);
        if (!accepted) continue;
        const Variant values = box.Get(L"Values");
        EXPECT_TRUE(IsPassword(V_BSTR(&DataOf<Variant>(*V_ARRAY(&values))[0]), 0));
    }
}

TEST(DTPick, TakesTypedVariables)
{
    constexpr DATE kStart = 43890.5;
    DATE typed = kStart;
    ScriptObject picker = ScriptObject::Make(L"DTPick");
    for (const Variant& date : {Reference(VT_DATE, &typed), Variant::OfDate(kStart)}) {
        Robot robot([](Desk& desk) { desk.Act(L"SysDateTimePick32 {RIGHT}{UP}{ENTER}"); });
        EXPECT_TRUE(picker.Call(L"Selection", Arg(date)).Truth());
    }
    EXPECT_GT(typed, kStart + 0.5);
}

TEST(frmDTPick, HandlesTellWhetherThePickersAreThere)
{
    for (const auto& [mode, date, time, made] : {std::tuple{PickMode::Date, 4U, 0U, true},
                                                 {PickMode::Time, 0U, 4U, true},
                                                 {PickMode::Time, 4U, 0U, false},
                                                 {PickMode::Both, 6U, 3U, true},
                                                 {PickMode::Both, 4U, 3U, false}})
        EXPECT_EQ(frmDTPick::PickersMade(mode, date, time), made) << date << ' ' << time;
}

} // namespace
} // namespace quill::test
