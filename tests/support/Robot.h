// A user made of code: waits on a thread of its own for a control to appear, then uses mouse and
// keyboard, while the test is inside the call that shows the window.
//
//     Robot robot([](Desk& desk) {
//         const HWND ok = desk.Control(L"Title", L"Button", L"OK");
//         desk.Press(VK_DOWN);
//         desk.Click(ok);
//     });
//     const std::wstring chosen = list.Call(L"Selection", L"a\r\nb", 0, L"Title").Text();
//     // the destructor, or robot.Finish(), waits for the robot and reports its failure
//
// Controls are found in windows of any process.
#pragma once

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "core/Platform.h"

namespace quill::test {

// The screen as the robot uses it. What does not come true before the deadline ends the robot's
// script by an exception that says what it was waiting for. Points are in client pixels.
class Desk {
public:
    static constexpr DWORD kDeadline = 10'000; // milliseconds

    Desk();

    // The visible, enabled top-level window with this caption and class; null stands for any. The
    // windows that were there before the robot do not count when the caption is null.
    HWND Window(const wchar_t* caption, const wchar_t* windowClass = nullptr);

    // The visible, enabled control in such a window. Captions match with or without their `&`.
    HWND Control(const wchar_t* caption, const wchar_t* controlClass,
                 const wchar_t* text = nullptr);

    // All visible controls of a class, in the order of the tab key; null stands for any class.
    std::vector<HWND> Controls(HWND window, const wchar_t* controlClass = nullptr);

    // Waits until the condition holds; `what` says for what.
    void WaitFor(const std::wstring& what, const std::function<bool()>& condition,
                 DWORD milliseconds = kDeadline);
    void WaitUntilGone(HWND window);

    // Real input. The mouse waits until its target lies on top, the keys until the window last
    // found, or its control, is the one that hears them; a menu hears those of its thread.
    enum class Button { Left, Right };
    void Click(HWND control, Button button = Button::Left);
    void ClickAt(HWND window, POINT point, Button button = Button::Left, int times = 1);
    void Press(WORD key, std::initializer_list<WORD> held = {}); // VK_ codes
    void Type(std::wstring_view text);
    // Keys in the notation that script authors know: {NAME}, with ^ + % before for Ctrl, Shift,
    // Alt.
    void PressKeys(std::wstring_view keys);

    // Waits for this control (an empty text stands for any) and acts. Actions: click, double x y,
    // close, move x y, size x y (waits until its window has this size; 0: any), wait, rest
    // milliseconds; menu and keys: a right click, then the keys in its menu; write and a path: the
    // file appears; see waits for a window of this caption and class instead of a control, press
    // and keys types into it, gone waits until there is none, after until a
    // DuringWait has acted; everything else, or what follows
    // `keys`, is typed.
    void Act(const std::wstring& caption, const std::wstring& controlClass,
             const std::wstring& text, const std::wstring& action);
    // The same in one line: ["caption"] Class[:text or :"text"] action.
    void Act(const std::wstring& line);

    void Post(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    void Close(HWND window);                        // by its close box
    void Place(HWND window, const RECT& rectangle); // in screen pixels

    // What a control shows, of any process.
    static std::wstring TextOf(HWND window);
    static LOGFONTW FontOf(HWND control);

    // Where it is on the screen, and how large, in pixels.
    static RECT PlaceOf(HWND window);
    static SIZE SizeOf(HWND window);
    static std::wstring ClassOf(HWND window);

    // Closes the windows that appeared since the robot was made.
    void CloseNewWindows();

private:
    HWND FindWindowOnce(const wchar_t* caption, const wchar_t* windowClass) const;
    bool IsNew(HWND window) const;
    POINT Target(HWND window, POINT point);
    void WaitForKeys();

    std::vector<HWND> before_;
    HWND current_ = nullptr; // the window that was found last
    HWND ready_ = nullptr;   // the one that has had keys before
};

void ReportToGoogleTest(const std::string& failure);

// Runs a script on a Desk. A script that fails closes what it was to answer, so that the call
// behind returns, and is reported by Finish on the thread of the test.
class Robot {
public:
    using Script = std::function<void(Desk&)>;
    using Reporter = void (*)(const std::string& failure);

    explicit Robot(Script script, Reporter reporter = ReportToGoogleTest);
    ~Robot();
    Robot(const Robot&) = delete;
    Robot& operator=(const Robot&) = delete;

    // Waits for the end of the script, serving the windows of the calling thread meanwhile. True
    // when it ran to its end.
    bool Finish();

private:
    void Run() noexcept;

    const Script script_;
    const Reporter reporter_;
    Desk desk_;
    std::string failure_;
    const Event done_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    const Event callReturned_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::thread thread_;
};

// Scripts that most dialogs are answered with.
Robot::Script Keys(const wchar_t* caption, const wchar_t* controlClass, std::vector<WORD> keys);
Robot::Script ClickButton(const wchar_t* caption, const wchar_t* text = L"OK");
Robot::Script CloseBox(const wchar_t* caption);

// The object's only client, until it dies, as the platform reports it.
class LastClient {
public:
    explicit LastClient(IUnknown* object);
    void Die() { connection_->ReleaseConnection(EXTCONN_STRONG, 0, TRUE); }

private:
    ComPtr<IExternalConnection> connection_;
};

// Runs an action once on the calling thread when a call waits there, as the call of a second client
// or an event handler would come in; with a caption, once a window with that has been there for a
// moment, so that the timers of its dialog had their turn.
class DuringWait {
public:
    explicit DuringWait(std::function<void()> action, std::wstring caption = {});
    ~DuringWait();
    DuringWait(const DuringWait&) = delete;
    DuringWait& operator=(const DuringWait&) = delete;

private:
    UINT_PTR timer_;
};

} // namespace quill::test
