#include <gtest/gtest.h>

#include "core/Apartment.h"
#include "support/Reaction.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"
#include "support/Values.h"
#include "tray/notify.h"

namespace quill::test {
namespace {

constexpr int kSystemIcon = 32512;
constexpr wchar_t kMenu[] = L"#32768";

// By hand: on the taskbar, or in the tray that Wine shows where there is none.
void ClickIcon(Desk& desk, Desk::Button button)
{
    const HWND taskbar = FindWindowW(L"Shell_TrayWnd", nullptr);
    RECT client{};
    GetClientRect(taskbar, &client);
    if (IsWindowVisible(taskbar))
        desk.ClickAt(taskbar, {client.right - 10, client.bottom / 2}, button);
    else
        desk.Click(desk.Control(L"Wine System Tray", L"__winex11_tray_icon"), button);
}

Robot::Script PressInMenu(std::vector<WORD> keys)
{
    return [keys](Desk& desk) {
        desk.Window(nullptr, kMenu);
        for (const WORD key : keys)
            desk.Press(key);
    };
}

// Records what reaches the notification area; `real_` has the shell answer.
class NoticeTest : public testing::Test {
protected:
    NoticeTest()
    {
        Seam<NotifyIconFunctions>().notify = [this](DWORD request, NOTIFYICONDATAW* record) {
            last_ = *record;
            window_ = record->hWnd;
            return real_ ? Shell_NotifyIconW(request, record) : result_;
        };
        notice_.Put(L"IconID", kSystemIcon);
    }
    ~NoticeTest() override
    {
        notice_.Release();
        Seam<NotifyIconFunctions>().notify = Shell_NotifyIconW;
    }

    // 0 when the method says True, else the error code, or -1 where it has none.
    long Try(const wchar_t* method)
    {
        const bool done = notice_.Call(method).Truth();
        const long error = notice_.Get(L"ErrorCode").Number();
        return done || error != 0 ? error : -1;
    }
    long Clicked() { return notice_.Get(L"TrayClicked").Number(); }

    // As the shell reports.
    void Report(UINT code, short x = 0, short y = 0)
    {
        SendMessageW(window_, kTrayCallback, MAKEWPARAM(x, y), MAKELPARAM(code, last_.uID));
    }

    // Asks for the menu and plays the user; the result is the click code.
    long ChooseFromMenu(Robot::Script script)
    {
        notice_.Put(L"TrayClicked", 1);
        Robot robot(std::move(script));
        Report(WM_CONTEXTMENU, 200, 100);
        robot.Finish();
        return Clicked();
    }

    ScriptObject notice_ = ScriptObject::Make(L"Notice");
    bool real_ = false;
    BOOL result_ = TRUE;
    NOTIFYICONDATAW last_{};
    HWND window_ = nullptr;
};

TEST_F(NoticeTest, AnEventThatItsClientIsTooBusyForStaysArmed)
{
    Try(L"Add");
    Reaction reaction([] {});
    reaction.Hear(notice_.Dispatch());
    notice_.Put(L"TriggerEvent", true);
    for (const HRESULT busy : {RPC_E_CALL_REJECTED, RPC_E_SERVERCALL_RETRYLATER, S_OK}) {
        EXPECT_TRUE(notice_.Get(L"TriggerEvent").Truth());
        reaction.result = busy;
        Report(NIN_SELECT);
    }
    EXPECT_EQ(reaction.calls, 3);
    EXPECT_FALSE(notice_.Get(L"TriggerEvent").Truth());
}

// A click during a handler is dropped, what waits in the queue afterwards too, and what is chosen
// from a menu; the handler may take the icon away and release the object.
TEST_F(NoticeTest, HandlersMayDoAnything)
{
    Try(L"Add");
    notice_.Put(L"ContextMenu", ScriptArray(L"&One"));
    Reaction reaction([&] {
        notice_.Put(L"TriggerEvent", true);
        Report(NIN_BALLOONUSERCLICK);
        if (reaction.calls == 1) {
            EXPECT_EQ(ChooseFromMenu(PressInMenu({'O'})), 0);
        }
        PostMessageW(window_, kTrayCallback, 0, NIN_BALLOONUSERCLICK);
        if (reaction.calls == 2) notice_.Call(L"Remove");
        if (reaction.calls == 2) notice_.Release();
    });
    reaction.Hear(notice_.Dispatch());
    notice_.Put(L"TriggerEvent", true);
    Report(NIN_SELECT);
    EXPECT_EQ(reaction.calls, 1);
    EXPECT_FALSE(notice_.Get(L"BalloonClicked").Truth());
    EXPECT_TRUE(notice_.Get(L"TriggerEvent").Truth());
    Report(NIN_SELECT);
    EXPECT_EQ(reaction.calls, 2);
    EXPECT_FALSE(IsWindow(window_)) << "the object went with its event";
}

TEST_F(NoticeTest, TheMenuWorksByMouseAndKeyboard)
{
    // What had the keyboard before gets it back: this shell does not take it.
    const HWND before = CreateWindowExW(0, WC_STATICW, L"before", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                                        600, 400, 200, 100, nullptr, nullptr, nullptr, nullptr);
    SetForegroundWindow(before);
    Try(L"Add");
    result_ = FALSE;
    notice_.Put(L"ContextMenu",
                ScriptArray(L"&One", L"-", OfType(VT_NULL), L"T&wo" + std::wstring(100, L'o')));
    EXPECT_EQ(ChooseFromMenu(PressInMenu({VK_DOWN, VK_DOWN, VK_DOWN, VK_RETURN})), 13);
    EXPECT_EQ(GetForegroundWindow(), before);
    EXPECT_EQ(ChooseFromMenu([](Desk& desk) {
                  const HWND menu = desk.Window(nullptr, kMenu);
                  EXPECT_EQ(WindowFromPoint({201, 101}), menu) << "it opens where the click was";
                  EXPECT_NE(WindowFromPoint({199, 99}), menu);
                  wchar_t text[200]{};
                  GetMenuStringW(reinterpret_cast<HMENU>(SendMessageW(menu, MN_GETHMENU, 0, 0)), 3,
                                 text, 200, MF_BYPOSITION);
                  EXPECT_EQ(std::wstring(text), L"T&wo" + std::wstring(100, L'o')) << "as given";
                  desk.ClickAt(menu, {12, 12});
              }),
              11);
    EXPECT_EQ(ChooseFromMenu([&](Desk& desk) {
                  desk.Window(nullptr, kMenu);
                  Report(WM_CONTEXTMENU); // a second one while it is open
                  desk.Click(before);
              }),
              10);
    EXPECT_EQ(GetForegroundWindow(), before);
    DestroyWindow(before);
}

// The shell that reports a click does not wait for the menu to close.
TEST_F(NoticeTest, TheShellDoesNotWaitForTheMenu)
{
    Try(L"Add");
    notice_.Put(L"ContextMenu", ScriptArray(L"a"));
    bool answered = false;
    Robot robot([&](Desk& desk) {
        answered = SendMessageTimeoutW(window_, kTrayCallback, 0, WM_CONTEXTMENU, SMTO_NORMAL,
                                       5'000, nullptr) != 0;
        desk.Window(nullptr, kMenu);
        desk.Press(VK_ESCAPE);
    });
    EXPECT_TRUE(PumpUntil([&] { return Clicked() == 10; }, Desk::kDeadline));
    EXPECT_TRUE(robot.Finish() && answered);
}

// With the shell that is there: two icons, real clicks, a new taskbar, the end of the objects. Wine
// never announces a taskbar, so the message comes from here.
TEST_F(NoticeTest, LivesInTheRealNotificationArea)
{
    real_ = true;
    const auto isThere = [&](NOTIFYICONDATAW record) {
        record.uFlags = 0;
        return Shell_NotifyIconW(NIM_MODIFY, &record) != FALSE;
    };
    ScriptObject other = ScriptObject::Make(L"Notice");
    other.Put(L"IconID", kSystemIcon);
    ASSERT_TRUE(other.Call(L"Add").Truth());
    const NOTIFYICONDATAW otherIcon = last_;
    ASSERT_EQ(Try(L"Add"), 0);
    const NOTIFYICONDATAW icon = last_;
    EXPECT_TRUE(isThere(icon) && isThere(otherIcon));
    other.Release();
    EXPECT_FALSE(isThere(otherIcon));
    EXPECT_TRUE(isThere(icon));

    Robot([](Desk& desk) { ClickIcon(desk, Desk::Button::Left); }).Finish();
    EXPECT_TRUE(PumpUntil([&] { return Clicked() == 1; }));
    Robot([](Desk& desk) { ClickIcon(desk, Desk::Button::Right); }).Finish();
    EXPECT_TRUE(PumpUntil([&] { return Clicked() == 2; }));

    SendMessageW(icon.hWnd, WM_CLOSE, 0, 0);
    const UINT taskbarCreated = RegisterWindowMessageW(L"TaskbarCreated");
    SendMessageW(icon.hWnd, taskbarCreated, 0, 0);
    EXPECT_EQ(Try(L"ChangeIcon"), 0) << "a taskbar that kept the icon";
    NOTIFYICONDATAW gone = icon;
    Shell_NotifyIconW(NIM_DELETE, &gone);
    SendMessageW(icon.hWnd, taskbarCreated, 0, 0);
    EXPECT_EQ(Try(L"ShowBalloon"), 1);
    EXPECT_EQ(Try(L"Add"), 0);
    EXPECT_TRUE(isThere(icon));
    notice_.Release();
    EXPECT_FALSE(isThere(icon));
}

TEST_F(NoticeTest, ComesBackToATaskbarThatIsBusyAtFirst)
{
    std::vector<DWORD> requests;
    BOOL answer = TRUE;
    HWND window = nullptr;
    Seam<NotifyIconFunctions>().notify = [&](DWORD request, NOTIFYICONDATAW* record) {
        requests.push_back(request);
        window = record->hWnd;
        return answer;
    };
    notice_.Put(L"AutoRestore", true);
    ASSERT_EQ(Try(L"Add"), 0);
    const auto startTaskbar = [&] {
        answer = FALSE;
        SendMessageW(window, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
        answer = TRUE;
        requests.clear();
    };
    startTaskbar();
    EXPECT_EQ(Try(L"Add"), 1);
    EXPECT_TRUE(PumpUntil([&] { return !requests.empty(); }));
    EXPECT_EQ(requests, (std::vector<DWORD>{NIM_ADD, NIM_SETVERSION}));

    startTaskbar();
    notice_.Call(L"Remove");
    EXPECT_FALSE(PumpUntil([&] { return requests != std::vector<DWORD>{NIM_DELETE}; }, 1500));
    notice_.Release(); // it still tells the taskbar above
}

} // namespace
} // namespace quill::test
