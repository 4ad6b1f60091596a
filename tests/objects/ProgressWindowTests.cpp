#include <gtest/gtest.h>

#include "core/Apartment.h"
#include "gui/windowfn.h"
#include "support/EventListener.h"
#include "support/Reaction.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"
#include "support/Values.h"
#include "windows/ProgressWindow.h"

namespace quill::test {
namespace {

constexpr wchar_t kTitle[] = L"QUILL ProgressWindow";

// Stands for the platform's taskbar object, and writes down what it is told.
class RecordingTaskbar final : public StandIn<ITaskbarList3> {
public:
    explicit RecordingTaskbar(std::vector<std::string>& calls) : calls_(calls) {}

    STDMETHODIMP HrInit() override { return Add("init"); }
    STDMETHODIMP SetProgressValue(HWND window, ULONGLONG done, ULONGLONG total) override
    {
        return Add("value " + std::to_string(done) + '/' + std::to_string(total), window);
    }
    STDMETHODIMP SetProgressState(HWND window, TBPFLAG state) override
    {
        return Add("state " + std::to_string(state), window);
    }
    STDMETHODIMP AddTab(HWND) override { return E_NOTIMPL; }
    STDMETHODIMP DeleteTab(HWND) override { return E_NOTIMPL; }
    STDMETHODIMP ActivateTab(HWND) override { return E_NOTIMPL; }
    STDMETHODIMP SetActiveAlt(HWND) override { return E_NOTIMPL; }
    STDMETHODIMP MarkFullscreenWindow(HWND, BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP RegisterTab(HWND, HWND) override { return E_NOTIMPL; }
    STDMETHODIMP UnregisterTab(HWND) override { return E_NOTIMPL; }
    STDMETHODIMP SetTabOrder(HWND, HWND) override { return E_NOTIMPL; }
    STDMETHODIMP SetTabActive(HWND, HWND, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP ThumbBarAddButtons(HWND, UINT, LPTHUMBBUTTON) override { return E_NOTIMPL; }
    STDMETHODIMP ThumbBarUpdateButtons(HWND, UINT, LPTHUMBBUTTON) override { return E_NOTIMPL; }
    STDMETHODIMP ThumbBarSetImageList(HWND, HIMAGELIST) override { return E_NOTIMPL; }
    STDMETHODIMP SetOverlayIcon(HWND, HICON, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP SetThumbnailTooltip(HWND, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP SetThumbnailClip(HWND, RECT*) override { return E_NOTIMPL; }

private:
    HRESULT Add(std::string call, HWND window = nullptr)
    {
        if (window && window != FindWindowW(nullptr, kTitle)) call += " elsewhere";
        calls_.push_back(std::move(call));
        return window == INVALID_HANDLE_VALUE ? E_INVALIDARG : S_OK;
    }

    std::vector<std::string>& calls_;
};

HWND Find()
{
    return FindWindowW(nullptr, kTitle);
}

HWND Child(const wchar_t* windowClass, const wchar_t* text = nullptr)
{
    return FindWindowExW(Find(), nullptr, windowClass, text);
}

LRESULT AskBar(UINT message, WPARAM wParam = 0)
{
    return SendMessageW(Child(PROGRESS_CLASSW), message, wParam, 0);
}

TEST(ProgressWindow, ValuesOutsideTheirLimitsAreIgnored)
{
    const std::tuple<const wchar_t*, int, int> cases[] = {
        // What is set, and what is there then.
        {L"ProgressStyle", 25, 25},
        {L"ProgressStyle", -1, 25},
        {L"ProgressStyle", 6, 0},
        {L"ProgressMarqueeTime", 1001, 30},
        {L"BtnNotifier", 3, 1},
        {L"MainTextColor", -1, 0xFFFFFF},
        {L"MainTextColor", INT_MIN + 8, INT_MIN + 8},
        {L"MainTextColor", INT_MIN + 9, 9},
        {L"MainTextColor", static_cast<int>(0xFF000000), 0x993300},
        {L"TBProState", 4, 4},
        {L"TBProState", 3, 4},
        {L"TBProgress", 3, 0},
    };
    for (const bool shown : {false, true}) {
        ScriptObject window = ScriptObject::Make(L"ProgressWindow");
        if (shown) window.Call(L"Create");
        for (const auto& [property, set, expected] : cases) {
            window.Put(property, set);
            EXPECT_EQ(window.Get(property), expected) << Narrow(property) << ' ' << set;
        }
        EXPECT_EQ(window.Call(L"SetProgressRange", 10, 5), false);
        EXPECT_EQ(window.Call(L"SetProgressRange", 0, 0), true);
        window.Put(L"MainText", std::wstring(100'000, L'm'));
        EXPECT_EQ(window.Get(L"Text"), std::wstring(1024, L'm'));
        window.Put(L"ButtonText", std::wstring(100'000, L'b'));
        EXPECT_EQ(window.Get(L"ButtonText"), std::wstring(100'000, L'b'));
    }
}

// Properties reach the window alike, whether they are set before it is there or after.
TEST(ProgressWindow, ShowsItsProperties)
{
    for (const bool before : {true, false}) {
        SCOPED_TRACE(before);
        ScriptObject window = ScriptObject::Make(L"ProgressWindow");
        if (!before) window.Call(L"Create", L"", 0, 1);
        window.Put(L"Text", L"main");
        window.Put(L"SubText", L"sub");
        window.Put(L"Button", 1);
        window.Put(L"ButtonText", L"Halt");
        window.Put(L"ButtonLabel", L"label");
        window.Put(L"ProgressStyle", 17);
        window.Call(L"SetProgressRange", 10, 30000);
        window.Call(L"SetProgressStep", 7);
        window.Put(L"ProgressColor", 0x112233);
        window.Put(L"ProgressBackColor", 0x445566);
        window.Put(L"Progress", 50);
        if (before) window.Call(L"Create", L"", 0, 1);
        for (const wchar_t* text : {L"main", L"sub", L"label"})
            EXPECT_NE(Child(L"Static", text), nullptr) << Narrow(text);
        EXPECT_TRUE(IsWindowEnabled(Child(L"Button", L"Halt")));
        const HWND bar = Child(PROGRESS_CLASSW);
        EXPECT_EQ(GetWindowLongW(bar, GWL_STYLE), 0x50000011);
        EXPECT_EQ(AskBar(PBM_GETRANGE, TRUE), 10);
        EXPECT_EQ(AskBar(PBM_GETRANGE, FALSE), 30000);
        EXPECT_EQ(AskBar(PBM_GETSTEP), 7);
        EXPECT_EQ(AskBar(PBM_GETBARCOLOR), 0x112233);
        EXPECT_EQ(AskBar(PBM_GETBKCOLOR), 0x445566);
        EXPECT_EQ(AskBar(PBM_GETPOS), 50);
        EXPECT_EQ(GetWindow(bar, GW_HWNDPREV), Child(L"Static", L"main")) << "it names the bar";

        window.Call(L"ProgressAdd", -20);
        window.Call(L"ProgressStep");
        EXPECT_EQ(window.Get(L"Progress"), 37);
        window.Put(L"ProgressStyle", 8); // a marquee stays where it is
        window.Put(L"Progress", 99);
        window.Call(L"ProgressAdd", 1);
        EXPECT_EQ(AskBar(PBM_GETPOS), 37);
    }
}

TEST(ProgressWindow, IsAsLargeAsItNeedsToBe)
{
    ScriptObject window = ScriptObject::Make(L"ProgressWindow");
    for (const auto& [asked, width] : {std::pair{359, 340}, {360, 360}, {900, 900}, {901, 340}}) {
        window.Put(L"Button", 0);
        window.Call(L"Create", L"", asked);
        const auto expectSize = [](long expectedWidth, long height) {
            EXPECT_EQ(Desk::SizeOf(Find()).cx, expectedWidth);
            EXPECT_EQ(Desk::SizeOf(Find()).cy, height);
        };
        expectSize(width, 200);
        window.Put(L"Button", 2);
        expectSize(width, 263);
        RECT bar = Desk::PlaceOf(Child(PROGRESS_CLASSW));
        MapWindowPoints(nullptr, Find(), reinterpret_cast<POINT*>(&bar), 2);
        EXPECT_EQ(bar.left, 10);
        EXPECT_EQ(bar.top, 80);
        EXPECT_EQ(bar.bottom - bar.top, 20);
        EXPECT_NEAR((bar.right - bar.left) * 15, width * 15 - 500, 15);
        ResizeWindow(Find(), 100, 800);
        expectSize(340, 263);
        window.Call(L"Remove");
    }
}

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

// The user works elsewhere, or has put the window away.
TEST(ProgressWindow, LeavesTheKeyboardWhereItIs)
{
    ScriptObject window = ScriptObject::Make(L"ProgressWindow");
    window.Put(L"Button", 1);
    window.Call(L"Create");
    EXPECT_EQ(GetFocus(), Child(L"Button", L"Stop"));
    const HWND elsewhere =
        CreateWindowExW(0, WC_STATICW, L"elsewhere", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 600, 400,
                        200, 100, nullptr, nullptr, nullptr, nullptr);
    SetForegroundWindow(elsewhere);
    for (const bool minimised : {false, true}) {
        if (minimised) ShowWindow(Find(), SW_SHOWMINNOACTIVE);
        for (const int button : {0, 2, 1}) {
            window.Put(L"Button", button);
            EXPECT_EQ(GetForegroundWindow(), elsewhere);
            EXPECT_EQ(IsIconic(Find()) != FALSE, minimised);
        }
        window.Put(L"Button", minimised ? 0 : 1);
        if (minimised) ShowWindow(Find(), SW_SHOWNOACTIVATE);
        EXPECT_EQ(Desk::SizeOf(Find()).cy, minimised ? 200 : 263);
        EXPECT_EQ(Desk::SizeOf(Find()).cx, 340);
    }
    DestroyWindow(elsewhere);
}

TEST(ProgressWindow, EachArmingGivesOneNotification)
{
    ScriptObject window = ScriptObject::Make(L"ProgressWindow");
    const EventListener listener(window.Dispatch());
    window.Put(L"Button", 1);
    window.Call(L"Create");
    const auto press = [&](int notifier) {
        window.Put(L"BtnNotifier", notifier);
        for (int time = 0; time < 2; ++time)
            SendMessageW(Child(L"Button", L"Stop"), BM_CLICK, 0, 0);
        return window.Get(L"BtnPressed").Number();
    };
    EXPECT_EQ(press(2), 1) << "armed once";
    EXPECT_EQ(press(1), 2);
    EXPECT_EQ(listener.Count(), 1U);
    window.Put(L"BtnPressed", 32767); // no further
    EXPECT_EQ(press(2), 32767);
    EXPECT_EQ(listener.Count(), 1U);

    // The close box is no press where the button cannot be pressed, and leaves it armed.
    for (const int button : {0, 2, 1}) {
        window.Put(L"Button", button);
        window.Put(L"BtnPressed", 0);
        window.Put(L"BtnNotifier", 2);
        SendMessageW(Find(), WM_CLOSE, 0, 0);
        EXPECT_EQ(Find() != nullptr, button == 1);
        EXPECT_EQ(window.Get(L"BtnPressed"), button == 1 ? 1 : 0);
        EXPECT_EQ(window.Get(L"BtnNotifier"), button == 1 ? 0 : 2);
        window.Call(L"Create");
    }
    EXPECT_EQ(listener.Count(), 2U);

    SendMessageW(Find(), WM_CLOSE, 0, 0); // nobody would hear of the button
    EXPECT_EQ(Find(), nullptr);
    window.Put(L"Progress", 40); // not lost on the next window
    for (const wchar_t* method : {L"ProgressStep", L"Flash", L"Remove"})
        window.Call(method);
    window.Call(L"Create");
    EXPECT_EQ(AskBar(PBM_GETPOS), 40);
}

// The window goes while its own button is being pressed, and so does the object.
TEST(ProgressWindow, HandlersMayDoWhatTheyLike)
{
    enum class Deed { Remove, MakeAnother, Release };
    for (const Deed deed : {Deed::Remove, Deed::MakeAnother, Deed::Release}) {
        ScriptObject window = ScriptObject::Make(L"ProgressWindow");
        window.Put(L"Button", 1);
        window.Put(L"BtnNotifier", 2);
        Reaction reaction([&] {
            if (deed == Deed::Release) return window.Release();
            window.Call(L"Remove");
            if (deed == Deed::MakeAnother) window.Call(L"Create");
        });
        reaction.Hear(window.Dispatch());
        window.Call(L"Create");
        const HWND first = Find();
        SendMessageW(Child(L"Button", L"Stop"), BM_CLICK, 0, 0);
        EXPECT_EQ(reaction.calls, 1);
        EXPECT_FALSE(IsWindow(first));
        EXPECT_EQ(Find() != nullptr, deed == Deed::MakeAnother);
    }
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
    EXPECT_EQ(Find(), nullptr);
    UnhookWindowsHookEx(hook);
    window.Call(L"Create");
    EXPECT_NE(Find(), nullptr);
}

class TaskbarTest : public testing::Test {
protected:
    using Calls = std::vector<std::string>;

    TaskbarTest()
    {
        Seam<Taskbars>().create = [this] {
            return ComPtr<ITaskbarList3>(new RecordingTaskbar(calls_));
        };
    }
    ~TaskbarTest() override
    {
        Seam<Taskbars>() = std::move(platform_);
        ThisApartment().osVersion = QueryOsVersion();
    }

    // What the taskbar was told since the last time.
    Calls Told() { return std::exchange(calls_, {}); }

    Calls calls_;
    Taskbars platform_ = Seam<Taskbars>();
};

TEST_F(TaskbarTest, FollowsTheBar)
{
    ScriptObject window = ScriptObject::Make(L"ProgressWindow");
    window.Put(L"TBProgress", 2);
    window.Put(L"Progress", 20);
    EXPECT_EQ(Told(), Calls{"init"}) << "no window, nothing to tell";
    window.Call(L"Create");
    EXPECT_EQ(Told(), Calls());
    SendMessageW(Find(), RegisterWindowMessageW(L"TaskbarButtonCreated"), 0, 0);
    EXPECT_EQ(Told(), (Calls{"value 200000/1000000", "state 2"}));

    const auto put = [&](const wchar_t* property, auto value) {
        window.Put(property, value);
        return Told();
    };
    EXPECT_EQ(put(L"Progress", 30), Calls{"value 300000/1000000"});
    window.Call(L"ProgressAdd", 5);
    window.Call(L"ProgressStep");
    window.Call(L"SetProgressRange", 10, 60);
    EXPECT_EQ(Told(),
              (Calls{"value 350000/1000000", "value 450000/1000000", "value 450000/500000"}));
    EXPECT_EQ(put(L"ProgressState", 3), Calls{"state 8"});
    EXPECT_EQ(put(L"ProgressState", 9), Calls{"state 8"}) << "ignored, and told again";
    EXPECT_EQ(put(L"ProgressStyle", 8), Calls{"state 1"});
    EXPECT_EQ(put(L"ProgressMarquee", false), Calls{"state 0"});
    EXPECT_EQ(put(L"ProgressStyle", 0), Calls{"state 8"});
    for (const wchar_t* own : {L"TBProState", L"TBProValue", L"TBProTotal"})
        EXPECT_EQ(put(own, 1), Calls());
    EXPECT_EQ(window.Get(L"TBProValue"), 45);
    window.Put(L"Progress", 32767);
    EXPECT_EQ(ErrorOf([&] { window.Call(L"ProgressAdd", 1); }).number, 0x800A0006U);
    Told();
    EXPECT_EQ(put(L"TBProgress", 0), Calls{"state 0"});
    EXPECT_EQ(put(L"Progress", 1), Calls());
}

TEST_F(TaskbarTest, GoesByTheScriptOrNotAtAll)
{
    ScriptObject window = ScriptObject::Make(L"ProgressWindow");
    window.Call(L"Create");
    window.Put(L"TBProgress", 1);
    EXPECT_EQ(Told(), (Calls{"init", "value 0/1000000", "state 2"}));
    window.Put(L"TBProState", 0);
    window.Put(L"TBProValue", 2); // the value alone
    EXPECT_EQ(Told(), (Calls{"state 0", "value 20000/1000000"}));
    window.Put(L"TBProState", 4);
    window.Put(L"TBProState", 4);
    window.Put(L"TBProValue", 3);
    window.Put(L"TBProTotal", 9);
    window.Put(L"Progress", 50);
    window.Put(L"ProgressState", 3);
    EXPECT_EQ(Told(), (Calls{"state 4", "value 30000/1000000", "value 30000/90000"}));
    window.Call(L"Remove");
    window.Put(L"TBProValue", 4);
    EXPECT_EQ(Told(), Calls());

    window.Call(L"TB_SetProgressState", 1234, 77);
    window.Call(L"TB_SetProgressValue", 0, Currency(10'000), -1);
    EXPECT_EQ(Told(), (Calls{"state 77 elsewhere", "value 10000/18446744073709541616"}));
    EXPECT_EQ(ErrorOf([&] { window.Call(L"TB_SetProgressState", -1, 0); }).number,
              static_cast<unsigned>(E_INVALIDARG));
    Told();

    ThisApartment().osVersion = 600;
    ScriptObject old = ScriptObject::Make(L"ProgressWindow");
    old.Put(L"TBProgress", 1);
    EXPECT_EQ(old.Get(L"TBProgress"), 0);
    EXPECT_EQ(ErrorOf([&] { old.Call(L"TB_SetProgressState", 0, 0); }).number, 0x800A005BU);
    EXPECT_EQ(Told(), Calls());
}

// The platform's own taskbar object takes all of it.
TEST(ProgressWindow, TellsTheRealTaskbar)
{
    ScriptObject window = ScriptObject::Make(L"ProgressWindow");
    window.Put(L"TBProgress", 2);
    EXPECT_EQ(window.Get(L"TBProgress"), 2);
    window.Call(L"Create");
    for (int update = 0; update < 2'000; ++update) {
        window.Put(L"Progress", update % 100);
        window.Put(L"SubText", update % 2 ? L"odd" : L"even");
    }
    EXPECT_EQ(window.Get(L"TBProValue"), 99);
}

} // namespace
} // namespace quill::test
