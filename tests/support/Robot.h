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

// The children of a window with theirs; of null, the top-level windows.
std::vector<HWND> Listed(HWND parent);

// The screen as the robot uses it. What does not come true before the deadline ends the robot's
// script by an exception that says what it was waiting for. Points are in client pixels.
class Desk {
public:
    static constexpr DWORD kDeadline = 30'000; // milliseconds

    Desk();

    // The visible, enabled top-level window with this caption and class; an empty text stands for
    // any. The windows that were there before the robot do not count when the caption is empty.
    HWND Window(const std::wstring& caption, const std::wstring& windowClass = {});

    // The visible, enabled control in such a window. Captions match with or without their `&`.
    HWND Control(const std::wstring& caption, const std::wstring& controlClass,
                 const std::wstring& text = {});

    // Waits until the condition holds; `what` says for what.
    void WaitFor(const std::wstring& what, const std::function<bool()>& condition,
                 DWORD milliseconds = kDeadline);

    // Real input. The mouse waits until its target lies on top, the keys until the window last
    // found, or its control, is the one that hears them; a menu hears those of its thread.
    enum class Button { Left, Right };
    void Click(HWND control, Button button = Button::Left);
    void ClickAt(HWND window, POINT point, Button button = Button::Left, int times = 1);
    void Press(WORD key, WORD held = 0, wchar_t unit = 0); // VK_ codes; without a key, the unit
    // Keys in the notation that script authors know: {NAME}, with ^ + % before for Ctrl, Shift,
    // Alt.
    void PressKeys(std::wstring_view keys);

    // One line of a table: ["caption"] [Class[:text or :"text"]] action. Waits for this control and
    // acts: click [x y], double x y, close, wait, rest milliseconds; menu [keys]: a right
    // click, then the keys in its menu; write path: the file appears; everything else, or what
    // follows `keys`, is typed. These wait for a window of this caption and class instead: see;
    // press keys; gone, until there is none; do and start run a statement, and ? checks an
    // expression until it holds: by `run`, on the thread whose call the robot answers. It returns
    // what is wrong. The robot goes on while a started one runs, up to the line `after`.
    using Run = std::function<std::string(const std::wstring& line)>;
    void Act(const std::wstring& line, const Run& run = {});

    // Runs this on the thread whose call the robot answers, when it next waits there, as the call
    // of a second client or an event handler would come in; Do waits for its end.
    void Start(std::function<void()> action);
    void AwaitStarted();
    void Do(const std::function<void()>& action);

    bool IsNew(HWND window) const; // since the robot was made

    // What a control shows, of any process.
    static std::wstring TextOf(HWND window);
    static LOGFONTW FontOf(HWND control);

    // Where it is on the screen, and how large, in pixels.
    static RECT PlaceOf(HWND window);
    static SIZE SizeOf(HWND window);
    static std::wstring ClassOf(HWND window);

private:
    HWND WindowNow(const std::wstring& caption, const std::wstring& windowClass) const;
    // Waits until the condition holds at this many looks in a row.
    void Settle(HWND window, const std::wstring& what, int looks,
                const std::function<bool()>& condition);

    std::vector<HWND> before_;
    HWND current_ = nullptr; // the window that was found last
    HWND ready_ = nullptr;   // the one that has had keys before
};

// Runs a script on a Desk. A script that fails closes what it was to answer, so that the call
// behind returns, and is reported by Finish on the thread of the test.
class Robot {
public:
    using Script = std::function<void(Desk&)>;

    explicit Robot(Script script);
    ~Robot();
    Robot(const Robot&) = delete;
    Robot& operator=(const Robot&) = delete;

    // Waits for the end of the script, serving the windows of the calling thread meanwhile. True
    // when it ran to its end.
    bool Finish();

private:
    void Run(const Script& script) noexcept;

    Desk desk_;
    std::string failure_;
    const Event done_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    const Event callReturned_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    const UINT_PTR timer_;
    std::thread thread_;
};

// The object's only client, until it dies, as the platform reports it.
class LastClient {
public:
    explicit LastClient(IUnknown* object);
    void Die() { connection_->ReleaseConnection(EXTCONN_STRONG, 0, TRUE); }

private:
    ComPtr<IExternalConnection> connection_;
};

} // namespace quill::test
