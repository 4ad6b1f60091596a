#include <gtest/gtest.h>

#include "core/StartUp.h"
#include "gui/windowfn.h"
#include "support/EventListener.h"
#include "support/Reaction.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"
#include "support/TemporaryFolder.h"
#include "tray/IconSource.h"
#include "tray/notify.h"

namespace quill::test {
namespace {

constexpr int kSystemIcon = 32512;
constexpr wchar_t kIcon[] = L"__winex11_tray_icon"; // in the tray that Wine shows without a taskbar
constexpr wchar_t kMenu[] = L"#32768";

// The bytes of an icon file with one blank picture of 16 x 16 pixels.
std::string IconFile()
{
    std::string bytes(22 + 40 + 16 * 16 * 4 + 16 * 4, '\0');
    bytes[2] = bytes[4] = 1;
    bytes[6] = bytes[7] = 16;
    bytes[10] = 1;
    bytes[12] = bytes[36] = 32;
    bytes[14] = static_cast<char>((bytes.size() - 22) & 0xFF);
    bytes[15] = static_cast<char>((bytes.size() - 22) >> 8);
    bytes[18] = 22;
    bytes[22] = 40;
    bytes[26] = 16;
    bytes[30] = 32;
    bytes[34] = 1;
    return bytes;
}

Variant ListOf(const std::vector<std::wstring>& texts)
{
    return MakeStringArray(texts, true);
}

// Records what reaches the notification area; `real_` has the shell answer.
class NoticeTest : public testing::Test {
protected:
    NoticeTest()
    {
        NotifyIconOfThread() = [this](DWORD request, NOTIFYICONDATAW* record) {
            requests_.push_back(request);
            last_ = *record;
            window_ = record->hWnd;
            return real_ ? Shell_NotifyIconW(request, record) : result_;
        };
        notice_.Put(L"IconID", kSystemIcon);
    }
    ~NoticeTest() override
    {
        notice_.Release();
        NotifyIconOfThread() = Shell_NotifyIconW;
        IconsOfThread() = icons_;
        ThisApartment().osVersion = version_;
    }

    bool Add() { return notice_.Call(L"Add").Truth(); }
    long Error() { return notice_.Get(L"ErrorCode").Number(); }
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

    const IconFunctions icons_ = IconsOfThread();
    const int version_ = ThisApartment().osVersion;
    ScriptObject notice_ = ScriptObject::Make(L"Notice");
    bool real_ = false;
    BOOL result_ = TRUE;
    std::vector<DWORD> requests_;
    NOTIFYICONDATAW last_{};
    HWND window_ = nullptr;
};

TEST_F(NoticeTest, IconsComeFromManySources)
{
    TemporaryFolder folder;
    const std::wstring good = folder.Write(L"good.ICO", IconFile());
    const std::wstring bad = folder.Write(L"bad.ico", std::string(4000, 'x'));
    const std::wstring text = folder.Write(L"icon.dll", "no module");
    struct Case {
        std::wstring file;
        const wchar_t* name;
        int id;
        long error;
    };
    const Case cases[] = {{L"", L"", kSystemIcon, 0},
                          {L"", L"", 32501, 2},
                          {L"", L"", 70'000, 2},
                          {L"", L"", -1, 2},
                          {good, L"", -7, 0},
                          {bad, L"", 1, 2},
                          {folder.Path(L"no.ico"), L"", 1, 2},
                          {text, L"", 1, 2},
                          {L"shell32.dll", L"", 1, 0},
                          {L"shell32.dll", L"#1", 0, 0},
                          {L"shell32.dll", L"none", 1, 2},
                          {L"shell32.dll", L"", 0x10001, 2},
                          {L"shell32.dll", L"", -1, 2},
                          {std::wstring(300, L'x'), L"", 1, 2}};
    for (const Case& c : cases)
        for (const bool useLoadImage : {false, true})
            for (const short size : {short{0}, short{1}}) {
                notice_.Put(L"IconFile", c.file);
                notice_.Put(L"IconName", c.name);
                notice_.Put(L"IconID", c.id);
                notice_.Put(L"IconSize", size);
                notice_.Put(L"UseLoadImageAPI", useLoadImage);
                last_.hIcon = nullptr;
                EXPECT_EQ(Add(), c.error == 0) << Narrow(c.file) << c.id << useLoadImage << size;
                EXPECT_EQ(Error(), c.error) << Narrow(c.file) << c.id << useLoadImage << size;
                notice_.Call(L"Remove");
            }
}

// Wine knows no stock icons, so the platform's call is ours here.
TEST_F(NoticeTest, StockIconsGoByNumber)
{
    int asked = 0;
    UINT flags = 0;
    IconsOfThread().stock = [&](int id, UINT given, SHSTOCKICONINFO* info) {
        EXPECT_EQ(info->cbSize, 536U);
        asked = id;
        flags = given;
        info->hIcon = CopyIcon(LoadIconW(nullptr, IDI_APPLICATION));
        return S_OK;
    };
    notice_.Put(L"IconID", 79);
    EXPECT_TRUE(Add());
    EXPECT_EQ(asked, 79);
    EXPECT_EQ(flags, UINT{SHGSI_ICON | SHGSI_SMALLICON});
    notice_.Put(L"IconSize", short{1});
    notice_.Put(L"IconID", 32500);
    EXPECT_TRUE(notice_.Call(L"ChangeIcon").Truth());
    EXPECT_EQ(asked, 32500);
    EXPECT_EQ(flags, UINT{SHGSI_ICON});
    IconsOfThread().stock = icons_.stock;
    EXPECT_FALSE(notice_.Call(L"ChangeIcon").Truth());
    EXPECT_EQ(Error(), 2) << "the old icon stays";
}

TEST_F(NoticeTest, SendsWhatTheShellExpects)
{
    EXPECT_FALSE(notice_.Call(L"ShowBalloon").Truth());
    EXPECT_EQ(Error(), 1);
    EXPECT_FALSE(notice_.Call(L"ChangeIcon").Truth());
    EXPECT_TRUE(requests_.empty());

    // A surrogate pair lies across the cut.
    const std::wstring tip = std::wstring(126, L'x') + L"\U0001F58A" + L"more";
    notice_.Put(L"TipText", tip);
    EXPECT_EQ(notice_.Get(L"TipText"), tip.substr(0, 127));
    NOTIFYICONDATAW added{};
    NotifyIconOfThread() = [&, next = NotifyIconOfThread()](DWORD request,
                                                            NOTIFYICONDATAW* record) {
        if (request == NIM_ADD) added = *record;
        return next(request, record);
    };
    EXPECT_TRUE(Add());
    EXPECT_EQ(requests_, (std::vector<DWORD>{NIM_ADD, NIM_SETVERSION}));
    EXPECT_EQ(added.cbSize, 956U);
    EXPECT_EQ(added.uFlags, 0x87U);
    EXPECT_EQ(added.uCallbackMessage, 0x8008U);
    EXPECT_LT(added.uID, 1000U);
    EXPECT_EQ(std::wstring(added.szTip), std::wstring(126, L'x'));
    EXPECT_EQ(last_.uVersion, 4U);
    EXPECT_FALSE(Add());
    EXPECT_EQ(Error(), 1);

    EXPECT_TRUE(notice_.Call(L"ChangeIcon").Truth());
    EXPECT_EQ(last_.uFlags, 2U);
    notice_.Put(L"TipText", L"");
    EXPECT_EQ(last_.uFlags, 4U);
    notice_.Call(L"Remove");
    EXPECT_EQ(requests_.back(), DWORD{NIM_DELETE});

    // A taskbar that refuses, and one that has the icon already.
    result_ = FALSE;
    EXPECT_FALSE(Add());
    EXPECT_EQ(Error(), 0);
    NotifyIconOfThread() = [&](DWORD request, NOTIFYICONDATAW*) {
        result_ = result_ || request == NIM_DELETE;
        return result_;
    };
    EXPECT_TRUE(Add());
    result_ = FALSE;
}

TEST_F(NoticeTest, BalloonsHaveIconsAndOptions)
{
    Add();
    struct Case {
        short kind;
        int options;
        short size;
        DWORD info;
        DWORD flags;
    };
    const Case cases[] = {{1, 0, 0, 0, 0x10},    {2, 1, 0, 0x11, 0x10}, {3, 2, 0, 2, 0x50},
                          {4, 4, 1, 0xA3, 0x10}, {0, 7, 1, 0xB4, 0x50}, {0, -8, 0, 4, 0x10},
                          {5, 0, 1, 4, 0x10} /* the tray icon is a small one */};
    notice_.Put(L"BIconID", kSystemIcon);
    for (const Case& c : cases) {
        notice_.Put(L"BalloonIcon", c.kind);
        notice_.Put(L"BalloonIcon", short{6});
        notice_.Put(L"BalloonOptions", c.options);
        notice_.Put(L"BIconSize", c.size);
        EXPECT_TRUE(notice_.Call(L"ShowBalloon").Truth());
        EXPECT_EQ(last_.dwInfoFlags, c.info) << c.kind;
        EXPECT_EQ(last_.uFlags, c.flags) << c.kind;
        EXPECT_EQ(last_.hBalloonIcon != nullptr, c.kind % 5 == 0) << c.kind;
    }
    notice_.Put(L"BalloonText", std::wstring(254, L't') + L"\U0001F58A");
    notice_.Put(L"BalloonTitle", std::wstring(100, L'T'));
    notice_.Call(L"ShowBalloon");
    EXPECT_EQ(std::wstring(last_.szInfo), std::wstring(254, L't'));
    EXPECT_EQ(std::wstring(last_.szInfoTitle), std::wstring(63, L'T'));

    requests_.clear();
    notice_.Put(L"BalloonIcon", short{0});
    notice_.Put(L"BIconFile", L"none.ico");
    EXPECT_FALSE(notice_.Call(L"ShowBalloon").Truth());
    EXPECT_EQ(Error(), 2);
    EXPECT_TRUE(requests_.empty());
}

TEST_F(NoticeTest, OldWindowsHasLess)
{
    ThisApartment().osVersion = 502;
    notice_.Put(L"ContextMenu", ListOf({L"a"}));
    EXPECT_EQ(notice_.Get(L"ContextMenuItems"), 0);
    EXPECT_FALSE(Add());
    EXPECT_EQ(Error(), 3);
    notice_.Put(L"UseLoadImageAPI", true);
    EXPECT_TRUE(Add());
    EXPECT_EQ(last_.cbSize, 952U);
    EXPECT_EQ(last_.uVersion, 3U);
    EXPECT_FALSE(notice_.Call(L"ShowBalloon").Truth());
    EXPECT_EQ(Error(), 4);
    notice_.Put(L"BalloonIcon", short{5});
    EXPECT_TRUE(notice_.Call(L"ShowBalloon").Truth());
    EXPECT_NE(last_.hIcon, nullptr);
    EXPECT_EQ(last_.hBalloonIcon, nullptr);
    notice_.Put(L"IconID", 5);
    EXPECT_FALSE(notice_.Call(L"ChangeIcon").Truth());
    EXPECT_EQ(Error(), 3);
}

// Each event disarms the trigger; properties tell of every click.
TEST_F(NoticeTest, ClicksBecomePropertiesAndEvents)
{
    Add();
    EventListener listener(notice_.Dispatch());
    for (const UINT code : {WM_MOUSEMOVE, WM_LBUTTONDBLCLK, NIN_BALLOONSHOW, NIN_POPUPOPEN})
        Report(code);
    EXPECT_EQ(Clicked(), 0);
    Report(NIN_SELECT);
    EXPECT_EQ(Clicked(), 1);
    notice_.Put(L"TrayClicked", 7);
    EXPECT_EQ(Clicked(), 0);

    notice_.Put(L"TriggerEvent", true);
    Report(NIN_KEYSELECT);
    Report(WM_CONTEXTMENU);
    Report(NIN_BALLOONUSERCLICK);
    EXPECT_EQ(Clicked(), 2);
    EXPECT_TRUE(notice_.Get(L"BalloonClicked").Truth());
    EXPECT_FALSE(notice_.Get(L"TriggerEvent").Truth());
    ASSERT_EQ(listener.Count(), 1U);
    EXPECT_EQ(V_I2(&listener.Find(L"TrayClick", 0)->arguments.at(0)), 1);
    notice_.Put(L"TriggerEvent", true);
    Report(NIN_BALLOONUSERCLICK);
    EXPECT_EQ(listener.Count(L"BalloonClick"), 1U);
    notice_.Put(L"BalloonClicked", true);
    EXPECT_FALSE(notice_.Get(L"BalloonClicked").Truth());
}

// A click during a handler is dropped, what waits in the queue afterwards too; the handler may take
// the icon away and release the object.
TEST_F(NoticeTest, HandlersMayDoAnything)
{
    Add();
    notice_.Put(L"ContextMenu", ListOf({L"never shown"}));
    Reaction reaction([&] {
        notice_.Put(L"TriggerEvent", true);
        Report(NIN_BALLOONUSERCLICK);
        Report(WM_CONTEXTMENU);
        PostMessageW(window_, kTrayCallback, 0, NIN_BALLOONUSERCLICK);
        if (reaction.calls == 2) notice_.Call(L"Remove");
        if (reaction.calls == 2) notice_.Release();
    });
    DWORD cookie = 0;
    ASSERT_HRESULT_SUCCEEDED(PointOf(notice_.Dispatch())->Advise(&reaction, &cookie));
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
    std::vector<std::wstring> many(1000, L"x");
    EXPECT_EQ(count(ListOf({L"a", L"-", L""})), 3);
    EXPECT_EQ(count(ListOf(many)), 8);
    EXPECT_EQ(
        V_ARRAY(&static_cast<const VARIANT&>(notice_.Get(L"ContextMenu")))->rgsabound[0].cElements,
        1000U);
    EXPECT_EQ(count(Variant(std::wstring_view(L"a"))), 0);
    EXPECT_EQ(count(Variant(MakeArray(VT_I8, 40'000))), 8);

    Array objects = MakeArray(VT_VARIANT, 3); // an object without a text, Null, an error
    DataOf<VARIANT>(*objects)[0] = Variant(notice_.Dispatch()).Detach();
    V_VT(&DataOf<VARIANT>(*objects)[1]) = VT_NULL;
    V_VT(&DataOf<VARIANT>(*objects)[2]) = VT_ERROR;
    Variant variable(std::move(objects));
    EXPECT_EQ(count(Reference(VT_VARIANT, &variable)), 3);
    notice_.Put(L"ContextMenu", 0);
    EXPECT_EQ(V_VT(&variable), VT_ARRAY | VT_VARIANT) << "the script's own";

    SAFEARRAYBOUND bounds[2]{{2, 0}, {2, 0}};
    EXPECT_EQ(count(Variant(Array(SafeArrayCreate(VT_VARIANT, 2, bounds)))), 0);
    bounds[0].lLbound = 1;
    EXPECT_EQ(count(Variant(Array(SafeArrayCreate(VT_VARIANT, 1, bounds)))), 0);
}

TEST_F(NoticeTest, TheMenuWorksByMouseAndKeyboard)
{
    // What had the keyboard before gets it back: this shell does not take it.
    const HWND before = CreateWindowExW(0, WC_STATICW, L"before", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                                        600, 400, 200, 100, nullptr, nullptr, nullptr, nullptr);
    SetForegroundWindow(before);
    Add();
    result_ = FALSE;
    notice_.Put(L"ContextMenu", ListOf({L"&One", L"-", L"", L"T&wo"}));
    EXPECT_EQ(ChooseFromMenu([&](Desk& desk) {
                  const HWND menu = desk.Window(nullptr, kMenu);
                  RECT place{};
                  GetWindowRect(menu, &place);
                  EXPECT_EQ(place.left, 200);
                  EXPECT_EQ(place.top, 100);
                  desk.Press(VK_DOWN);
                  desk.Press(VK_DOWN);
                  desk.Press(VK_DOWN);
                  desk.Press(VK_RETURN);
              }),
              13);
    EXPECT_EQ(requests_.back(), DWORD{NIM_SETFOCUS});
    EXPECT_EQ(GetForegroundWindow(), before);
    EXPECT_EQ(ChooseFromMenu([](Desk& desk) {
                  desk.Window(nullptr, kMenu);
                  desk.Press('W');
              }),
              13);
    EXPECT_EQ(ChooseFromMenu([](Desk& desk) {
                  desk.ClickAt(desk.Window(nullptr, kMenu), {12, 12});
              }),
              11);
    EXPECT_EQ(ChooseFromMenu([](Desk& desk) {
                  desk.Window(nullptr, kMenu);
                  desk.Press(VK_ESCAPE);
              }),
              10);
    EXPECT_EQ(ChooseFromMenu([&](Desk& desk) {
                  desk.Window(nullptr, kMenu);
                  Report(WM_CONTEXTMENU); // a second one while it is open
                  desk.Click(before);
              }),
              10);
    EXPECT_EQ(GetForegroundWindow(), before);
    DestroyWindow(before);
}

// Its clients died, or took the icon away, while the menu is open.
TEST_F(NoticeTest, AMenuThatNobodyWaitsForCloses)
{
    Add();
    notice_.Put(L"ContextMenu", ListOf({L"a"}));
    EXPECT_EQ(ChooseFromMenu([&](Desk& desk) {
                  const HWND menu = desk.Window(nullptr, kMenu);
                  desk.Post(window_, WM_ENDSESSION, TRUE);
                  desk.WaitUntilGone(menu);
              }),
              10);
    ComPtr<IExternalConnection> connection;
    ASSERT_HRESULT_SUCCEEDED(notice_.Dispatch()->QueryInterface(IID_PPV_ARGS(&connection)));
    connection->AddConnection(EXTCONN_STRONG, 0);
    EXPECT_EQ(ChooseFromMenu([&](Desk& desk) {
                  const HWND menu = desk.Window(nullptr, kMenu);
                  connection->ReleaseConnection(EXTCONN_STRONG, 0, TRUE);
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
    ASSERT_TRUE(Add());
    const NOTIFYICONDATAW icon = last_;
    EXPECT_TRUE(isThere(icon) && isThere(otherIcon));
    other.Release();
    EXPECT_FALSE(isThere(otherIcon));
    EXPECT_TRUE(isThere(icon));

    Robot([](Desk& desk) { desk.Click(desk.Control(L"Wine System Tray", kIcon)); }).Finish();
    EXPECT_TRUE(PumpUntil([&] { return Clicked() == 1; }));
    Robot([](Desk& desk) { desk.RightClick(desk.Control(L"Wine System Tray", kIcon)); }).Finish();
    EXPECT_TRUE(PumpUntil([&] { return Clicked() == 2; }));

    SendMessageW(icon.hWnd, WM_CLOSE, 0, 0);
    SendMessageW(icon.hWnd, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
    EXPECT_FALSE(notice_.Call(L"ShowBalloon").Truth());
    EXPECT_EQ(Error(), 1);
    EXPECT_TRUE(Add());
    EXPECT_TRUE(isThere(icon));
    notice_.Release();
    EXPECT_FALSE(isThere(icon));
}

} // namespace
} // namespace quill::test
