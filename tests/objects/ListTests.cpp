#include <gtest/gtest.h>

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

RECT PlaceOf(HWND window)
{
    RECT place{};
    GetWindowRect(window, &place);
    return place;
}

HWND Box(Desk& desk)
{
    return desk.Control(kTitle, L"ListBox");
}

HWND Ok(Desk& desk, const wchar_t* text = L"OK")
{
    return desk.Control(kTitle, L"Button", text);
}

TEST(List, ReturnsTheChosenLine)
{
    struct Case {
        const char* what;
        const wchar_t* items;
        int index;
        Robot::Script answer;
        const wchar_t* chosen;
    };
    const Case cases[] = {
        {"OK at once", kFruit, 1, [](Desk& desk) { desk.Click(Ok(desk)); }, L"pear"},
        {"a line number beyond the last", kFruit, 4, [](Desk& desk) { desk.Click(Ok(desk)); }, L""},
        {"a line number below 0", kFruit, -2147483647 - 1, [](Desk& desk) { desk.Click(Ok(desk)); },
         L""},
        {"one line", L"only", 0, [](Desk& desk) { desk.Click(Ok(desk)); }, L"only"},
        {"empty lines between", L"\r\na\r\n\r\nb\r\n", 1, [](Desk& desk) { desk.Click(Ok(desk)); },
         L"b"},
        {"a lone CR or LF is part of its line", L"a\rb\nc\r\nd", 0,
         [](Desk& desk) { desk.Click(Ok(desk)); }, L"a\rb\nc"},
        {"arrow keys and Enter", kFruit, 0,
         [](Desk& desk) {
             Box(desk);
             desk.Press(VK_DOWN);
             desk.Press(VK_DOWN);
             desk.Press(VK_RETURN);
         },
         L"plum"},
        {"Tab to the button and space", kFruit, 2,
         [](Desk& desk) {
             Box(desk);
             desk.Press(VK_TAB);
             desk.Press(VK_SPACE);
         },
         L"plum"},
        {"a double click", kFruit, 0,
         [](Desk& desk) {
             desk.DoubleClickAt(Box(desk), {20, 20});
         },
         L"pear"},
        {"what is typed finds a line", kFruit, 0,
         [](Desk& desk) {
             Box(desk);
             desk.Type(L"plu");
             desk.Press(VK_RETURN);
         },
         L"plum"},
        {"the same letter goes from line to line", kFruit, 0,
         [](Desk& desk) {
             Box(desk);
             desk.Type(L"ppp");
             desk.Press(VK_RETURN);
         },
         L"peach"},
        {"the close box", kFruit, 1, [](Desk& desk) { desk.Close(desk.Window(kTitle)); }, L""},
    };
    ScriptObject list = ScriptObject::Make(L"List");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(Choose(list, c.items, c.index, c.answer), c.chosen);
    }
    EXPECT_EQ(list.Call(L"Selection", L"").Text(), L"") << "nothing to choose from, no dialog";
}

TEST(List, ReturnsSeveralLinesInTheirOrder)
{
    struct Case {
        const char* what;
        int index;
        Robot::Script answer;
        const wchar_t* chosen;
    };
    const Case cases[] = {
        {"OK at once", 1, [](Desk& desk) { desk.Click(Ok(desk)); }, L"pear\r\n"},
        {"none", -1, [](Desk& desk) { desk.Click(Ok(desk)); }, L""},
        {"Shift extends", 2,
         [](Desk& desk) {
             Box(desk);
             desk.Press(VK_UP, {VK_SHIFT});
             desk.Press(VK_RETURN);
         },
         L"pear\r\nplum\r\n"},
        {"typing goes to one line", 0,
         [](Desk& desk) {
             Box(desk);
             desk.Type(L"plu");
             desk.Press(VK_RETURN);
         },
         L"plum\r\n"},
        {"a double click chooses no more than the line", 0,
         [](Desk& desk) {
             desk.DoubleClickAt(Box(desk), {20, 20});
             desk.Click(Ok(desk));
         },
         L"pear\r\n"},
    };
    ScriptObject list = ScriptObject::Make(L"List");
    list.Put(L"MultiSel", true);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(Choose(list, kFruit, c.index, c.answer), c.chosen);
    }
}

TEST(List, ReturnsLinesExactlyAsGiven)
{
    ScriptObject list = ScriptObject::Make(L"List");
    const std::wstring line(L"shown\0hidden", 12);
    Robot robot([](Desk& desk) { desk.Click(desk.Control(L"QUILL List", L"Button", L"OK")); });
    EXPECT_EQ(list.Call(L"Selection", line), line);
}

TEST(List, EscapeCancelsWhereItMay)
{
    ScriptObject list = ScriptObject::Make(L"List");
    EXPECT_EQ(Choose(list, kFruit, 1,
                     [](Desk& desk) {
                         Box(desk);
                         desk.Press(VK_ESCAPE);
                         desk.Press(VK_DOWN); // the dialog is still there
                         desk.Press(VK_RETURN);
                     }),
              L"plum");
    list.Put(L"DlgCancelEsc", true);
    EXPECT_EQ(Choose(list, kFruit, 1,
                     [](Desk& desk) {
                         const HWND box = Box(desk);
                         desk.Press(VK_ESCAPE);
                         desk.WaitUntilGone(box);
                     }),
              L"");
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
    struct Case {
        bool modern;
        short enlarge;
        const wchar_t* name;
        int points;
    };
    const Case cases[] = {{true, 0, L"Segoe UI", 9},
                          {true, 2, L"Segoe UI", 11},
                          {false, 0, L"MS Shell Dlg 2", 9},
                          {false, 1, L"MS Shell Dlg 2", 10}};
    ScriptObject list = ScriptObject::Make(L"List");
    for (const Case& c : cases) {
        list.Put(L"FontModernize", c.modern);
        list.Put(L"FontEnlarge", c.enlarge);
        for (int ignored : {3, -1, 32767})
            list.Put(L"FontEnlarge", ignored);
        EXPECT_EQ(list.Get(L"FontEnlarge"), c.enlarge);
        Choose(list, kFruit, 0, [&](Desk& desk) {
            const HWND window = desk.Window(kTitle);
            for (HWND control : desk.Controls(window)) {
                LOGFONTW font{};
                const auto handle =
                    reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0));
                GetObjectW(handle, sizeof font, &font);
                EXPECT_STREQ(font.lfFaceName, c.name);
                EXPECT_EQ(font.lfHeight, -MulDiv(c.points, 96, 72));
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
        const long minimum = *info ? 4920 : 4065;
        list.Put(L"Info", info);
        Choose(list, kFruit, 0, [&](Desk& desk) {
            const HWND window = desk.Window(kTitle);
            EXPECT_EQ(desk.Controls(window, L"Static").size(), *info ? 1U : 0U);
            const RECT before = PlaceOf(window);
            EXPECT_EQ(Twips(before.right - before.left), 4335);
            EXPECT_EQ(Twips(before.bottom - before.top), minimum);

            const RECT box = PlaceOf(Box(desk));
            const RECT ok = PlaceOf(Ok(desk));
            desk.Place(window, {10, 10, 610, 710});
            const RECT widerBox = PlaceOf(Box(desk));
            const RECT movedOk = PlaceOf(Ok(desk));
            const long wider = 600 - (before.right - before.left);
            const long higher = 700 - (before.bottom - before.top);
            EXPECT_EQ(widerBox.right - widerBox.left, box.right - box.left + wider);
            EXPECT_EQ(widerBox.bottom - widerBox.top, box.bottom - box.top + higher);
            EXPECT_EQ(movedOk.right - movedOk.left, ok.right - ok.left);
            EXPECT_EQ(movedOk.left - 10, ok.left - before.left + wider);

            desk.Place(window, {10, 10, 110, 110}); // springs back
            const RECT after = PlaceOf(window);
            EXPECT_EQ(Twips(after.right - after.left), 4335);
            EXPECT_EQ(Twips(after.bottom - after.top), minimum);
            desk.Close(window);
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
        const RECT label = PlaceOf(desk.Controls(window, L"Static").at(0));
        EXPECT_GT(Twips(label.bottom - label.top), 840);
        EXPECT_GE(PlaceOf(Box(desk)).top, label.bottom);
        desk.Close(window);
    });
}

// A change of resolution scales controls and fonts with the window.
TEST(List, FollowsTheResolutionOfItsMonitor)
{
    ScriptObject list = ScriptObject::Make(L"List");
    Choose(list, kFruit, 0, [&](Desk& desk) {
        const HWND window = desk.Window(kTitle);
        const RECT before = PlaceOf(Ok(desk));
        RECT suggested{10, 10, 10 + 434, 10 + 407};
        // The platform sends this with a rectangle in the window's own process.
        SendMessageW(window, WM_DPICHANGED, MAKEWPARAM(144, 144),
                     reinterpret_cast<LPARAM>(&suggested));
        const RECT after = PlaceOf(Ok(desk));
        EXPECT_EQ(2 * (after.right - after.left), 3 * (before.right - before.left));
        LOGFONTW font{};
        GetObjectW(reinterpret_cast<HFONT>(SendMessageW(Ok(desk), WM_GETFONT, 0, 0)), sizeof font,
                   &font);
        EXPECT_EQ(font.lfHeight, -MulDiv(9, 144, 72));
        desk.Close(window);
    });
}

// Its clients died: the platform takes their references back while the dialog is open.
TEST(List, ADialogThatNobodyWaitsForCloses)
{
    ScriptObject list = ScriptObject::Make(L"List");
    ComPtr<IExternalConnection> connection;
    ASSERT_HRESULT_SUCCEEDED(list.Dispatch()->QueryInterface(IID_PPV_ARGS(&connection)));
    connection->AddConnection(EXTCONN_STRONG, 0);
    EXPECT_EQ(Choose(list, kFruit, 1,
                     [&](Desk& desk) {
                         const HWND window = desk.Window(kTitle);
                         connection->ReleaseConnection(EXTCONN_STRONG, 0, TRUE);
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
    EXPECT_EQ(Choose(list, items.c_str(), 99'999, [](Desk& desk) { desk.Click(Ok(desk)); }),
              L"line 99999");
}

} // namespace
} // namespace quill::test
