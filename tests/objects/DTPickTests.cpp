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

TEST_F(DTPickTest, TakesTypedVariables)
{
    DATE typed = kStart;
    {
        Robot robot(ClickButton(kTitle, nullptr));
        EXPECT_TRUE(picker_.Call(L"Selection", Reference(VT_DATE, &typed)).Truth());
        EXPECT_NEAR(typed, kStart, 1e-9);
    }
    Robot robot(ClickButton(kTitle, nullptr));
    EXPECT_TRUE(picker_.Call(L"Selection", Arg(Variant::OfDate(kStart))).Truth()) << "by value";
}

} // namespace
} // namespace quill::test
