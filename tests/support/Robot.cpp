#include "support/Robot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <filesystem>
#include <fstream>
#include <future>
#include <map>
#include <mutex>
#include <regex>
#include <stdexcept>
#include <utility>

#include "core/MessagePump.h"
#include "support/LateBound.h"

namespace quill::test {

namespace {

// What is to be done on the thread whose call a robot answers, in its order, and how much of it is
// not done.
std::mutex mutex;
std::deque<std::function<void()>> errands;
std::atomic<int> pending;

void CALLBACK RunErrand(HWND, UINT, UINT_PTR, DWORD)
{
    std::function<void()> errand;
    if (const std::lock_guard guard(mutex); !errands.empty()) {
        errand = std::move(errands.front());
        errands.pop_front();
    }
    if (!errand) return;
    errand();
    --pending;
}

constexpr DWORD kCallDeadline = 60'000; // milliseconds, like those below
constexpr DWORD kMoment = 100;
constexpr DWORD kPoll = 15;              // between two looks
constexpr DWORD kAnswerDeadline = 2'000; // for a window to answer a message
constexpr int kStillLooks = 6; // more than the server takes to bring a dialog to the front
constexpr wchar_t kMenuClass[] = L"#32768";

BOOL CALLBACK AddToList(HWND window, LPARAM list)
{
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    return TRUE;
}

// Whether the user can do something with it and it is what was asked for.
bool Fits(HWND window, const std::wstring& name, const std::wstring& text)
{
    if (!IsWindowVisible(window) || !IsWindowEnabled(window)) return false;
    if (!name.empty() && _wcsicmp(Desk::ClassOf(window).c_str(), name.c_str()) != 0) return false;
    std::wstring shown = text.empty() ? text : Desk::TextOf(window);
    return shown == text || (std::erase(shown, L'&') && shown == text);
}

void Send(std::vector<INPUT> inputs)
{
    const auto count = static_cast<UINT>(inputs.size());
    if (SendInput(count, inputs.data(), sizeof(INPUT)) != count)
        throw std::runtime_error("input was refused");
}

INPUT Mouse(POINT screen, DWORD flags)
{
    INPUT input{};
    input.type = INPUT_MOUSE;
    // Absolute positions count in 65536ths of the screen; half a pixel more hits its middle.
    input.mi.dx = MulDiv(2 * screen.x + 1, 32768, GetSystemMetrics(SM_CXSCREEN));
    input.mi.dy = MulDiv(2 * screen.y + 1, 32768, GetSystemMetrics(SM_CYSCREEN));
    input.mi.dwFlags = flags | MOUSEEVENTF_ABSOLUTE;
    return input;
}

// A key, or without one the character.
INPUT Key(WORD key, wchar_t unit, DWORD flags)
{
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = key ? static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC)) : unit;
    input.ki.dwFlags = flags | (key ? 0 : KEYEVENTF_UNICODE);
    if ((key >= VK_PRIOR && key <= VK_DOWN) || key == VK_DELETE)
        input.ki.dwFlags |= KEYEVENTF_EXTENDEDKEY;
    return input;
}

} // namespace

std::vector<HWND> Listed(HWND parent)
{
    std::vector<HWND> windows;
    if (parent)
        EnumChildWindows(parent, AddToList, reinterpret_cast<LPARAM>(&windows));
    else
        EnumWindows(AddToList, reinterpret_cast<LPARAM>(&windows));
    return windows;
}

Desk::Desk() : before_(Listed(nullptr)) {}

HWND Desk::WindowNow(const std::wstring& caption, const std::wstring& windowClass) const
{
    for (HWND window : Listed(nullptr))
        if (Fits(window, windowClass, caption) && (!caption.empty() || IsNew(window)))
            return window;
    return nullptr;
}

bool Desk::IsNew(HWND window) const
{
    return std::ranges::find(before_, window) == before_.end();
}

HWND Desk::Window(const std::wstring& caption, const std::wstring& windowClass)
{
    WaitFor(L"a window \"" + caption + L"\" " + windowClass,
            [&] { return (current_ = WindowNow(caption, windowClass)) != nullptr; });
    return current_;
}

HWND Desk::Control(const std::wstring& caption, const std::wstring& controlClass,
                   const std::wstring& text)
{
    HWND found = nullptr;
    WaitFor(L"a control " + controlClass + L':' + text + L" in a window \"" + caption + L'"', [&] {
        const HWND window = WindowNow(caption, {});
        if (!window) return false;
        const std::vector<HWND> controls = Listed(window);
        const auto control = std::ranges::find_if(
            controls, [&](HWND each) { return Fits(each, controlClass, text); });
        if (control == controls.end()) return false;
        current_ = window;
        found = *control;
        return true;
    });
    return found;
}

void Desk::WaitFor(const std::wstring& what, const std::function<bool()>& condition,
                   DWORD milliseconds)
{
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (!condition()) {
        if (GetTickCount64() > end) throw std::runtime_error("waited in vain for " + Narrow(what));
        Sleep(kPoll);
    }
}

void Desk::Settle(HWND window, const std::wstring& what, int looks,
                  const std::function<bool()>& condition)
{
    int seen = 0;
    WaitFor(L"the window \"" + TextOf(window) + L"\" to " + what, [&] {
        // A round trip: what its thread had to do before is done, timers that were due among it.
        DWORD_PTR answer = 0;
        SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, kAnswerDeadline, &answer);
        seen = condition() ? seen + 1 : 0;
        return seen == looks;
    });
}

void Desk::Click(HWND control, Button button)
{
    const SIZE size = SizeOf(control);
    ClickAt(control, {size.cx / 2, size.cy / 2}, button);
}

// Once the window has stood still for a while with nothing above it: one that has just come is
// brought to the front once more, which would undo half a click.
void Desk::ClickAt(HWND window, POINT point, Button button, int times)
{
    const HWND root = GetAncestor(window, GA_ROOT);
    POINT screen{};
    HWND front = nullptr;
    Settle(root, L"lie on top", kStillLooks, [&] {
        const POINT last = std::exchange(screen, point);
        const HWND lastFront = std::exchange(front, GetForegroundWindow());
        ClientToScreen(window, &screen);
        return screen.x == last.x && screen.y == last.y && front == lastFront &&
               GetAncestor(WindowFromPoint(screen), GA_ROOT) == root;
    });
    const bool left = button == Button::Left;
    std::vector<INPUT> inputs{Mouse(screen, MOUSEEVENTF_MOVE)};
    for (int time = 0; time < times; ++time) {
        inputs.push_back(Mouse(screen, left ? MOUSEEVENTF_LEFTDOWN : MOUSEEVENTF_RIGHTDOWN));
        inputs.push_back(Mouse(screen, left ? MOUSEEVENTF_LEFTUP : MOUSEEVENTF_RIGHTUP));
    }
    Send(std::move(inputs));
}

void Desk::Press(WORD key, WORD held, wchar_t unit)
{
    // A window that is new must keep the keyboard for a while.
    Settle(current_, L"have the keyboard", ready_ == current_ ? 1 : kStillLooks, [&] {
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        GetGUIThreadInfo(0, &info); // of the thread that has the keyboard
        return ClassOf(current_) == kMenuClass
                   ? info.hwndMenuOwner == current_
                   : GetForegroundWindow() == current_ && info.hwndFocus &&
                         GetAncestor(info.hwndFocus, GA_ROOT) == current_;
    });
    ready_ = current_;
    std::vector<INPUT> inputs{Key(key, unit, 0), Key(key, unit, KEYEVENTF_KEYUP)};
    if (held) {
        inputs.insert(inputs.begin(), Key(held, 0, 0));
        inputs.push_back(Key(held, 0, KEYEVENTF_KEYUP));
    }
    Send(std::move(inputs));
}

void Desk::PressKeys(std::wstring_view keys)
{
    static const std::map<std::wstring_view, WORD> names{
        {L"ENTER", VK_RETURN}, {L"ESC", VK_ESCAPE}, {L"TAB", VK_TAB},    {L"SPACE", VK_SPACE},
        {L"UP", VK_UP},        {L"DOWN", VK_DOWN},  {L"LEFT", VK_LEFT},  {L"RIGHT", VK_RIGHT},
        {L"HOME", VK_HOME},    {L"END", VK_END},    {L"DEL", VK_DELETE}, {L"BS", VK_BACK},
        {L"F4", VK_F4},        {L"SHIFT", VK_SHIFT}};
    static const std::map<wchar_t, WORD> holds{
        {L'^', VK_CONTROL}, {L'+', VK_SHIFT}, {L'%', VK_MENU}};
    WORD held = 0;
    for (size_t index = 0; index < keys.size(); ++index) {
        if (const auto hold = holds.find(keys[index]); hold != holds.end()) {
            held = hold->second;
            continue;
        }
        if (keys[index] == L'{') {
            const size_t end = keys.find(L'}', index);
            const auto name = names.find(keys.substr(index + 1, end - index - 1));
            if (name == names.end()) throw std::runtime_error("unknown key in " + Narrow(keys));
            Press(name->second, held);
            index = end;
        } else if (held) {
            Press(static_cast<WORD>(towupper(keys[index])), held);
        } else {
            Press(0, 0, keys[index]);
        }
        held = 0;
    }
}

void Desk::Act(const std::wstring& line, const Run& run)
{
    static const std::wregex form(
        LR"re((?:"([^"]*)" *)?(?:(?!\? |do |start )([^ :]*)(?::(?:"([^"]*)"|([^ ]*)))? *)?(.*))re");
    std::wsmatch parts;
    std::regex_match(line, parts, form);
    const std::wstring caption = parts[1], kind = parts[2];
    const std::wstring text = parts[3].str() + parts[4].str(), action = parts[5];
    std::wstring rest = action;
    const auto begins = [&](std::wstring_view word) {
        if (!rest.starts_with(word)) return false;
        rest.erase(0, word.size());
        return true;
    };
    POINT point{};
    if (action == L"after") {
        AwaitStarted();
    } else if (action == L"gone") {
        WaitFor(L"the end of the window " + caption, [&] { return !WindowNow(caption, kind); });
    } else if (begins(L"start ")) {
        if (!caption.empty()) {
            Window(caption);
            Sleep(kMoment); // the timers of its dialog have their turn
        }
        Start([=] { EXPECT_EQ(run(rest), "") << Narrow(rest); });
    } else if (const bool checks = rest.starts_with(L"? "); checks || begins(L"do ")) {
        Window(caption);
        std::string failure;
        const ULONGLONG end = GetTickCount64() + kDeadline;
        do
            Do([&] { failure = run(rest); });
        while (checks && !failure.empty() && GetTickCount64() < end);
        if (!failure.empty()) throw std::runtime_error(Narrow(rest) + ": " + failure);
    } else if (action == L"see" || begins(L"press ")) {
        Window(caption, kind);
        if (action != rest) PressKeys(rest);
    } else if (const HWND control = Control(caption, kind, text); action == L"click") {
        Click(control);
    } else if (swscanf(action.c_str(), L"click %ld %ld", &point.x, &point.y) == 2) {
        ClickAt(control, point);
    } else if (swscanf(action.c_str(), L"double %ld %ld", &point.x, &point.y) == 2) {
        ClickAt(control, point, Button::Left, 2);
    } else if (action == L"close") {
        PostMessageW(GetAncestor(control, GA_ROOT), WM_SYSCOMMAND, SC_CLOSE, 0);
    } else if (begins(L"menu")) {
        Click(control, Button::Right);
        const HWND menu = Window({}, kMenuClass);
        PressKeys(rest.substr(std::min(rest.find_first_not_of(L' '), rest.size())));
        // Not to be taken for the next one.
        WaitFor(L"the end of the menu", [&] { return !IsWindowVisible(menu); });
    } else if (begins(L"write ")) {
        std::ofstream(std::filesystem::path(rest)) << "written";
    } else if (begins(L"rest ")) {
        Sleep(std::stoul(rest));
    } else if (action != L"wait") {
        begins(L"keys ");
        PressKeys(rest);
    }
}

void Desk::Start(std::function<void()> action)
{
    ++pending;
    const std::lock_guard guard(mutex);
    errands.push_back(std::move(action));
}

void Desk::AwaitStarted()
{
    WaitFor(L"what was started", [] { return pending == 0; });
}

void Desk::Do(const std::function<void()>& action)
{
    // Both sides keep it: this one may go on before the other has come back from telling.
    const auto done = std::make_shared<std::promise<void>>();
    Start([&action, done] {
        action();
        done->set_value();
    });
    done->get_future().wait();
}

std::wstring Desk::TextOf(HWND window)
{
    std::wstring text(32768, L'\0');
    DWORD_PTR length = 0;
    // GetWindowText shows nothing of what is in another process's control.
    SendMessageTimeoutW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()),
                        SMTO_ABORTIFHUNG, kAnswerDeadline, &length);
    text.resize(length);
    return text;
}

LOGFONTW Desk::FontOf(HWND control)
{
    LOGFONTW font{};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)), sizeof font,
               &font);
    return font;
}

RECT Desk::PlaceOf(HWND window)
{
    RECT place{};
    GetWindowRect(window, &place);
    return place;
}

SIZE Desk::SizeOf(HWND window)
{
    const RECT place = PlaceOf(window);
    return {place.right - place.left, place.bottom - place.top};
}

std::wstring Desk::ClassOf(HWND window)
{
    wchar_t name[257];
    return {name, static_cast<size_t>(GetClassNameW(window, name, 257))};
}

Robot::Robot(Script script)
    : timer_(SetTimer(nullptr, 0, USER_TIMER_MINIMUM, RunErrand)),
      thread_([this, script = std::move(script)] { Run(script); })
{
}

Robot::~Robot()
{
    Finish();
}

void Robot::Run(const Script& script) noexcept
{
    try {
        script(desk_);
        desk_.AwaitStarted();
        if (WaitForSingleObject(callReturned_.get(), kCallDeadline) != WAIT_OBJECT_0)
            failure_ = "the call goes on after all that the robot was to do: is an answer missing?";
    } catch (const std::exception& error) {
        failure_ = error.what();
    }
    // The call that the robot was to answer must return, or the test hangs.
    while (!failure_.empty() && WaitForSingleObject(callReturned_.get(), 100) == WAIT_TIMEOUT)
        for (HWND window : Listed(nullptr))
            if (Fits(window, {}, {}) && desk_.IsNew(window)) PostMessageW(window, WM_CLOSE, 0, 0);
    SetEvent(done_.get());
}

bool Robot::Finish()
{
    if (thread_.joinable()) {
        SetEvent(callReturned_.get());
        HANDLE done = done_.get();
        while (MsgWaitForMultipleObjectsEx(1, &done, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE) !=
               WAIT_OBJECT_0)
            if (!DispatchPending()) break;
        thread_.join();
        KillTimer(nullptr, timer_);
        if (!failure_.empty()) ADD_FAILURE() << "robot: " << failure_;
    }
    return failure_.empty();
}

LastClient::LastClient(IUnknown* object)
{
    Check(object->QueryInterface(IID_PPV_ARGS(&connection_)));
    connection_->AddConnection(EXTCONN_STRONG, 0);
}

} // namespace quill::test
