#include <gtest/gtest.h>

#include "support/Robot.h"
#include "support/ScriptObject.h"
#include "support/Values.h"

namespace quill::test {
namespace {

constexpr wchar_t kTitle[] = L"What to pack";
constexpr wchar_t kThings[] = L"map\r\ntent\r\nrope";

const Robot::Script kAccept = ClickButton(kTitle);

TEST(CheckList, ReturnsTheBitsOfTheCheckedLines)
{
    struct Case {
        const char* what;
        const wchar_t* items;
        int index;
        Robot::Script answer;
        long checked;
    };
    std::wstring thirty, thirtyOne;
    for (int line = 0; line < 31; ++line) {
        if (line < 30) thirty += (line ? L"\r\nx" : L"x");
        thirtyOne += (line ? L"\r\nx" : L"x");
    }
    const Case cases[] = {
        {"as they were", kThings, 5, kAccept, 5},
        {"bits of lines that there are not", kThings, -1, kAccept, 7},
        {"the last of thirty", thirty.c_str(), 1 << 29, kAccept, 536870912},
        {"an empty line shifts lines against positions", L"\r\nmap\r\ntent", 6, kAccept, 2},
        {"no lines", L"\r\n", 1, kAccept, 0},
        {"the whole line can be clicked, twice in a row too", kThings, 0,
         [](Desk& desk) {
             const HWND list = desk.Control(kTitle, L"SysListView32");
             RECT line{LVIR_BOUNDS, 0, 0, 0};
             SendMessageW(list, LVM_GETITEMRECT, 2, reinterpret_cast<LPARAM>(&line));
             desk.ClickAt(list, {line.right - 20, line.top + 5}); // right of its text
             desk.ClickAt(list, {8, 5});                          // the box of the first
             desk.DoubleClickAt(list, {60, line.top - 5});        // the second: on, and off again
             kAccept(desk);
         },
         5},
        {"the close box", kThings, 7, CloseBox(kTitle), 0},
    };
    ScriptObject list = ScriptObject::Make(L"CheckList");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Robot robot(c.answer);
        EXPECT_EQ(list.Call(L"Selection", c.items, c.index, kTitle).Number(), c.checked);
    }
    EXPECT_EQ(list.Call(L"Selection", thirtyOne), 0) << "too many";
    EXPECT_EQ(list.Call(L"Selection", L"", 1), 0) << "no text at all";
}

TEST(CheckList, TakesArraysOfLinesAndStates)
{
    Array typed = MakeArray(VT_I4, 3);
    DataOf<LONG>(*typed)[1] = 7;
    Variant numbers(std::move(typed));
    Variant empty;
    Variant lines = ScriptArray(L"map", 2.5, L"rope");
    ScriptObject list = ScriptObject::Make(L"CheckList");
    struct Case {
        const char* what;
        Variant items, states;
        long checked;
    };
    Case cases[] = {
        {"numbers, truth and text", ScriptArray(L"map", L"tent", L"rope"),
         ScriptArray(0, true, L"-1"), 6},
        {"fewer states than lines", ScriptArray(L"map", L"tent"), ScriptArray(true), 1},
        {"what is no number", ScriptArray(L"map", L"tent", L"rope"),
         ScriptArray(L"yes", OfType(VT_NULL), list.Dispatch()), 0},
        {"what is no text is left out",
         ScriptArray(L"map", empty, OfType(VT_NULL), list.Dispatch()),
         ScriptArray(true, true, true, true), 1},
        {"typed arrays", Variant::Dereferenced(numbers), Variant::Dereferenced(numbers), 2},
    };
    for (Case& c : cases) {
        SCOPED_TRACE(c.what);
        Robot robot(kAccept);
        EXPECT_EQ(list.Call(L"SelectionA", &c.items, &c.states, kTitle), c.checked);
    }
    {
        Robot robot(kAccept);
        EXPECT_EQ(list.Call(L"SelectionA", &lines, Missing(), kTitle), 0) << "no states";
    }
    Variant none = ScriptArray();
    Variant late = StartingAt(1, ScriptArray(L"map"));
    Variant long_ = MakeStringArray(std::vector<std::wstring>(31, L"x"), false);
    Variant table = Square();
    Variant text(std::wstring_view(L"map"));
    for (Variant* refused : {&none, &late, &long_, &table, &text, &empty})
        EXPECT_EQ(list.Call(L"SelectionA", refused), 0) << "no dialog";
    EXPECT_EQ(list.Call(L"SelectionA", &lines, &late), 0) << "no dialog";
}

} // namespace
} // namespace quill::test
