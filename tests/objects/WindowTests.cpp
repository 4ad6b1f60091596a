#include <gtest/gtest.h>

#include "core/Apartment.h"
#include "core/AutomationError.h"
#include "gui/Controls.h"
#include "gui/DialogWatch.h"
#include "gui/guifn.h"
#include "gui/windowfn.h"
#include "support/Robot.h"

namespace quill::test {
namespace {

class BareForm : public Form {
public:
    BareForm() : Form(L"A bare form", {3000, 1500}, kDialogStyle) {}
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

// Stands for what the platform answers; Wine always grants the foreground.
class ForegroundTest : public testing::Test {
protected:
    ForegroundTest()
    {
        flashes_.clear();
        Seam<Foreground>().flash = [](FLASHWINFO* info) {
            flashes_.push_back(*info);
            return TRUE;
        };
        Seam<Foreground>().get = [] { return GetDesktopWindow(); };
    }
    ~ForegroundTest() override { Seam<Foreground>() = Foreground(); }

    static inline std::vector<FLASHWINFO> flashes_;
    BareForm form_;
};

TEST_F(ForegroundTest, AGrantedForegroundPlacesTheWindow)
{
    Seam<Foreground>().set = [](HWND) { return TRUE; };
    form_.Show(true);
    EXPECT_TRUE(IsTopmost(form_.Window()));
    EXPECT_TRUE(flashes_.empty());
}

TEST_F(ForegroundTest, ARefusedForegroundRaisesAndFlashes)
{
    Seam<Foreground>().set = [](HWND) { return FALSE; };
    form_.Show(true);
    EXPECT_FALSE(IsTopmost(form_.Window()));
    ASSERT_EQ(flashes_.size(), 1U);
    EXPECT_EQ(flashes_[0].hwnd, form_.Window());
    EXPECT_EQ(flashes_[0].dwFlags, DWORD{FLASHW_ALL | FLASHW_TIMERNOFG});

    BareForm other;
    other.ShowModeless(false);
    ASSERT_TRUE(IsAbove(other.Window(), form_.Window()));
    BringToFront(form_.Window(), true);
    EXPECT_TRUE(IsAbove(form_.Window(), other.Window()));
    EXPECT_FALSE(IsTopmost(form_.Window()));
    EXPECT_EQ(GetActiveWindow(), other.Window());
    SetTopmost(form_.Window(), true); // a message box may be so by its style
    BringToFront(form_.Window(), false);
    EXPECT_TRUE(IsTopmost(form_.Window()));
}

TEST_F(ForegroundTest, IsHandedOnAfterADialog)
{
    std::vector<DWORD> allowed;
    Seam<Foreground>().allow = [&](DWORD process) {
        allowed.push_back(process);
        return TRUE;
    };
    const HWND window = form_.Window();
    BareForm behind;
    Seam<Foreground>().get = [window] { return window; };
    behind.Unload();
    EXPECT_TRUE(allowed.empty()) << "not its to give";
    form_.Unload();
    EXPECT_EQ(allowed, std::vector{ASFW_ANY});
    { // the platform's own dialogs
        const DialogWatch dialog(0, [] { return false; });
        EXPECT_EQ(allowed.size(), 1U);
    }
    EXPECT_EQ(allowed, std::vector(2, ASFW_ANY));
    Seam<Foreground>() = Foreground();
}

TEST_F(ForegroundTest, AWindowInFrontIsLeftAsItIs)
{
    const HWND front = form_.Window();
    Seam<Foreground>().get = [front] { return front; };
    BringToFront(front, true);
    EXPECT_FALSE(IsTopmost(front));
    EXPECT_FALSE(IsWindowVisible(front));
}

TEST_F(ForegroundTest, FlashesByCount)
{
    for (const auto& [count, flags, times] :
         {std::tuple{10L, 15UL, 0U}, {9L, 3UL, 9U}, {0L, 0UL, 0U}, {-5L, 0UL, 0U}}) {
        FlashCaption(form_.Window(), count);
        EXPECT_EQ(flashes_.back().dwFlags, flags) << count;
        EXPECT_EQ(flashes_.back().uCount, times) << count;
        EXPECT_EQ(flashes_.back().dwTimeout, 0U);
    }
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
