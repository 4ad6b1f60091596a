#include "support/Robot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "core/MessagePump.h"
#include "support/LateBound.h"

namespace quill::test {

namespace {

// What other threads are to do, in its order, and how many of those are not done.
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

constexpr DWORD kCallDeadline = 60'000;
constexpr DWORD kMoment = 100; // milliseconds
constexpr DWORD kPoll = 15;    // milliseconds between two looks
constexpr int kStillLooks = 6; // more than the server takes to bring a dialog to the front
constexpr wchar_t kMenuClass[] = L"#32768";
constexpr DWORD kAnswerDeadline = 2'000; // for a window to answer a message

BOOL CALLBACK AddToList(HWND window, LPARAM list)
{
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    return TRUE;
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

namespace {

bool ShowsText(HWND window, const wchar_t* text)
{
    if (!text) return true;
    std::wstring shown = Desk::TextOf(window);
    if (shown == text) return true;
    std::erase(shown, L'&');
    return shown == text;
}

bool IsOfClass(HWND window, const wchar_t* name)
{
    return !name || _wcsicmp(Desk::ClassOf(window).c_str(), name) == 0;
}

bool IsUsable(HWND window)
{
    return IsWindowVisible(window) && IsWindowEnabled(window);
}

std::wstring Quoted(const wchar_t* text)
{
    return text ? L'"' + std::wstring(text) + L'"' : std::wstring(L"any");
}

using Inputs = std::vector<INPUT>;

void Send(Inputs inputs)
{
    const auto count = static_cast<UINT>(inputs.size());
    if (SendInput(count, inputs.data(), sizeof(INPUT)) != count)
        throw std::runtime_error("input was refused");
}

void AddMouse(Inputs& inputs, POINT screen, std::initializer_list<DWORD> steps)
{
    for (const DWORD flags : steps) {
        INPUT& input = inputs.emplace_back();
        input.type = INPUT_MOUSE;
        // Absolute positions count in 65536ths of the screen; half a pixel more hits its middle.
        input.mi.dx = MulDiv(2 * screen.x + 1, 32768, GetSystemMetrics(SM_CXSCREEN));
        input.mi.dy = MulDiv(2 * screen.y + 1, 32768, GetSystemMetrics(SM_CYSCREEN));
        input.mi.dwFlags = flags | MOUSEEVENTF_ABSOLUTE;
    }
}

// A key, or without one the character.
void AddKey(Inputs& inputs, WORD key, wchar_t unit, DWORD flags)
{
    INPUT& input = inputs.emplace_back();
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = key ? static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC)) : unit;
    input.ki.dwFlags = flags | (key ? 0 : KEYEVENTF_UNICODE);
    if ((key >= VK_PRIOR && key <= VK_DOWN) || key == VK_DELETE)
        input.ki.dwFlags |= KEYEVENTF_EXTENDEDKEY;
}

// A round trip: what the window's thread had to do before is done, timers that were due among it.
void WaitForAnswer(HWND window)
{
    DWORD_PTR answer = 0;
    SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, kAnswerDeadline, &answer);
}

} // namespace

Desk::Desk() : before_(Listed(nullptr)) {}

HWND Desk::FindWindowOnce(const wchar_t* caption, const wchar_t* windowClass) const
{
    for (HWND window : Listed(nullptr))
        if (IsUsable(window) && IsOfClass(window, windowClass) &&
            (caption ? ShowsText(window, caption) : IsNew(window)))
            return window;
    return nullptr;
}

bool Desk::IsNew(HWND window) const
{
    return std::find(before_.begin(), before_.end(), window) == before_.end();
}

HWND Desk::Window(const wchar_t* caption, const wchar_t* windowClass)
{
    HWND found = nullptr;
    WaitFor(L"a window with caption " + Quoted(caption) + L" of class " + Quoted(windowClass),
            [&] { return (found = FindWindowOnce(caption, windowClass)) != nullptr; });
    return current_ = found;
}

HWND Desk::Control(const wchar_t* caption, const wchar_t* controlClass, const wchar_t* text)
{
    HWND found = nullptr;
    WaitFor(L"a control of class " + Quoted(controlClass) + L" with text " + Quoted(text) +
                L" in a window with caption " + Quoted(caption),
            [&] {
                const HWND window = FindWindowOnce(caption, nullptr);
                if (!window) return false;
                for (HWND control : Listed(window)) {
                    if (!IsUsable(control) || !IsOfClass(control, controlClass) ||
                        !ShowsText(control, text))
                        continue;
                    current_ = window;
                    found = control;
                    return true;
                }
                return false;
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

void Desk::WaitUntilGone(HWND window)
{
    WaitFor(L"the window to go", [&] { return !IsWindowVisible(window); });
}

// The point on the screen, once the window has stood still there for a while with nothing above it:
// one that has just come is brought to the front once more, which would undo half a click.
POINT Desk::Target(HWND window, POINT point)
{
    const HWND root = GetAncestor(window, GA_ROOT);
    POINT screen{};
    POINT last{-1, -1};
    HWND lastFront = nullptr;
    int looks = 0;
    WaitFor(L"the window " + Quoted(TextOf(root).c_str()) + L" to lie on top", [&] {
        WaitForAnswer(root);
        screen = point;
        ClientToScreen(window, &screen);
        const HWND front = GetForegroundWindow();
        const bool still = screen.x == last.x && screen.y == last.y && front == lastFront &&
                           GetAncestor(WindowFromPoint(screen), GA_ROOT) == root;
        last = screen;
        lastFront = front;
        looks = still ? looks + 1 : 0;
        return looks == kStillLooks;
    });
    return screen;
}

void Desk::Click(HWND control, Button button)
{
    const SIZE size = SizeOf(control);
    ClickAt(control, {size.cx / 2, size.cy / 2}, button);
}

void Desk::ClickAt(HWND window, POINT point, Button button, int times)
{
    const POINT target = Target(window, point);
    Inputs inputs;
    AddMouse(inputs, target, {MOUSEEVENTF_MOVE});
    for (int time = 0; time < times; ++time)
        if (button == Button::Left)
            AddMouse(inputs, target, {MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP});
        else
            AddMouse(inputs, target, {MOUSEEVENTF_RIGHTDOWN, MOUSEEVENTF_RIGHTUP});
    Send(std::move(inputs));
}

void Desk::WaitForKeys()
{
    int looks = ready_ == current_ ? kStillLooks : 1; // a window that is new must keep the keyboard
    WaitFor(L"the window " + Quoted(TextOf(current_).c_str()) + L" to have the keyboard", [&] {
        WaitForAnswer(current_);
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        GetGUIThreadInfo(0, &info); // of the thread that has the keyboard
        const bool hears = ClassOf(current_) == kMenuClass
                               ? info.hwndMenuOwner == current_
                               : GetForegroundWindow() == current_ && info.hwndFocus &&
                                     GetAncestor(info.hwndFocus, GA_ROOT) == current_;
        return hears && looks++ >= kStillLooks;
    });
    ready_ = current_;
}

void Desk::Press(WORD key, WORD held)
{
    WaitForKeys();
    Inputs inputs;
    if (held) AddKey(inputs, held, 0, 0);
    AddKey(inputs, key, 0, 0);
    AddKey(inputs, key, 0, KEYEVENTF_KEYUP);
    if (held) AddKey(inputs, held, 0, KEYEVENTF_KEYUP);
    Send(std::move(inputs));
}

void Desk::Type(wchar_t unit)
{
    WaitForKeys();
    Inputs inputs;
    AddKey(inputs, 0, unit, 0);
    AddKey(inputs, 0, unit, KEYEVENTF_KEYUP);
    Send(std::move(inputs));
}

void Desk::PressKeys(std::wstring_view keys)
{
    static const std::map<std::wstring_view, WORD> names{
        {L"ENTER", VK_RETURN}, {L"ESC", VK_ESCAPE}, {L"TAB", VK_TAB},    {L"SPACE", VK_SPACE},
        {L"UP", VK_UP},        {L"DOWN", VK_DOWN},  {L"LEFT", VK_LEFT},  {L"RIGHT", VK_RIGHT},
        {L"HOME", VK_HOME},    {L"END", VK_END},    {L"DEL", VK_DELETE}, {L"BS", VK_BACK},
        {L"PGUP", VK_PRIOR},   {L"PGDN", VK_NEXT},  {L"F4", VK_F4},      {L"SHIFT", VK_SHIFT}};
    WORD held = 0;
    for (size_t index = 0; index < keys.size(); ++index) {
        const wchar_t unit = keys[index];
        if (unit == L'^' || unit == L'+' || unit == L'%') {
            held = unit == L'^' ? VK_CONTROL : unit == L'+' ? VK_SHIFT : VK_MENU;
            continue;
        }
        if (unit == L'{') {
            const size_t end = keys.find(L'}', index);
            const auto found = names.find(keys.substr(index + 1, end - index - 1));
            if (found == names.end()) throw std::runtime_error("unknown key in " + Narrow(keys));
            Press(found->second, held);
            index = end;
        } else if (held) {
            Press(static_cast<WORD>(towupper(unit)), held);
        } else {
            Type(unit);
        }
        held = 0;
    }
}

void Desk::Act(const std::wstring& line, const Run& run)
{
    std::wstring_view rest = line;
    // Up to this character, or what stands in quotation marks.
    const auto take = [&](std::wstring_view ends) {
        const bool quoted = rest.starts_with(L'"');
        const size_t end = std::min(rest.find_first_of(quoted ? L"\"" : ends, quoted), rest.size());
        const std::wstring taken(rest.substr(quoted, end - quoted));
        rest.remove_prefix(std::min(end + quoted, rest.size()));
        return taken;
    };
    const auto skip = [&] {
        rest.remove_prefix(std::min(rest.find_first_not_of(L' '), rest.size()));
    };
    const std::wstring caption = rest.starts_with(L'"') ? take({}) : std::wstring();
    skip();
    std::wstring controlClass, text;
    if (!rest.starts_with(L"? ") && !rest.starts_with(L"do ")) {
        controlClass = take(L": ");
        if (rest.starts_with(L':')) {
            rest.remove_prefix(1);
            text = take(L" ");
        }
        skip();
    }
    const std::wstring action(rest);
    const auto any = [](const std::wstring& name) { return name.empty() ? nullptr : name.c_str(); };
    const auto begins = [&](std::wstring_view word) {
        if (!rest.starts_with(word)) return false;
        rest.remove_prefix(word.size());
        return true;
    };
    if (action == L"after") return WaitFor(L"what happens meanwhile", [] { return pending == 0; });
    if (action == L"gone")
        return WaitFor(L"the window " + Quoted(any(caption)) + L" to go",
                       [&] { return !FindWindowOnce(any(caption), any(controlClass)); });
    const bool checks = rest.starts_with(L"? ");
    if (checks || begins(L"do ")) {
        Window(any(caption), any(controlClass));
        std::string failure;
        const ULONGLONG end = GetTickCount64() + kDeadline;
        do
            Do([&] { failure = run(std::wstring(rest)); });
        while (checks && !failure.empty() && GetTickCount64() < end);
        if (!failure.empty()) throw std::runtime_error(Narrow(rest) + ": " + failure);
        return;
    }
    if (action == L"see" || begins(L"press ")) {
        Window(any(caption), any(controlClass));
        return PressKeys(action == L"see" ? std::wstring_view() : rest);
    }
    const HWND control = Control(any(caption), any(controlClass), any(text));
    POINT point{};
    if (action == L"click") {
        Click(control);
    } else if (swscanf(action.c_str(), L"click %ld %ld", &point.x, &point.y) == 2) {
        ClickAt(control, point);
    } else if (swscanf(action.c_str(), L"double %ld %ld", &point.x, &point.y) == 2) {
        ClickAt(control, point, Button::Left, 2);
    } else if (action == L"close") {
        PostMessageW(GetAncestor(control, GA_ROOT), WM_SYSCOMMAND, SC_CLOSE, 0);
    } else if (begins(L"menu")) {
        Click(control, Button::Right);
        const HWND menu = Window(nullptr, kMenuClass);
        skip();
        PressKeys(rest);
        WaitUntilGone(menu); // not to be taken for the next one
    } else if (begins(L"write ")) {
        std::ofstream(std::filesystem::path(rest)) << "written";
    } else if (begins(L"rest ")) {
        Sleep(std::stoul(std::wstring(rest)));
    } else if (action != L"wait") {
        begins(L"keys ");
        PressKeys(rest);
    }
}

void Desk::Do(const std::function<void()>& action)
{
    std::atomic<bool> done = false;
    ++pending;
    {
        const std::lock_guard guard(mutex);
        errands.push_back([&] {
            action();
            done = true;
        });
    }
    while (!done)
        Sleep(1);
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
    : script_(std::move(script)), timer_(SetTimer(nullptr, 0, USER_TIMER_MINIMUM, RunErrand)),
      thread_([this] { Run(); })
{
}

Robot::~Robot()
{
    Finish();
}

void Robot::Run() noexcept
{
    try {
        script_(desk_);
        if (WaitForSingleObject(callReturned_.get(), kCallDeadline) != WAIT_OBJECT_0)
            failure_ = "the call goes on after all that the robot was to do";
    } catch (const std::exception& error) {
        failure_ = error.what();
    }
    // The call that the robot was to answer must return, or the test hangs.
    while (!failure_.empty() && WaitForSingleObject(callReturned_.get(), 100) == WAIT_TIMEOUT)
        for (HWND window : Listed(nullptr))
            if (IsUsable(window) && desk_.IsNew(window)) PostMessageW(window, WM_CLOSE, 0, 0);
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

DuringWait::DuringWait(std::function<void()> action, const std::wstring& caption)
    : Robot((++pending, [=](Desk& desk) {
          struct Done {
              ~Done() { --pending; }
          } const done;
          if (!caption.empty()) {
              desk.Window(caption.c_str());
              Sleep(kMoment);
          }
          desk.Do(action);
      }))
{
}

} // namespace quill::test
