#include <gtest/gtest.h>

#include "support/Robot.h"
#include "support/ScriptObject.h"

namespace quill::test {
namespace {

// True when a control of the dialog shows the text.
bool Shows(Desk& desk, HWND dialog, const std::wstring& text)
{
    for (HWND control : desk.Controls(dialog))
        if (Desk::TextOf(control) == text) return true;
    return false;
}

TEST(ProgressDialog, DoesNothingUntilItIsStarted)
{
    ScriptObject dialog = ScriptObject::Make(L"ProgressDialog");
    dialog.Call(L"StopDlg");
    dialog.Call(L"SetProgress", 1, 2);
    dialog.Call(L"SetText", L"nowhere");
    dialog.Call(L"SetTimer");
    EXPECT_EQ(dialog.Get(L"Cancellation"), false);
    dialog.Put(L"Title", std::wstring(100'000, L't'));
    EXPECT_EQ(dialog.Get(L"Title"), std::wstring(256, L't'));
    dialog.Put(L"CancelMsg", std::wstring(100'000, L'c'));
    EXPECT_EQ(dialog.Get(L"CancelMsg"), std::wstring(100'000, L'c'));
}

TEST(ProgressDialog, ShowsLinesAndHearsOfTheCancel)
{
    ScriptObject dialog = ScriptObject::Make(L"ProgressDialog");
    dialog.Put(L"Title", L"A quill copies");
    for (const int flags : {1, 2}) { // modal is dropped; the time left takes line 3
        SCOPED_TRACE(flags);
        dialog.Call(L"StartDlg", flags);
        dialog.Call(L"StartDlg", 0); // ignored
        dialog.Call(L"SetText", L"first");
        dialog.Call(L"SetText", L"second", 2, false);
        dialog.Call(L"SetText", L"third", 3, false);
        for (const int line : {0, 4, -1, 32767})
            dialog.Call(L"SetText", L"elsewhere", line);
        for (const int action : {1, 2, 3, 4, -1})
            dialog.Call(L"SetTimer", action);
        dialog.Call(L"SetProgress", 25, 100);
        Robot robot([&](Desk& desk) {
            const HWND window = desk.Window(L"A quill copies");
            EXPECT_EQ(GetWindow(window, GW_OWNER), nullptr);
            desk.WaitFor(L"the lines", [&] { return Shows(desk, window, L"second"); });
            EXPECT_TRUE(Shows(desk, window, L"first"));
            EXPECT_EQ(Shows(desk, window, L"third"), flags == 1);
            EXPECT_FALSE(Shows(desk, window, L"elsewhere"));
            desk.Click(desk.Control(L"A quill copies", L"Button", L"Cancel"));
        });
        robot.Finish();
        const ULONGLONG end = GetTickCount64() + Desk::kDeadline;
        while (!dialog.Get(L"Cancellation").Truth() && GetTickCount64() < end)
            Sleep(10);
        EXPECT_EQ(dialog.Get(L"Cancellation"), true);
        dialog.Call(L"StopDlg");
        EXPECT_EQ(dialog.Get(L"Cancellation"), false);
        Robot([](Desk& desk) {
            desk.WaitFor(L"the end of the dialog",
                         [] { return !FindWindowW(nullptr, L"A quill copies"); });
        });
    }
}

// The bar takes 64-bit numbers, and a release takes the dialog away.
TEST(ProgressDialog, LargeNumbersAndTheRelease)
{
    ScriptObject dialog = ScriptObject::Make(L"ProgressDialog");
    dialog.Put(L"Title", L"A quill counts");
    dialog.Call(L"StartDlg");
    Variant half;
    V_VT(&half) = VT_CY;
    V_CY(&half).int64 = 1LL << 40;
    Variant whole;
    V_VT(&whole) = VT_CY;
    V_CY(&whole).int64 = 1LL << 41;
    dialog.Call(L"SetProgress64", half, whole);
    dialog.Call(L"SetText", std::wstring(100'000, L'x'), 1, true);
    Robot robot([](Desk& desk) {
        const HWND bar = desk.Control(L"A quill counts", PROGRESS_CLASSW);
        desk.WaitFor(L"half of the bar", [bar] {
            const auto high = SendMessageW(bar, PBM_GETRANGE, FALSE, 0);
            return 2 * SendMessageW(bar, PBM_GETPOS, 0, 0) == high;
        });
    });
    robot.Finish();
    dialog.Release();
    Robot([](Desk& desk) {
        desk.WaitFor(L"the end of the dialog",
                     [] { return !FindWindowW(nullptr, L"A quill counts"); });
    });
}

} // namespace
} // namespace quill::test
