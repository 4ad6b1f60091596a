#include <gtest/gtest.h>

#include <tuple>

#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

constexpr wchar_t kTitle[] = L"A list to choose from";
constexpr wchar_t kFruit[] = L"apple\r\npear\r\nplum\r\npeach";

std::wstring Choose(ScriptObject& list, const wchar_t* items, int index, Robot::Script answer)
{
    Robot robot(std::move(answer));
    return list.Call(L"Selection", items, index, kTitle).Text();
}

// In twips at the test display's 96 pixels per inch.
long Twips(long pixels)
{
    return pixels * 15;
}

HWND Box(Desk& desk)
{
    return desk.Control(kTitle, L"ListBox");
}

HWND Ok(Desk& desk)
{
    return desk.Control(kTitle, L"Button", L"OK");
}

const Robot::Script kAccept = ClickButton(kTitle);

TEST(List, ReturnsTheChosenLine)
{
    const struct {
        const char* what;
        const wchar_t* items;
        int index;
        Robot::Script answer;
        const wchar_t* chosen;
    } cases[] = {
        {"OK at once", kFruit, 1, kAccept, L"pear"},
        {"a line number beyond the last", kFruit, 4, kAccept, L""},
        {"a line number below 0", kFruit, INT_MIN, kAccept, L""},
        {"empty lines between", L"\r\na\r\n\r\nb\r\n", 1, kAccept, L"b"},
        {"a lone CR or LF is part of its line", L"a\rb\nc\r\nd", 0, kAccept, L"a\rb\nc"},
        {"arrow keys and Enter", kFruit, 0, Keys(kTitle, L"ListBox", {VK_DOWN, VK_DOWN, VK_RETURN}),
         L"plum"},
        {"Tab to the button and space", kFruit, 2, Keys(kTitle, L"ListBox", {VK_TAB, VK_SPACE}),
         L"plum"},
        {"a double click", kFruit, 0,
         [](Desk& desk) {
             desk.DoubleClickAt(Box(desk), {20, 20});
         },
         L"pear"},
        {"what is typed finds a line", kFruit, 0, TypeAndEnter(kTitle, L"ListBox", L"plu"),
         L"plum"},
        {"the same letter goes from line to line", kFruit, 0,
         TypeAndEnter(kTitle, L"ListBox", L"ppp"), L"peach"},
        {"the close box", kFruit, 1, CloseBox(kTitle), L""},
    };
    ScriptObject list = ScriptObject::Make(L"List");
    for (const auto& [what, items, index, answer, chosen] : cases) {
        SCOPED_TRACE(what);
        EXPECT_EQ(Choose(list, items, index, answer), chosen);
    }
    EXPECT_EQ(list.Call(L"Selection", L"").Text(), L"") << "nothing to choose from, no dialog";
}

TEST(List, ReturnsSeveralLinesInTheirOrder)
{
    const struct {
        const char* what;
        int index;
        Robot::Script answer;
        const wchar_t* chosen;
    } cases[] = {
        {"none", -1, kAccept, L""},
        {"Shift extends", 2,
         [](Desk& desk) {
             Box(desk);
             desk.Press(VK_UP, {VK_SHIFT});
             desk.Press(VK_RETURN);
         },
         L"pear\r\nplum\r\n"},
        {"typing goes to one line", 0, TypeAndEnter(kTitle, L"ListBox", L"plu"), L"plum\r\n"},
        {"a double click chooses no more than the line", 0,
         [](Desk& desk) {
             desk.DoubleClickAt(Box(desk), {20, 20});
             desk.Click(Ok(desk));
         },
         L"pear\r\n"},
    };
    ScriptObject list = ScriptObject::Make(L"List");
    list.Put(L"MultiSel", true);
    for (const auto& [what, index, answer, chosen] : cases) {
        SCOPED_TRACE(what);
        EXPECT_EQ(Choose(list, kFruit, index, answer), chosen);
    }
}

TEST(List, ReturnsLinesExactlyAsGiven)
{
    ScriptObject list = ScriptObject::Make(L"List");
    const std::wstring line(L"shown\0hidden", 12);
    Robot robot(ClickButton(L"QUILL List"));
    EXPECT_EQ(list.Call(L"Selection", line), line);
}

TEST(List, EscapeCancelsWhereItMay)
{
    ScriptObject list = ScriptObject::Make(L"List");
    const auto keys = Keys(kTitle, L"ListBox", {VK_ESCAPE, VK_DOWN, VK_RETURN});
    EXPECT_EQ(Choose(list, kFruit, 1, keys), L"plum") << "the dialog is still there";
    list.Put(L"DlgCancelEsc", true);
    EXPECT_EQ(Choose(list, kFruit, 1, Keys(kTitle, L"ListBox", {VK_ESCAPE})), L"");
}

TEST(List, TextsAreCutWhenTheyAreTooLong)
{
    const std::wstring longText(300, L'x');
    ScriptObject list = ScriptObject::Make(L"List");
    list.Put(L"Info", longText);
    EXPECT_EQ(list.Get(L"Info"), longText.substr(0, 256));
    list.Put(L"ButtonText", longText);
    EXPECT_EQ(list.Get(L"ButtonText"), longText);
    Robot robot([&](Desk& desk) {
        const HWND window = desk.Window(longText.substr(0, 256).c_str());
        EXPECT_EQ(Desk::TextOf(desk.Controls(window, L"Button").at(0)), longText.substr(0, 32));
        EXPECT_EQ(Desk::TextOf(desk.Controls(window, L"Static").at(0)), longText.substr(0, 256));
        desk.Close(window);
    });
    list.Call(L"Selection", L"a", 0, longText);
}

TEST(List, FontsFollowTheSettings)
{
    const std::tuple<bool, short, const wchar_t*, int> cases[] = {
        {true, 0, L"Segoe UI", 9},
        {true, 2, L"Segoe UI", 11},
        {false, 1, L"MS Shell Dlg 2", 10},
    };
    ScriptObject list = ScriptObject::Make(L"List");
    for (const auto& [modern, enlarge, name, points] : cases) {
        list.Put(L"FontModernize", modern);
        list.Put(L"FontEnlarge", enlarge);
        list.Put(L"FontEnlarge", 3); // ignored
        Choose(list, kFruit, 0, [&](Desk& desk) {
            const HWND window = desk.Window(kTitle);
            for (HWND control : desk.Controls(window)) {
                EXPECT_STREQ(Desk::FontOf(control).lfFaceName, name);
                EXPECT_EQ(Desk::FontOf(control).lfHeight, -MulDiv(points, 96, 72));
            }
            desk.Close(window);
        });
    }
}

TEST(List, ControlsFollowTheWindow)
{
    ScriptObject list = ScriptObject::Make(L"List");
    for (const wchar_t* info : {L"", L"Some fruit"}) {
        SCOPED_TRACE(Narrow(info));
        list.Put(L"Info", info);
        Choose(list, kFruit, 0, [&](Desk& desk) {
            const HWND window = desk.Window(kTitle);
            // The window manager has a say in sizes, and controls follow after their window.
            const auto waitForSize = [&](SIZE wanted) {
                desk.WaitFor(L"the size", [&] {
                    const SIZE now = Desk::SizeOf(window);
                    return now.cx == wanted.cx && now.cy == wanted.cy;
                });
                SendMessageW(window, WM_NULL, 0, 0);
            };
            const SIZE smallest{289, *info ? 328 : 271}; // 4335 by 4920 or 4065 twips
            waitForSize(smallest);
            EXPECT_EQ(desk.Controls(window, L"Static").size(), *info ? 1U : 0U);
            const RECT before = Desk::PlaceOf(window);
            const SIZE box = Desk::SizeOf(Box(desk));
            const SIZE ok = Desk::SizeOf(Ok(desk));
            const RECT button = Desk::PlaceOf(Ok(desk));
            const long left = button.left - before.left;
            desk.Place(window, {10, 10, 610, 710});
            waitForSize({600, 700});
            EXPECT_EQ(Desk::SizeOf(Box(desk)).cx, box.cx + 600 - smallest.cx);
            EXPECT_EQ(Desk::SizeOf(Box(desk)).cy, box.cy + 700 - smallest.cy);
            EXPECT_EQ(Desk::SizeOf(Ok(desk)).cx, ok.cx);
            EXPECT_EQ(Desk::PlaceOf(Ok(desk)).left - Desk::PlaceOf(window).left,
                      left + 600 - smallest.cx);
            desk.Place(window, {before.left, before.top, before.left + 100, before.top + 100});
            waitForSize(smallest);
            EXPECT_EQ(Desk::PlaceOf(Ok(desk)).left - Desk::PlaceOf(window).left, left);
            EXPECT_EQ(Desk::PlaceOf(Ok(desk)).top - Desk::PlaceOf(window).top,
                      button.top - before.top);
            desk.Close(window);
        });
    }
}

// Whatever the height of a line.
TEST(List, TheSelectedLineIsInView)
{
    std::wstring items;
    for (int line = 0; line < 100; ++line)
        items += L"line\r\n";
    ScriptObject list = ScriptObject::Make(L"List");
    list.Put(L"FontEnlarge", 2);
    for (const bool several : {false, true}) {
        list.Put(L"MultiSel", several);
        Choose(list, items.c_str(), 60, [](Desk& desk) {
            const HWND box = Box(desk);
            RECT line{}, inner{};
            SendMessageW(box, LB_GETITEMRECT, 60, reinterpret_cast<LPARAM>(&line));
            GetClientRect(box, &inner);
            EXPECT_GE(line.top, 0);
            EXPECT_LE(line.bottom, inner.bottom);
            desk.Close(desk.Window(kTitle));
        });
    }
}

// Long texts get the room that they need.
TEST(List, ALongInfoTextMovesTheListDown)
{
    ScriptObject list = ScriptObject::Make(L"List");
    std::wstring info;
    for (int word = 0; word < 40; ++word)
        info += L"words ";
    list.Put(L"Info", info);
    list.Put(L"FontEnlarge", 2);
    Choose(list, kFruit, 0, [&](Desk& desk) {
        const HWND window = desk.Window(kTitle);
        const HWND label = desk.Controls(window, L"Static").at(0);
        EXPECT_GT(Twips(Desk::SizeOf(label).cy), 840);
        EXPECT_GE(Desk::PlaceOf(Box(desk)).top, Desk::PlaceOf(label).bottom);
        desk.Close(window);
    });
}

// A change of resolution scales controls and fonts with the window.
TEST(List, FollowsTheResolutionOfItsMonitor)
{
    ScriptObject list = ScriptObject::Make(L"List");
    Choose(list, kFruit, 0, [&](Desk& desk) {
        const HWND window = desk.Window(kTitle);
        const SIZE before = Desk::SizeOf(Ok(desk));
        RECT suggested{10, 10, 10 + 434, 10 + 407};
        // The platform sends this with a rectangle in the window's own process.
        SendMessageW(window, WM_DPICHANGED, MAKEWPARAM(144, 144),
                     reinterpret_cast<LPARAM>(&suggested));
        EXPECT_EQ(2 * Desk::SizeOf(Ok(desk)).cx, 3 * before.cx);
        EXPECT_EQ(Desk::FontOf(Ok(desk)).lfHeight, -MulDiv(9, 144, 72));
        desk.Close(window);
    });
}

// Its clients died: the platform takes their references back while the dialog is open.
TEST(List, ADialogThatNobodyWaitsForCloses)
{
    ScriptObject list = ScriptObject::Make(L"List");
    LastClient client(list.Dispatch());
    EXPECT_EQ(Choose(list, kFruit, 1,
                     [&](Desk& desk) {
                         const HWND window = desk.Window(kTitle);
                         client.Die();
                         desk.WaitUntilGone(window);
                     }),
              L"");
}

TEST(List, AHundredThousandLines)
{
    std::wstring items;
    for (int line = 0; line < 100'000; ++line)
        items += L"line " + std::to_wstring(line) + L"\r\n";
    ScriptObject list = ScriptObject::Make(L"List");
    EXPECT_EQ(Choose(list, items.c_str(), 99'999, kAccept), L"line 99999");
}

} // namespace
} // namespace quill::test
