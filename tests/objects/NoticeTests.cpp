#include <gtest/gtest.h>

#include <tuple>

#include "core/Apartment.h"
#include "gui/windowfn.h"
#include "support/EventListener.h"
#include "support/Reaction.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"
#include "support/TemporaryFolder.h"
#include "support/Values.h"
#include "tray/IconSource.h"
#include "tray/notify.h"

namespace quill::test {
namespace {

constexpr int kSystemIcon = 32512;
constexpr wchar_t kMenu[] = L"#32768";

// The bytes of an icon file with one blank picture of 16 x 16 pixels.
std::string IconFile()
{
    const BITMAPINFOHEADER header{40, 16, 32, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    return std::string("\0\0\1\0\1\0\x10\x10\0\0\1\0\x20\0\x68\4\0\0\x16\0\0\0", 22)
        .append(reinterpret_cast<const char*>(&header), sizeof header)
        .append(16 * 16 * 4 + 16 * 4, '\0');
}

int WidthOf(HICON icon)
{
    ICONINFO info{};
    BITMAP bitmap{};
    GetIconInfo(icon, &info);
    GetObjectW(info.hbmMask, sizeof bitmap, &bitmap);
    DeleteObject(info.hbmMask);
    DeleteObject(info.hbmColor);
    return bitmap.bmWidth;
}

using Numbers = std::vector<DWORD>;

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
            requests_.push_back(request);
            last_ = *record;
            if (request == NIM_ADD) {
                added_ = *record;
                width_ = WidthOf(record->hIcon);
            }
            window_ = record->hWnd;
            return real_ ? Shell_NotifyIconW(request, record) : result_;
        };
        notice_.Put(L"IconID", kSystemIcon);
    }
    ~NoticeTest() override
    {
        notice_.Release();
        Seam<NotifyIconFunctions>().notify = Shell_NotifyIconW;
        Seam<IconFunctions>() = icons_;
        ThisApartment().osVersion = version_;
    }

    void Put(std::initializer_list<std::pair<const wchar_t*, Arg>> properties)
    {
        for (const auto& [name, value] : properties)
            notice_.Put(name, value.value);
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

    const IconFunctions icons_ = Seam<IconFunctions>();
    const int version_ = ThisApartment().osVersion;
    ScriptObject notice_ = ScriptObject::Make(L"Notice");
    bool real_ = false;
    BOOL result_ = TRUE;
    Numbers requests_;
    NOTIFYICONDATAW last_{};
    NOTIFYICONDATAW added_{};
    int width_ = 0; // of the icon that was added
    HWND window_ = nullptr;
};

TEST_F(NoticeTest, IconsComeFromManySources)
{
    TemporaryFolder folder;
    const std::wstring good = folder.Write(L"good.ICO", IconFile());
    const std::wstring bad = folder.Write(L"bad.ico", std::string(4000, 'x'));
    const std::wstring text = folder.Write(L"icon.dll", "no module");
    const std::wstring shell = L"shell32.dll";
    const std::tuple<std::wstring, const wchar_t*, int, long> cases[] = {
        {L"", L"", kSystemIcon, 0}, {L"", L"", 32501, 2},   {good, L"", -7, 0},
        {bad, L"", 1, 2},           {text, L"", 1, 2},      {shell, L"", 1, 0},
        {shell, L"#1", 0, 0},       {shell, L"none", 1, 2}, {shell, L"", 0x10001, 2},
        {L"no.ico", L"", 1, 2}};
    for (const auto& [file, name, id, error] : cases)
        for (const bool useLoadImage : {false, true})
            for (const short size : {short{0}, short{1}}) {
                SCOPED_TRACE(Narrow(file) + '#' + std::to_string(id));
                Put({{L"IconFile", file},
                     {L"IconName", name},
                     {L"IconID", id},
                     {L"IconSize", size},
                     {L"UseLoadImageAPI", useLoadImage}});
                width_ = 0;
                EXPECT_EQ(Try(L"Add"), error);
                EXPECT_EQ(width_, error ? 0 : size == 1 ? 32 : 16) << useLoadImage;
                notice_.Call(L"Remove");
            }
}

// Wine knows no stock icons, so the platform's call is ours here.
TEST_F(NoticeTest, StockIconsGoByNumber)
{
    std::vector<std::pair<int, UINT>> asked;
    Seam<IconFunctions>().stock = [&](int id, UINT flags, SHSTOCKICONINFO* info) {
        asked.emplace_back(id, flags);
        info->hIcon = CopyIcon(LoadIconW(nullptr, IDI_APPLICATION));
        return info->cbSize == 536 ? S_OK : E_INVALIDARG;
    };
    notice_.Put(L"IconID", -79);
    EXPECT_EQ(Try(L"Add"), 0);
    notice_.Put(L"IconSize", short{1});
    notice_.Put(L"IconID", 32500);
    EXPECT_EQ(Try(L"ChangeIcon"), 0);
    EXPECT_EQ(asked, (std::vector<std::pair<int, UINT>>{{-79, 0x101}, {32500, 0x100}}));
    Seam<IconFunctions>().stock = icons_.stock;
    EXPECT_EQ(Try(L"ChangeIcon"), 2);
}

TEST_F(NoticeTest, SendsWhatTheShellExpects)
{
    // A surrogate pair lies across the cut.
    const std::wstring tip = std::wstring(126, L'x') + L"\U0001F58A" + L"more";
    notice_.Put(L"TipText", tip);
    EXPECT_EQ(notice_.Get(L"TipText"), tip.substr(0, 127));
    EXPECT_EQ(Try(L"Add"), 0);
    EXPECT_EQ(requests_, (Numbers{NIM_ADD, NIM_SETVERSION}));
    EXPECT_EQ((Numbers{added_.cbSize, added_.uFlags, added_.uCallbackMessage}),
              (Numbers{956, 0x87, 0x8008}));
    EXPECT_EQ(std::wstring(added_.szTip), std::wstring(126, L'x'));
    EXPECT_EQ(last_.uVersion, 4U);
    EXPECT_EQ(Try(L"ChangeIcon"), 0);
    EXPECT_EQ(last_.uFlags, 0x82U); // the tip is shown with each of them
    notice_.Put(L"TipText", L"");
    EXPECT_EQ(last_.uFlags, 0x84U);
    notice_.Call(L"Remove");
    EXPECT_EQ(requests_.back(), DWORD{NIM_DELETE});

    // A taskbar that refuses, and one that has the icon already.
    result_ = FALSE;
    EXPECT_EQ(Try(L"Add"), -1);
    Seam<NotifyIconFunctions>().notify = [&](DWORD request, NOTIFYICONDATAW*) {
        result_ = result_ || request == NIM_DELETE;
        return result_;
    };
    EXPECT_EQ(Try(L"Add"), 0);
    result_ = FALSE;
}

TEST_F(NoticeTest, BalloonsHaveIconsAndOptions)
{
    Try(L"Add");
    // Kind, options, size; both flags.
    const std::tuple<short, int, short, DWORD, DWORD> cases[] = {
        {1, 0, 0, 0, 0x90},    {2, 1, 0, 0x11, 0x90}, {3, 2, 0, 2, 0xD0}, {4, 4, 1, 0xA3, 0x90},
        {0, 7, 1, 0xB4, 0xD0}, {0, -8, 0, 4, 0x90},   {5, 0, 1, 4, 0x90}};
    notice_.Put(L"BIconID", kSystemIcon);
    for (const auto& [kind, options, size, info, flags] : cases) {
        Put({{L"BalloonIcon", kind}, {L"BalloonOptions", options}, {L"BIconSize", size}});
        EXPECT_EQ(Try(L"ShowBalloon"), 0);
        EXPECT_EQ((Numbers{last_.dwInfoFlags, last_.uFlags}), (Numbers{info, flags})) << kind;
        EXPECT_EQ(last_.hBalloonIcon != nullptr, kind % 5 == 0) << kind;
    }
    Put({{L"BalloonText", std::wstring(254, L't') + L"\U0001F58A"},
         {L"BalloonTitle", std::wstring(100, L'T')}});
    notice_.Call(L"ShowBalloon");
    EXPECT_EQ(std::wstring(last_.szInfo), std::wstring(254, L't'));
    EXPECT_EQ(std::wstring(last_.szInfoTitle), std::wstring(63, L'T'));

    requests_.clear();
    Put({{L"BalloonIcon", short{0}}, {L"BIconFile", L"none.ico"}});
    EXPECT_EQ(Try(L"ShowBalloon"), 2);
    EXPECT_TRUE(requests_.empty());
}

TEST_F(NoticeTest, OldWindowsHasLess)
{
    ThisApartment().osVersion = 502;
    notice_.Put(L"ContextMenu", ScriptArray(L"a"));
    EXPECT_EQ(notice_.Get(L"ContextMenuItems"), 0);
    EXPECT_EQ(Try(L"Add"), 3);
    notice_.Put(L"UseLoadImageAPI", true);
    EXPECT_EQ(Try(L"Add"), 0);
    EXPECT_EQ((Numbers{last_.cbSize, last_.uVersion}), (Numbers{952, 3}));
    EXPECT_EQ(Try(L"ShowBalloon"), 4);
    notice_.Put(L"BalloonIcon", short{5});
    EXPECT_EQ(Try(L"ShowBalloon"), 0);
    EXPECT_NE(last_.hIcon, nullptr);
    EXPECT_EQ(last_.hBalloonIcon, nullptr);
    notice_.Put(L"IconID", 5);
    EXPECT_EQ(Try(L"ChangeIcon"), 3);
}

// Each event disarms the trigger; properties tell of every click.
TEST_F(NoticeTest, ClicksBecomePropertiesAndEvents)
{
    Try(L"Add");
    EventListener listener(notice_.Dispatch());
    for (const UINT code : {WM_MOUSEMOVE, WM_LBUTTONDBLCLK, NIN_BALLOONSHOW})
        Report(code);
    EXPECT_EQ(Clicked(), 0);
    notice_.Put(L"TriggerEvent", true);
    Report(NIN_KEYSELECT);
    Report(WM_CONTEXTMENU);
    Report(NIN_BALLOONUSERCLICK);
    EXPECT_EQ(Clicked(), 2);
    EXPECT_TRUE(notice_.Get(L"BalloonClicked").Truth());
    EXPECT_EQ(listener.Count(), 1U);
    EXPECT_EQ(listener.Count(L"TrayClick"), 1U);
    notice_.Put(L"TriggerEvent", true);
    Report(NIN_BALLOONUSERCLICK);
    EXPECT_EQ(listener.Count(L"BalloonClick"), 1U);
    notice_.Put(L"BalloonClicked", true);
    EXPECT_FALSE(notice_.Get(L"BalloonClicked").Truth());
}

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
    EXPECT_EQ(requests_.back(), DWORD{NIM_DELETE});
}

TEST_F(NoticeTest, MenusAreZeroBasedLists)
{
    const auto count = [&](const VARIANT& menu) {
        notice_.Put(L"ContextMenu", menu);
        return notice_.Get(L"ContextMenuItems").Number();
    };
    EXPECT_EQ(count(MakeStringArray(std::vector<std::wstring>(1000, L"x"), true)), 8);
    EXPECT_EQ(count(Variant(std::wstring_view(L"a"))), 0);
    EXPECT_EQ(count(Variant(MakeArray(VT_I8, 40'000))), 8);
    // An object without a text, Null, an error.
    Variant objects = ScriptArray(notice_.Dispatch(), OfType(VT_NULL), OfType(VT_ERROR));
    EXPECT_EQ(count(Reference(VT_VARIANT, &objects)), 3);
    // The first dimension counts.
    SAFEARRAYBOUND bounds[2]{{3, 0}, {2, 1}};
    EXPECT_EQ(count(Variant(Array(SafeArrayCreate(VT_VARIANT, 2, bounds)))), 3);
    EXPECT_EQ(count(StartingAt(1, ScriptArray(L"a"))), 0);
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
    EXPECT_EQ(requests_.back(), DWORD{NIM_SETFOCUS});
    EXPECT_EQ(GetForegroundWindow(), before);
    EXPECT_EQ(ChooseFromMenu(PressInMenu({'W'})), 13);
    EXPECT_EQ(ChooseFromMenu(PressInMenu({VK_ESCAPE})), 10);
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

// Its session ends, or its clients died, while the menu is open.
TEST_F(NoticeTest, AMenuThatNobodyWaitsForCloses)
{
    Try(L"Add");
    notice_.Put(L"ContextMenu", ScriptArray(L"a"));
    LastClient client(notice_.Dispatch());
    for (const bool gone : {false, true})
        EXPECT_EQ(ChooseFromMenu([&](Desk& desk) {
                      const HWND menu = desk.Window(nullptr, kMenu);
                      if (gone)
                          client.Die();
                      else
                          desk.Post(window_, WM_ENDSESSION, TRUE);
                      desk.WaitUntilGone(menu);
                  }),
                  10);
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
    const UINT taskbarCreated = RegisterWindowMessageW(L"TaskbarCreated");
    Put({{L"AutoRestore", true}, {L"TipText", L"Tip"}});
    ASSERT_EQ(Try(L"Add"), 0);
    const auto startTaskbar = [&] {
        result_ = FALSE;
        SendMessageW(window_, taskbarCreated, 0, 0);
        result_ = TRUE;
        requests_.clear();
    };
    startTaskbar();
    EXPECT_EQ(Try(L"Add"), 1);
    EXPECT_TRUE(PumpUntil([&] { return !requests_.empty(); }));
    EXPECT_EQ(requests_, (Numbers{NIM_ADD, NIM_SETVERSION}));
    EXPECT_STREQ(added_.szTip, L"Tip");

    startTaskbar();
    notice_.Call(L"Remove");
    EXPECT_FALSE(PumpUntil([&] { return requests_ != Numbers{NIM_DELETE}; }, 1500));
}

} // namespace
} // namespace quill::test
