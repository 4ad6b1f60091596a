#include <gtest/gtest.h>

#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

constexpr wchar_t kTitle[] = L"A list to choose from";
constexpr wchar_t kFruit[] = L"apple\r\npear\r\nplum\r\npeach";

void Choose(ScriptObject& list, const wchar_t* items, int index, Robot::Script answer)
{
    Robot robot(std::move(answer));
    list.Call(L"Selection", items, index, kTitle);
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

} // namespace
} // namespace quill::test
