// What a script's table of ProgressWindow cannot do: monitors and failures.
#include <gtest/gtest.h>

#include "support/Robot.h"
#include "support/ScriptObject.h"
#include "windows/ProgressWindow.h"

namespace quill::test {
namespace {

constexpr wchar_t kTitle[] = L"QUILL ProgressWindow";

// Resolutions in pixels an inch; the window is made as on a monitor of the first one.
TEST(ProgressWindow, FollowsTheResolutionOfItsMonitor)
{
    struct : frmProWin::Owner {
        void OnPressed(bool) noexcept override {}
        void OnTaskbarButton() noexcept override {}
    } owner;
    const auto form = std::make_shared<frmProWin>(owner);
    const auto moveToMonitor = [&](int resolution) {
        RECT suggested{0, 0, 500 * resolution / 96, 263 * resolution / 96};
        SendMessageW(form->Window(), WM_DPICHANGED, MAKEWPARAM(resolution, resolution),
                     reinterpret_cast<LPARAM>(&suggested));
    };
    const auto expectScaled = [&](int times) {
        RECT bar = Desk::PlaceOf(form->Bar());
        RECT button = Desk::PlaceOf(form->PwButton.Window());
        MapWindowPoints(nullptr, form->Window(), reinterpret_cast<POINT*>(&bar), 2);
        MapWindowPoints(nullptr, form->Window(), reinterpret_cast<POINT*>(&button), 2);
        EXPECT_EQ(Desk::SizeOf(form->Window()).cx, 500 * times);
        EXPECT_EQ(Desk::SizeOf(form->Window()).cy, 263 * times);
        EXPECT_EQ(bar.left, 10 * times);
        EXPECT_EQ(bar.top, 80 * times);
        EXPECT_EQ(bar.bottom - bar.top, 20 * times);
        EXPECT_NEAR(bar.right, button.right, 1);
    };
    moveToMonitor(192);
    form->SetButtonMode(1);
    form->SetWidth(500);
    ASSERT_TRUE(form->AddBar(0, false));
    form->ShowAtCentre(false);
    expectScaled(2);
    moveToMonitor(96);
    expectScaled(1);
    moveToMonitor(192);
    expectScaled(2);
}

LRESULT CALLBACK RefuseBars(int code, WPARAM wParam, LPARAM lParam)
{
    const bool bar =
        code == HCBT_CREATEWND && Desk::ClassOf(reinterpret_cast<HWND>(wParam)) == PROGRESS_CLASSW;
    return bar ? 1 : CallNextHookEx(nullptr, code, wParam, lParam);
}

TEST(ProgressWindow, TellsThatTheBarCannotBeMade)
{
    const HHOOK hook = SetWindowsHookExW(WH_CBT, RefuseBars, nullptr, GetCurrentThreadId());
    ScriptObject window = ScriptObject::Make(L"ProgressWindow");
    EXPECT_EQ(ErrorOf([&] { window.Call(L"Create"); }),
              (ScriptError{0x80040357, L"Quill.ProgressWindow", L"Control creation error."}));
    window.Put(L"ErrorLevel", 0);
    window.Call(L"Create");
    EXPECT_EQ(FindWindowW(nullptr, kTitle), nullptr);
    UnhookWindowsHookEx(hook);
    window.Call(L"Create");
    EXPECT_NE(FindWindowW(nullptr, kTitle), nullptr);
}

} // namespace
} // namespace quill::test
