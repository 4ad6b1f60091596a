// What a script's table of CheckList cannot do: a mouse within a line, arrays of typed languages.
#include <gtest/gtest.h>

#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

constexpr wchar_t kTitle[] = L"What to pack";

// Twice in a row too.
TEST(CheckList, TheWholeLineCanBeClicked)
{
    ScriptObject list = ScriptObject::Make(L"CheckList");
    Robot robot([](Desk& desk) {
        const HWND view = desk.Control(kTitle, L"SysListView32");
        RECT line{LVIR_BOUNDS, 0, 0, 0};
        SendMessageW(view, LVM_GETITEMRECT, 2, reinterpret_cast<LPARAM>(&line));
        desk.ClickAt(view, {line.right - 20, line.top + 5}); // right of its text
        desk.ClickAt(view, {8, 5});                          // the box of the first
        desk.ClickAt(view, {60, line.top - 5}, Desk::Button::Left,
                     2); // the second: on, and off again
        desk.Click(desk.Control(kTitle, L"Button", L"OK"));
    });
    EXPECT_EQ(list.Call(L"Selection", L"map\r\ntent\r\nrope", 0, kTitle), 5);
}

TEST(CheckList, TakesTypedArrays)
{
    Array typed = MakeArray(VT_I4, 3);
    DataOf<LONG>(*typed)[1] = 7;
    Variant numbers(std::move(typed));
    ScriptObject list = ScriptObject::Make(L"CheckList");
    Robot robot(ClickButton(kTitle));
    EXPECT_EQ(list.Call(L"SelectionA", &numbers, &numbers, kTitle), 2);
}

} // namespace
} // namespace quill::test
