// Quill.Window and Quill.Window2.
#include <gtest/gtest.h>

#include "gui/OutputControls.h"
#include "gui/windowfn.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

HWND Control(ScriptObject& window)
{
    return GetWindow(static_cast<HWND>(LongToHandle(window.Get(L"handle").Number())), GW_CHILD);
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
