#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "dialogs/frmDTPick.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

constexpr wchar_t kTitle[] = L"When";
constexpr wchar_t kPicker[] = L"SysDateTimePick32";
constexpr DATE kStart = 43890.5 + 1.0 / 86400; // 29 February 2020, 12:00:01

DATE Now()
{
    SYSTEMTIME now{};
    GetLocalTime(&now);
    DATE date = 0;
    SystemTimeToVariantTime(&now, &date);
    return date;
}

class DTPickTest : public testing::Test {
protected:
    DTPickTest() { picker_.Put(L"Title", kTitle); }

    bool Pick(Variant& date, Robot::Script answer)
    {
        Robot robot(std::move(answer));
        return picker_.Call(L"Selection", &date).Truth();
    }

    ScriptObject picker_ = ScriptObject::Make(L"DTPick");
};

TEST_F(DTPickTest, ReturnsTheChosenParts)
{
    for (const auto& [mode, chosen] : {std::pair{0, std::floor(kStart)},
                                       {1, kStart - std::floor(kStart)},
                                       {2, kStart},
                                       {7, kStart}}) { // ignored: 2 stays
        SCOPED_TRACE(mode);
        picker_.Put(L"ControlMode", mode);
        Variant date = Variant::OfDate(kStart);
        EXPECT_TRUE(Pick(date, ClickButton(kTitle, nullptr)));
        EXPECT_EQ(V_VT(&date), VT_DATE);
        EXPECT_NEAR(V_DATE(&date), chosen, 1e-9);
    }
}

TEST_F(DTPickTest, GoesByKeysFromPickerToPicker)
{
    Variant date = Variant::OfDate(kStart);
    EXPECT_TRUE(Pick(date, [](Desk& desk) {
        desk.Control(kTitle, kPicker);
        desk.Press(VK_RIGHT); // a part of the date
        desk.Press(VK_UP);
        desk.Press(VK_TAB);
        desk.Press(VK_RIGHT); // a part of the time
        desk.Press(VK_UP);
        desk.Press(VK_TAB);             // the button
        desk.Press(VK_TAB);             // the date again
        desk.Press(VK_TAB, {VK_SHIFT}); // the button
        desk.Press(VK_TAB, {VK_SHIFT}); // the time
        desk.Press(VK_UP);
        desk.Press(VK_RETURN);
    }));
    const double minutes = (V_DATE(&date) - std::floor(V_DATE(&date)) - 0.5) * 1440;
    EXPECT_NE(std::floor(V_DATE(&date)), std::floor(kStart));
    EXPECT_GT(minutes, 1.5) << "two up, of one part or two";
}

// Says that the calendar of a picker was opened or closed, as the picker does.
void Notify(HWND picker, UINT code)
{
    NMHDR notification{picker, 0, code};
    SendMessageW(GetParent(picker), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
}

// The picker of the tests' platform ignores Enter; this closes the calendar as the real one does.
LRESULT CALLBACK CloseOnEnter(int code, WPARAM wParam, LPARAM lParam)
{
    const auto& message = *reinterpret_cast<const CWPSTRUCT*>(lParam);
    if (code == HC_ACTION && message.message == WM_KEYDOWN && message.wParam == VK_RETURN)
        Notify(message.hwnd, DTN_CLOSEUP);
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

TEST_F(DTPickTest, EnterTakesTheDayOfAnOpenCalendarFirst)
{
    const HHOOK hook =
        SetWindowsHookExW(WH_CALLWNDPROC, CloseOnEnter, nullptr, GetCurrentThreadId());
    Variant date = Variant::OfDate(kStart);
    EXPECT_TRUE(Pick(date, [](Desk& desk) {
        Notify(desk.Control(kTitle, kPicker), DTN_DROPDOWN);
        desk.Press(VK_TAB, {VK_SHIFT}); // the button, which hears Enter itself
        desk.Press(VK_RETURN);
        desk.Press(VK_TAB); // the dialog is still there
        desk.Press(VK_RIGHT);
        desk.Press(VK_UP);
        desk.Press(VK_RETURN);
    }));
    EXPECT_GT(std::abs(V_DATE(&date) - kStart), 0.5);
    UnhookWindowsHookEx(hook);

    // A press of the button with the mouse takes the date as it is.
    date = Variant::OfDate(kStart);
    EXPECT_TRUE(Pick(date, [](Desk& desk) {
        Notify(desk.Control(kTitle, kPicker), DTN_DROPDOWN);
        desk.Click(desk.Control(kTitle, L"Button"));
    }));
    EXPECT_NEAR(V_DATE(&date), kStart, 1e-9);
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

TEST_F(DTPickTest, CancelLeavesTheVariableAlone)
{
    const Robot::Script ways[] = {Keys(kTitle, kPicker, {VK_ESCAPE}),
                                  Keys(kTitle, L"Button", {VK_TAB, VK_TAB, VK_ESCAPE}),
                                  CloseBox(kTitle)};
    for (const Robot::Script& way : ways) {
        Variant text(std::wstring_view(L"next week"));
        EXPECT_FALSE(Pick(text, way));
        EXPECT_EQ(std::wstring(V_BSTR(&text)), L"next week");
    }
}

// What is no date, or none that the calendar knows, begins with now.
TEST_F(DTPickTest, BeginsWithNowWithoutADate)
{
    const auto accept = ClickButton(kTitle, nullptr);
    Variant given[] = {Variant(),
                       Variant(std::wstring_view(L"next week")),
                       Variant(5.0),
                       Variant::OfDate(-657435),
                       Variant::OfDate(std::nan("")),
                       Variant::OfDate(1e300)};
    for (Variant& date : given) {
        EXPECT_TRUE(Pick(date, accept));
        ASSERT_EQ(V_VT(&date), VT_DATE);
        EXPECT_NEAR(V_DATE(&date), Now(), 1.0 / 1440);
    }
    DATE typed = kStart;
    Robot robot(accept);
    EXPECT_TRUE(picker_.Call(L"Selection", Reference(VT_DATE, &typed)).Truth());
    EXPECT_NEAR(typed, kStart, 1e-9);
    robot.Finish();
    Robot other(accept);
    EXPECT_TRUE(picker_.Call(L"Selection", Arg(Variant::OfDate(kStart))).Truth()) << "by value";
}

TEST_F(DTPickTest, RefusesArraysAndASecondDialog)
{
    Variant array = ScriptArray(1, 2);
    SAFEARRAY* elements = V_ARRAY(&array);
    EXPECT_FALSE(picker_.Call(L"Selection", Reference(VT_ARRAY | VT_VARIANT, &elements)).Truth());

    bool nested = true;
    Variant other = Variant::OfDate(1);
    const DuringWait again([&] { nested = picker_.Call(L"Selection", &other).Truth(); });
    Variant date = Variant::OfDate(kStart);
    EXPECT_TRUE(Pick(date, [&](Desk& desk) {
        desk.Window(kTitle);
        desk.WaitFor(L"the second call", [&] { return !nested; });
        desk.Click(desk.Control(kTitle, L"Button"));
    }));
}

TEST_F(DTPickTest, ClosesUpWithoutAnInfoText)
{
    // Mode, text, height in twips.
    for (const auto& [mode, info, height] :
         {std::tuple{0, L"", 2570}, {2, L"", 2970}, {1, L"Wake me", 3410}, {2, L"x", 3810}}) {
        picker_.Put(L"ControlMode", mode);
        picker_.Put(L"Info", info);
        Variant date;
        Pick(date, [&](Desk& desk) {
            const HWND window = desk.Window(kTitle);
            desk.WaitFor(L"a height of " + std::to_wstring(height) + L" twips, in whole pixels",
                         [&] { return std::abs(Desk::SizeOf(window).cy * 15 - height) <= 7; });
            desk.Close(window);
        });
    }
}

} // namespace
} // namespace quill::test
