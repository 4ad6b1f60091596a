#include <gtest/gtest.h>

#include "core/AutomationError.h"
#include "gui/Controls.h"
#include "gui/windowfn.h"
#include "support/Robot.h"
#include "support/Stage.h"

namespace quill::test {
namespace {

class BareForm : public Form {
public:
    // Inlined, it makes this compiler see a dangling pointer.
    [[gnu::noinline]] BareForm() : Form(L"A bare form", {3000, 1500}, kDialogStyle) {}
    Button OKButton{
        *this, {100, 100, 1000, 380}, L"OK", [this] { onClick(); }, Button::Kind::Default};
    std::function<void()> onClick = [this] { Unload(); };
};

bool IsTopmost(HWND window)
{
    return GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_TOPMOST;
}

bool IsAbove(HWND window, HWND other)
{
    while (window && window != other)
        window = GetWindow(window, GW_HWNDNEXT);
    return window != nullptr;
}

// What a table cannot see: the order of windows where the platform refuses the foreground.
TEST(ForegroundTest, ARefusedForegroundRaises)
{
    Stage stage;
    Stage::Record(L"foreground");
    Stage::Answer(L"foreground", L"0");
    BareForm form;
    BareForm other;
    form.Show(true);
    other.ShowModeless(false);
    ASSERT_TRUE(IsAbove(other.Window(), form.Window()));
    BringToFront(form.Window(), true);
    EXPECT_TRUE(IsAbove(form.Window(), other.Window()));
    EXPECT_FALSE(IsTopmost(form.Window()));
    EXPECT_EQ(GetActiveWindow(), other.Window());
    SetTopmost(form.Window(), true); // a message box may be so by its style
    BringToFront(form.Window(), false);
    EXPECT_TRUE(IsTopmost(form.Window()));
}

TEST(Windowfn, ChangesStylesAndSizes)
{
    BareForm form;
    const HWND window = form.Window();
    SetTopmost(window, true);
    EXPECT_TRUE(IsTopmost(window));
    SetTopmost(window, false);
    EXPECT_FALSE(IsTopmost(window));
    AddWindowStyle(window, WS_VSCROLL, false, true);
    EXPECT_TRUE(GetWindowLongW(window, GWL_STYLE) & WS_VSCROLL);
    SetWindowStyle(window, WS_POPUP);
    EXPECT_EQ(GetWindowLongW(window, GWL_STYLE) & (WS_CAPTION | WS_VSCROLL), 0);
    ResizeWindow(window, 321, 123);
    EXPECT_EQ(Desk::SizeOf(window).cx, 321);
    EXPECT_EQ(Desk::SizeOf(window).cy, 123);
}

TEST(Form, WhatAHandlerThrowsReachesTheOneWhoWaits)
{
    BareForm form;
    form.onClick = [] { RaiseRuntimeError(RuntimeError::Overflow); };
    Robot robot([](Desk& desk) { desk.Click(desk.Control(L"A bare form", L"Button")); });
    form.Show(false);
    EXPECT_THROW(form.WaitUntilClosed([] { return false; }), AutomationError);
    EXPECT_TRUE(form.Closed());
}

// A thread that is to end ends its waits, and the message is still there for the loop outside.
TEST(Form, TheEndOfTheThreadClosesIt)
{
    BareForm form;
    form.Show(false);
    PostQuitMessage(7);
    form.WaitUntilClosed([] { return false; });
    EXPECT_TRUE(form.Closed());
    MSG message{};
    EXPECT_EQ(GetMessageW(&message, nullptr, 0, 0), 0);
    EXPECT_EQ(message.wParam, 7U);
}

} // namespace
} // namespace quill::test
