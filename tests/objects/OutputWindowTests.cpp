// Quill.Window and Quill.Window2.
#include <gtest/gtest.h>

#include "gui/OutputControls.h"
#include "gui/windowfn.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

struct Kind {
    const wchar_t* name;
    const wchar_t* control;
};
const Kind kKinds[] = {{L"Window", L"Static"}, {L"Window2", L"Edit"}};

HWND Handle(ScriptObject& window)
{
    return static_cast<HWND>(LongToHandle(window.Get(L"handle").Number()));
}

HWND Control(ScriptObject& window)
{
    return GetWindow(Handle(window), GW_CHILD);
}

// The lowest row of the control with something drawn in it; -1 when it is empty.
int LowestInk(HWND control)
{
    RECT area{};
    GetClientRect(control, &area);
    const HDC screen = GetDC(nullptr);
    const HDC device = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, area.right, area.bottom);
    const HGDIOBJ old = SelectObject(device, bitmap);
    SendMessageW(control, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(device), PRF_CLIENT);
    int row = area.bottom - 1;
    const auto empty = [&] {
        for (int x = 0; x < area.right; ++x)
            if (GetPixel(device, x, row) != GetPixel(device, area.right - 1, row)) return false;
        return true;
    };
    while (row >= 0 && empty())
        --row;
    SelectObject(device, old);
    DeleteObject(bitmap);
    DeleteDC(device);
    ReleaseDC(nullptr, screen);
    return row;
}

TEST(OutputWindow, ComesAndGoes)
{
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(Narrow(kind.name));
        ScriptObject window = ScriptObject::Make(kind.name);
        for (const wchar_t* method : {L"Remove", L"Cls", L"Flash"})
            window.Call(method);
        window.Call(L"Create", std::wstring(300, L't'));
        const HWND first = Handle(window);
        EXPECT_TRUE(IsWindowVisible(first));
        EXPECT_TRUE(GetWindowLongW(first, GWL_EXSTYLE) & WS_EX_TOPMOST);
        EXPECT_EQ(WindowText(first), std::wstring(256, L't'));
        window.Call(L"Create", L"again");
        EXPECT_EQ(Handle(window), first) << "it is there already";

        const HWND control = Control(window);
        EXPECT_EQ(Desk::ClassOf(control), kind.control);
        window.Call(L"WriteLine", std::wstring(L"a\0b", 3));
        window.Call(L"WriteLine", std::wstring(5000, L'x'));
        EXPECT_EQ(WindowText(control), L"a b\r\n" + std::wstring(4096, L'x') + L"\r\n");

        SendMessageW(first, WM_CLOSE, 0, 0); // by its close box
        EXPECT_FALSE(IsWindow(first));
        EXPECT_EQ(window.Get(L"handle"), 0);
        window.Call(L"WriteLine", L"nowhere");
        window.Put(L"WriteSize", 12);
        window.Call(L"Create");
        EXPECT_EQ(WindowText(Control(window)), L"") << "a new window is empty";
        EXPECT_EQ(WindowText(Handle(window)), std::wstring(256, L't'));
        const HWND second = Handle(window);
        window.Release();
        EXPECT_FALSE(IsWindow(second));
    }
}

TEST(OutputWindow, FontsApplyAtOnceAndToTheNextWindow)
{
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(Narrow(kind.name));
        ScriptObject window = ScriptObject::Make(kind.name);
        window.Put(L"WriteSize", -32768);
        EXPECT_EQ(window.Get(L"WriteSize"), 6);
        window.Put(L"WriteBold", true);
        window.Put(L"WriteFont", L"Tahoma");
        for (int round = 0; round < 2; ++round) {
            window.Call(L"Create");
            const LOGFONTW font = Desk::FontOf(Control(window));
            EXPECT_STREQ(font.lfFaceName, L"Tahoma");
            EXPECT_EQ(font.lfHeight, -8);
            EXPECT_EQ(font.lfWeight, FW_BOLD);
            window.Call(L"Remove");
        }
        window.Call(L"Create");
        for (int number = 0; number < 20; ++number) // more than are kept
            window.Put(L"WriteFont", L"Font " + std::to_wstring(number));
        window.Put(L"WriteFont", L"");
        window.Put(L"WriteBold", false);
        window.Put(L"WriteSize", 12);
        window.Put(L"WriteFont", std::wstring(100'000, L'f')); // no font can be called that
        EXPECT_STREQ(Desk::FontOf(Control(window)).lfFaceName, L"MS Shell Dlg 2");
        EXPECT_EQ(Desk::FontOf(Control(window)).lfHeight, -16);
        EXPECT_EQ(Desk::FontOf(Control(window)).lfWeight, FW_NORMAL);
    }
}

TEST(OutputWindow, TheTextFillsTheWindow)
{
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(Narrow(kind.name));
        ScriptObject window = ScriptObject::Make(kind.name);
        window.Call(L"Create");
        ResizeWindow(Handle(window), 500, 400);
        RECT inner{};
        RECT text{};
        GetClientRect(Handle(window), &inner);
        GetWindowRect(Control(window), &text);
        EXPECT_NEAR(text.right - text.left, inner.right - 280 / 15, 1);
        EXPECT_NEAR(text.bottom - text.top, inner.bottom - 280 / 15, 1);
        ResizeWindow(Handle(window), 1, 1);
        window.Call(L"WriteLine", L"no room");
        EXPECT_EQ(WindowText(Control(window)), L"no room\r\n");
    }
}

TEST(OutputWindow, TheLabelShowsItsEnd)
{
    ScriptObject window = ScriptObject::Make(L"Window");
    window.Call(L"Create");
    RECT area{};
    GetClientRect(Control(window), &area);
    EXPECT_EQ(LowestInk(Control(window)), -1);
    window.Call(L"WriteLine", L"first");
    const int lineHeight = LowestInk(Control(window)) + 1;
    EXPECT_GT(lineHeight, 0);
    EXPECT_LT(lineHeight, 30) << "a short text stands at the top";
    for (int line = 0; line < 100; ++line)
        window.Call(L"WriteLine", L"");
    EXPECT_EQ(LowestInk(Control(window)), -1) << "the first line has gone up";
    window.Call(L"WriteLine", std::wstring(200, L'W')); // takes several lines
    EXPECT_GT(LowestInk(Control(window)), area.bottom - lineHeight);
}

TEST(OutputWindow, TheBoxKeepsWhatTheUserReads)
{
    ScriptObject window = ScriptObject::Make(L"Window2");
    window.Call(L"Create", L"Reading back");
    const auto write = [&](int count) {
        for (int line = 0; line < count; ++line)
            window.Call(L"WriteLine", L"Line " + std::to_wstring(line));
    };
    write(300);
    const HWND box = Control(window);
    const auto top = [box] { return SendMessageW(box, EM_GETFIRSTVISIBLELINE, 0, 0); };
    EXPECT_EQ(top(), 0);
    SendMessageW(box, EM_SETSEL, 1000, 1234); // scrolls there under Wine
    SendMessageW(box, EM_LINESCROLL, 0, 120 - top());
    write(300);
    DWORD first = 0;
    DWORD last = 0;
    SendMessageW(box, EM_GETSEL, reinterpret_cast<WPARAM>(&first), reinterpret_cast<LPARAM>(&last));
    EXPECT_EQ(top(), 120);
    EXPECT_EQ(first, 1000U);
    EXPECT_EQ(last, 1234U);

    window.Put(L"Scroll", true);
    EXPECT_EQ(top(), 120) << "not before the next line";
    write(1);
    EXPECT_GT(top(), 500);
    window.Put(L"Scroll", false);
    const LRESULT end = top();
    write(50);
    EXPECT_EQ(top(), end);

    write(10'000);
    EXPECT_GT(WindowText(box).size(), 65'536U);
}

// What a script writes for hours goes from the front, by whole lines.
TEST(OutputWindow, TheOldestTextGoes)
{
    const std::wstring line(4000, L'l');
    ScriptObject window = ScriptObject::Make(L"Window");
    window.Call(L"Create");
    for (size_t count = 0; count <= kMostOutput / line.size(); ++count)
        window.Call(L"WriteLine", line);
    window.Call(L"WriteLine", L"last");
    const std::wstring text = WindowText(Control(window));
    EXPECT_LT(text.size(), kMostOutput);
    EXPECT_GE(text.size(), kOutputToKeep - line.size());
    EXPECT_TRUE(text.ends_with(L"l\r\nlast\r\n"));
    EXPECT_EQ(text.find(L"\r\n"), line.size());
}

} // namespace
} // namespace quill::test
