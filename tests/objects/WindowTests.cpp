// What scripts cannot reach of windows.
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

private:
    Button OKButton{*this,
                    {100, 100, 1000, 380},
                    L"OK",
                    [] { RaiseRuntimeError(RuntimeError::Overflow); },
                    Button::Kind::Default};
};

bool IsAbove(HWND window, HWND other)
{
    while (window && window != other)
        window = GetWindow(window, GW_HWNDNEXT);
    return window != nullptr;
}

TEST(ForegroundTest, ARefusedForegroundRaises)
{
    const Stage stage;
    Stage::Record(L"foreground");
    Stage::Answer(L"foreground", L"0");
    BareForm form;
    BareForm other;
    form.Show(true);
    other.ShowModeless(false);
    ASSERT_TRUE(IsAbove(other.Window(), form.Window()));
    BringToFront(form.Window(), true);
    EXPECT_TRUE(IsAbove(form.Window(), other.Window()));
    const auto isTopmost = [&] {
        return (GetWindowLongW(form.Window(), GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
    };
    EXPECT_FALSE(isTopmost());
    EXPECT_EQ(GetActiveWindow(), other.Window());
    SetTopmost(form.Window(), true); // a message box may be so by its style
    BringToFront(form.Window(), false);
    EXPECT_TRUE(isTopmost());
}

// What a handler throws reaches the one who waits. A thread that is to end ends its waits, and the
// message is still there for the loop outside.
TEST(FormTest, WaitsEndEarly)
{
    BareForm form;
    Robot robot([](Desk& desk) { desk.Act(L"\"A bare form\" Button:OK click"); });
    form.Show(false);
    EXPECT_THROW(form.WaitUntilClosed([] { return false; }), AutomationError);
    EXPECT_TRUE(form.Closed());
    BareForm other;
    other.Show(false);
    PostQuitMessage(7);
    other.WaitUntilClosed([] { return false; });
    EXPECT_TRUE(other.Closed());
    MSG message{};
    EXPECT_EQ(GetMessageW(&message, nullptr, 0, 0), 0);
    EXPECT_EQ(message.wParam, 7U);
}

} // namespace
} // namespace quill::test
