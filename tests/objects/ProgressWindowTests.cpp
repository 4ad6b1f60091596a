#include <gtest/gtest.h>

#include "core/StartUp.h"
#include "gui/windowfn.h"
#include "support/EventListener.h"
#include "support/Robot.h"
#include "support/ScriptObject.h"
#include "windows/ProgressWindow.h"

namespace quill::test {
namespace {

constexpr wchar_t kTitle[] = L"QUILL ProgressWindow";

// Stands for the platform's taskbar object, and writes down what it is told.
class RecordingTaskbar final : public ITaskbarList3 {
public:
    explicit RecordingTaskbar(std::vector<std::string>& calls) : calls_(calls) {}

    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override
    {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }
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
    ~RecordingTaskbar() = default;

    HRESULT Add(std::string call, HWND window = nullptr)
    {
        if (window && window != FindWindowW(nullptr, kTitle)) call += " elsewhere";
        calls_.push_back(std::move(call));
        return window == INVALID_HANDLE_VALUE ? E_INVALIDARG : S_OK;
    }

    std::vector<std::string>& calls_;
    ULONG references_ = 0;
};

// Connects a function of the test to the object's event.
class Handler final : public IDispatch {
public:
    explicit Handler(std::function<void()> body) : body_(std::move(body)) {}

    static void Connect(ScriptObject& object, std::function<void()> body)
    {
        ComPtr<IConnectionPointContainer> container;
        ComPtr<IConnectionPoint> point;
        DWORD cookie = 0;
        Check(object.Dispatch()->QueryInterface(IID_PPV_ARGS(&container)));
        Check(container->FindConnectionPoint(DIID___ProgressWindow, &point));
        Check(point->Advise(new Handler(std::move(body)), &cookie));
    }

    STDMETHODIMP QueryInterface(REFIID id, void** object) override
    {
        *object = id == IID_IUnknown || id == IID_IDispatch ? this : nullptr;
        if (*object) AddRef();
        return *object ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() override
    {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }
    STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                        UINT*) override
    {
        body_();
        return S_OK;
    }

private:
    ~Handler() = default;

    const std::function<void()> body_;
    ULONG references_ = 0;
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
    struct Case {
        const wchar_t* property;
        std::vector<std::pair<int, int>> puts; // what is set, and what is there then
    };
    const Case cases[] = {
        {L"ProgressStyle", {{25, 25}, {-1, 25}, {6, 0}}},
        {L"ProgressMarqueeTime", {{1000, 1000}, {1001, 1000}, {-1, 1000}, {0, 30}}},
        {L"ProgressState", {{3, 3}, {0, 3}, {4, 3}}},
        {L"Button", {{2, 2}, {3, 2}, {-1, 2}}},
        {L"BtnNotifier", {{2, 2}, {3, 2}, {-1, 2}, {0, 0}}},
        {L"BtnPressed", {{7, 7}, {-1, 7}, {0, 0}}},
        {L"ErrorLevel", {{0, 0}, {2, 0}, {1, 1}}},
        {L"MainTextColor",
         {{-1, 0xFFFFFF},
          {static_cast<int>(0x80000008), static_cast<int>(0x80000008)},
          {static_cast<int>(0x80000009), 9},
          {static_cast<int>(0xFF000000), 0x993300}}},
        {L"TBProState", {{4, 4}, {3, 4}, {-1, 4}, {16, 4}}},
        {L"TBProValue", {{7, 7}, {-1, 7}}},
        {L"TBProTotal", {{0, 0}, {-1, 0}}},
        {L"TBProgress", {{3, 0}, {-1, 0}}},
    };
    for (const bool shown : {false, true}) {
        ScriptObject window = ScriptObject::Make(L"ProgressWindow");
        if (shown) window.Call(L"Create");
        for (const Case& c : cases)
            for (const auto& [set, expected] : c.puts) {
                window.Put(c.property, set);
                EXPECT_EQ(window.Get(c.property), expected) << Narrow(c.property) << ' ' << set;
            }
        EXPECT_EQ(window.Call(L"SetProgressRange", 10, 5), false);
        EXPECT_EQ(window.Call(L"SetProgressRange", -1, 5), false);
        EXPECT_EQ(window.Call(L"SetProgressRange", 0, 0), true);
        window.Put(L"MainText", std::wstring(100'000, L'm'));
        EXPECT_EQ(window.Get(L"Text"), std::wstring(1024, L'm'));
        for (const wchar_t* whole : {L"ButtonText", L"ButtonLabel"}) {
            window.Put(whole, std::wstring(100'000, L'b'));
            EXPECT_EQ(window.Get(whole), std::wstring(100'000, L'b'));
        }
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
        window.Put(L"ProgressState", 2);
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
        // Wine's bar knows no states, so PBM_GETSTATE tells nothing there.
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
    const auto twips = [](LONG pixels) { return pixels * 15; };
    ScriptObject window = ScriptObject::Make(L"ProgressWindow");
    for (const auto& [asked, width] :
         {std::pair{359, 340}, {360, 360}, {900, 900}, {901, 340}, {-1, 340}}) {
        window.Put(L"Button", 0);
        window.Call(L"Create", L"", asked);
        const auto place = [](HWND control) {
            RECT rectangle{};
            GetWindowRect(control, &rectangle);
            MapWindowPoints(nullptr, Find(), reinterpret_cast<POINT*>(&rectangle), 2);
            return rectangle;
        };
        const auto outer = [] {
            RECT rectangle{};
            GetWindowRect(Find(), &rectangle);
            return SIZE{rectangle.right - rectangle.left, rectangle.bottom - rectangle.top};
        };
        EXPECT_EQ(outer().cx, width);
        EXPECT_EQ(outer().cy, 200);
        window.Put(L"Button", 2);
        EXPECT_EQ(outer().cy, 263);
        const RECT bar = place(Child(PROGRESS_CLASSW));
        EXPECT_EQ(bar.left, 10);
        EXPECT_EQ(bar.top, 80);
        EXPECT_EQ(bar.bottom - bar.top, 20);
        EXPECT_NEAR(twips(bar.right - bar.left), twips(width) - 500, 15);
        EXPECT_NEAR(twips(place(Child(L"Button", L"Stop")).left), twips(width) - 1540, 15);
        ResizeWindow(Find(), 100, 800);
        EXPECT_EQ(outer().cx, 340);
        EXPECT_EQ(outer().cy, 263);
        window.Call(L"Remove");
    }
}

TEST(ProgressWindow, EachArmingGivesOneNotification)
{
    ScriptObject window = ScriptObject::Make(L"ProgressWindow");
    const EventListener listener(window.Dispatch());
    window.Put(L"Button", 1);
    window.Put(L"BtnNotifier", 2);
    window.Call(L"Create");
    Robot robot([&](Desk& desk) {
        const HWND button = desk.Control(kTitle, L"Button", L"Stop");
        desk.Click(button);
        desk.WaitFor(L"the event", [&] { return listener.Count() == 1; });
        desk.Press(VK_SPACE); // no longer armed
    });
    robot.Finish();
    EXPECT_EQ(window.Get(L"BtnPressed"), 1);
    EXPECT_EQ(window.Get(L"BtnNotifier"), 0);

    const auto press = [&](int notifier) {
        window.Put(L"BtnNotifier", notifier);
        SendMessageW(Child(L"Button", L"Stop"), BM_CLICK, 0, 0);
    };
    press(1);
    EXPECT_EQ(window.Get(L"BtnPressed"), 2);
    EXPECT_EQ(listener.Count(), 1U);
    window.Put(L"BtnPressed", 32767); // no further
    press(2);
    EXPECT_EQ(window.Get(L"BtnPressed"), 32767);
    EXPECT_EQ(listener.Count(), 1U);
    EXPECT_NE(Find(), nullptr);
}

TEST(ProgressWindow, TheCloseBoxIsHeardOf)
{
    ScriptObject window = ScriptObject::Make(L"ProgressWindow");
    const EventListener listener(window.Dispatch());
    window.Put(L"Button", 1);
    window.Call(L"Create");
    SendMessageW(Find(), WM_CLOSE, 0, 0);
    EXPECT_NE(Find(), nullptr) << "it pressed the button";
    EXPECT_EQ(window.Get(L"BtnPressed"), 1);
    SendMessageW(Find(), WM_CLOSE, 0, 0);
    EXPECT_EQ(Find(), nullptr) << "nobody would hear of the button";
    EXPECT_EQ(window.Get(L"BtnPressed"), 2);
    window.Put(L"Progress", 40); // not lost on the next window
    for (const wchar_t* method : {L"ProgressStep", L"Flash", L"Remove"})
        window.Call(method);

    window.Put(L"Button", 0);
    window.Put(L"BtnNotifier", 2);
    window.Call(L"Create");
    EXPECT_EQ(AskBar(PBM_GETPOS), 40);
    SendMessageW(Find(), WM_CLOSE, 0, 0);
    EXPECT_EQ(Find(), nullptr);
    EXPECT_EQ(window.Get(L"BtnPressed"), 3);
    EXPECT_EQ(listener.Count(), 1U);
}

// The window goes while its own button is being pressed, and so does the object.
TEST(ProgressWindow, HandlersMayDoWhatTheyLike)
{
    enum class Deed { Remove, MakeAnother, Release };
    for (const Deed deed : {Deed::Remove, Deed::MakeAnother, Deed::Release}) {
        auto window = std::make_unique<ScriptObject>(ScriptObject::Make(L"ProgressWindow"));
        window->Put(L"Button", 1);
        window->Put(L"BtnNotifier", 2);
        Handler::Connect(*window, [&] {
            if (deed == Deed::Release) {
                window.reset();
                return;
            }
            window->Call(L"Remove");
            if (deed == Deed::MakeAnother) window->Call(L"Create");
        });
        window->Call(L"Create");
        const HWND first = Find();
        SendMessageW(Child(L"Button", L"Stop"), BM_CLICK, 0, 0);
        EXPECT_FALSE(IsWindow(first));
        EXPECT_EQ(Find() != nullptr, deed == Deed::MakeAnother);
        if (deed == Deed::MakeAnother)
            SendMessageW(Child(L"Button", L"Stop"), BM_CLICK, 0, 0); // not armed, nothing happens
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
        TaskbarOfThread() = [this] { return ComPtr<ITaskbarList3>(new RecordingTaskbar(calls_)); };
    }
    ~TaskbarTest() override
    {
        TaskbarOfThread() = std::move(platform_);
        ThisApartment().osVersion = QueryOsVersion();
    }

    // What the taskbar was told since the last time.
    Calls Told() { return std::exchange(calls_, {}); }

    Calls calls_;
    TaskbarFactory platform_ = TaskbarOfThread();
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

    Variant one;
    V_VT(&one) = VT_CY;
    V_CY(&one).int64 = 10000;
    window.Call(L"TB_SetProgressState", 1234, 77);
    window.Call(L"TB_SetProgressValue", 0, one, -1);
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
