#include "support/Robot.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <utility>

#include "core/MessagePump.h"
#include "support/ScriptObject.h"

namespace quill::test {

namespace {

std::atomic<bool> pending; // what is to happen meanwhile
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

// The children of a window with theirs; of null, the top-level windows.
std::vector<HWND> Listed(HWND parent)
{
    std::vector<HWND> windows;
    if (parent)
        EnumChildWindows(parent, AddToList, reinterpret_cast<LPARAM>(&windows));
    else
        EnumWindows(AddToList, reinterpret_cast<LPARAM>(&windows));
    return windows;
}

std::wstring WithoutAccessKeys(std::wstring text)
{
    std::erase(text, L'&');
    return text;
}

bool ShowsText(HWND window, const wchar_t* text)
{
    if (!text) return true;
    const std::wstring shown = Desk::TextOf(window);
    return shown == text || WithoutAccessKeys(shown) == text;
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

POINT CentreOf(HWND window)
{
    RECT client{};
    GetClientRect(window, &client);
    return {client.right / 2, client.bottom / 2};
}

void Send(std::vector<INPUT> inputs)
{
    const auto count = static_cast<UINT>(inputs.size());
    if (SendInput(count, inputs.data(), sizeof(INPUT)) != count)
        throw std::runtime_error("input was refused");
}

INPUT MouseInput(POINT screen, DWORD flags)
{
    INPUT input{};
    input.type = INPUT_MOUSE;
    // Absolute positions count in 65536ths of the screen; half a pixel more hits its middle.
    input.mi.dx = MulDiv(2 * screen.x + 1, 32768, GetSystemMetrics(SM_CXSCREEN));
    input.mi.dy = MulDiv(2 * screen.y + 1, 32768, GetSystemMetrics(SM_CYSCREEN));
    input.mi.dwFlags = flags | MOUSEEVENTF_ABSOLUTE;
    return input;
}

INPUT KeyInput(WORD key, bool up)
{
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
    if (up) input.ki.dwFlags = KEYEVENTF_KEYUP;
    if ((key >= VK_PRIOR && key <= VK_DOWN) || key == VK_INSERT || key == VK_DELETE)
        input.ki.dwFlags |= KEYEVENTF_EXTENDEDKEY;
    return input;
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

std::vector<HWND> Desk::Controls(HWND window, const wchar_t* controlClass)
{
    std::vector<HWND> controls;
    for (HWND control = GetWindow(window, GW_CHILD); control;
         control = GetWindow(control, GW_HWNDNEXT))
        if (IsWindowVisible(control) && IsOfClass(control, controlClass))
            controls.push_back(control);
    return controls;
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
    WaitFor(L"the window " + Quoted(TextOf(window).c_str()) + L" to go",
            [&] { return !IsWindow(window) || !IsWindowVisible(window); });
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
    ClickAt(control, CentreOf(control), button);
}

void Desk::ClickAt(HWND window, POINT point, Button button, int times)
{
    const POINT target = Target(window, point);
    const bool left = button == Button::Left;
    std::vector<INPUT> inputs{MouseInput(target, MOUSEEVENTF_MOVE)};
    for (int time = 0; time < times; ++time) {
        inputs.push_back(MouseInput(target, left ? MOUSEEVENTF_LEFTDOWN : MOUSEEVENTF_RIGHTDOWN));
        inputs.push_back(MouseInput(target, left ? MOUSEEVENTF_LEFTUP : MOUSEEVENTF_RIGHTUP));
    }
    Send(std::move(inputs));
}

void Desk::WaitForKeys()
{
    int looks = ready_ == current_ ? kStillLooks : 1; // a window that is new must keep the keyboard
    WaitFor(L"the window " + Quoted(TextOf(current_).c_str()) + L" to have the keyboard", [&] {
        WaitForAnswer(current_);
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        const HWND front = GetForegroundWindow();
        bool hears = false;
        if (ClassOf(current_) == kMenuClass)
            hears = GetGUIThreadInfo(GetWindowThreadProcessId(front, nullptr), &info) &&
                    info.hwndMenuOwner == current_;
        else
            hears = front == current_ &&
                    GetGUIThreadInfo(GetWindowThreadProcessId(current_, nullptr), &info) &&
                    info.hwndFocus && GetAncestor(info.hwndFocus, GA_ROOT) == current_;
        return hears && looks++ >= kStillLooks;
    });
    ready_ = current_;
}

void Desk::Press(WORD key, std::initializer_list<WORD> held)
{
    WaitForKeys();
    std::vector<INPUT> inputs;
    for (WORD modifier : held)
        inputs.push_back(KeyInput(modifier, false));
    inputs.push_back(KeyInput(key, false));
    inputs.push_back(KeyInput(key, true));
    for (WORD modifier : held)
        inputs.push_back(KeyInput(modifier, true));
    Send(std::move(inputs));
}

void Desk::Type(std::wstring_view text)
{
    WaitForKeys();
    std::vector<INPUT> inputs;
    for (wchar_t unit : text) {
        INPUT input{};
        input.type = INPUT_KEYBOARD;
        input.ki.wScan = unit;
        input.ki.dwFlags = KEYEVENTF_UNICODE;
        inputs.push_back(input);
        input.ki.dwFlags |= KEYEVENTF_KEYUP;
        inputs.push_back(input);
    }
    Send(std::move(inputs));
}

void Desk::PressKeys(std::wstring_view keys)
{
    static const std::map<std::wstring_view, WORD> names{
        {L"ENTER", VK_RETURN}, {L"ESC", VK_ESCAPE}, {L"TAB", VK_TAB},    {L"SPACE", VK_SPACE},
        {L"UP", VK_UP},        {L"DOWN", VK_DOWN},  {L"LEFT", VK_LEFT},  {L"RIGHT", VK_RIGHT},
        {L"HOME", VK_HOME},    {L"END", VK_END},    {L"DEL", VK_DELETE}, {L"BS", VK_BACK},
        {L"PGUP", VK_PRIOR},   {L"PGDN", VK_NEXT},  {L"F4", VK_F4}};
    WORD held = 0;
    for (size_t index = 0; index < keys.size(); ++index) {
        const wchar_t unit = keys[index];
        WORD key = 0;
        if (unit == L'^' || unit == L'+' || unit == L'%') {
            held = unit == L'^' ? VK_CONTROL : unit == L'+' ? VK_SHIFT : VK_MENU;
            continue;
        }
        if (unit == L'{') {
            const size_t end = keys.find(L'}', index);
            const auto found = names.find(keys.substr(index + 1, end - index - 1));
            if (found == names.end()) throw std::runtime_error("unknown key in " + Narrow(keys));
            key = found->second;
            index = end;
        } else if (held != 0) {
            key = static_cast<WORD>(towupper(unit));
        }
        if (key == 0)
            Type({&unit, 1});
        else if (held != 0)
            Press(key, {held});
        else
            Press(key);
        held = 0;
    }
}

void Desk::Act(const std::wstring& caption, const std::wstring& controlClass,
               const std::wstring& text, const std::wstring& action)
{
    const auto any = [](const std::wstring& name) { return name.empty() ? nullptr : name.c_str(); };
    if (action == L"see") {
        Window(any(caption), any(controlClass));
        return;
    }
    if (action.starts_with(L"press ")) {
        Window(any(caption), any(controlClass));
        PressKeys(std::wstring_view(action).substr(6));
        return;
    }
    if (action == L"after") {
        WaitFor(L"what happens meanwhile", [] { return !pending; });
        return;
    }
    if (action == L"gone") {
        WaitFor(L"the window " + Quoted(any(caption)) + L" to go",
                [&] { return !FindWindowOnce(any(caption), any(controlClass)); });
        return;
    }
    const HWND control = Control(any(caption), any(controlClass), any(text));
    POINT point{};
    if (action == L"click") {
        Click(control);
    } else if (swscanf(action.c_str(), L"double %ld %ld", &point.x, &point.y) == 2) {
        ClickAt(control, point, Button::Left, 2);
    } else if (action == L"close") {
        Close(GetAncestor(control, GA_ROOT));
    } else if (swscanf(action.c_str(), L"move %ld %ld", &point.x, &point.y) == 2) {
        SetWindowPos(GetAncestor(control, GA_ROOT), nullptr, point.x, point.y, 0, 0,
                     SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    } else if (swscanf(action.c_str(), L"size %ld %ld", &point.x, &point.y) == 2) {
        SIZE size{};
        const auto fits = [&] {
            size = SizeOf(GetAncestor(control, GA_ROOT));
            return (point.x == 0 || size.cx == point.x) && (point.y == 0 || size.cy == point.y);
        };
        for (const ULONGLONG end = GetTickCount64() + kDeadline; !fits(); Sleep(kPoll))
            if (GetTickCount64() > end)
                throw std::runtime_error("the size is " + std::to_string(size.cx) + " x " +
                                         std::to_string(size.cy));
    } else if (action.starts_with(L"menu ")) {
        Click(control, Button::Right);
        const HWND menu = Window(nullptr, kMenuClass);
        PressKeys(std::wstring_view(action).substr(5));
        WaitUntilGone(menu); // not to be taken for the next one
    } else if (action.starts_with(L"write ")) {
        std::ofstream(std::filesystem::path(action.substr(6))) << "written";
    } else if (swscanf(action.c_str(), L"rest %ld", &point.x) == 1) {
        Sleep(static_cast<DWORD>(point.x));
    } else if (action != L"wait") {
        PressKeys(std::wstring_view(action).substr(action.starts_with(L"keys ") ? 5 : 0));
    }
}

void Desk::Act(const std::wstring& line)
{
    std::wstring_view rest = line;
    // Up to this character, or what stands in quotation marks.
    const auto take = [&](std::wstring_view ends) {
        const bool quoted = rest.starts_with(L'"');
        const size_t end = quoted ? rest.find(L'"', 1) : rest.find_first_of(ends);
        if (end == std::wstring_view::npos) throw std::runtime_error("no action: " + Narrow(line));
        const std::wstring taken(rest.substr(quoted, end - quoted));
        rest.remove_prefix(end + quoted);
        return taken;
    };
    const std::wstring caption = rest.starts_with(L'"') ? take({}) : std::wstring();
    rest.remove_prefix(std::min(rest.find_first_not_of(L' '), rest.size()));
    const std::wstring controlClass = take(L": ");
    std::wstring text;
    if (rest.starts_with(L':')) {
        rest.remove_prefix(1);
        text = take(L" ");
    }
    Act(caption, controlClass, text, std::wstring(rest.substr(std::min<size_t>(1, rest.size()))));
}

void Desk::Post(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (!PostMessageW(window, message, wParam, lParam))
        throw std::runtime_error("message " + std::to_string(message) + " could not be posted");
}

void Desk::Close(HWND window)
{
    Post(window, WM_SYSCOMMAND, SC_CLOSE);
}

void Desk::Place(HWND window, const RECT& rectangle)
{
    SetWindowPos(window, nullptr, rectangle.left, rectangle.top, rectangle.right - rectangle.left,
                 rectangle.bottom - rectangle.top, SWP_NOZORDER | SWP_NOACTIVATE);
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

void Desk::CloseNewWindows()
{
    for (HWND window : Listed(nullptr))
        if (IsUsable(window) && IsNew(window)) PostMessageW(window, WM_CLOSE, 0, 0);
}

Robot::Robot(Script script, Reporter reporter)
    : script_(std::move(script)), reporter_(reporter), thread_([this] { Run(); })
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
        if (WaitForSingleObject(callReturned_.get(), kCallDeadline) == WAIT_OBJECT_0) {
            SetEvent(done_.get());
            return;
        }
        failure_ = "the call goes on after all that the robot was to do";
    } catch (const std::exception& error) {
        failure_ = error.what();
    } catch (...) {
        failure_ = "unknown exception";
    }
    // The call that the robot was to answer must return, or the test hangs.
    do
        desk_.CloseNewWindows();
    while (WaitForSingleObject(callReturned_.get(), 100) == WAIT_TIMEOUT);
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
        if (!failure_.empty()) reporter_("robot: " + failure_);
    }
    return failure_.empty();
}

Robot::Script Keys(const wchar_t* caption, const wchar_t* controlClass, std::vector<WORD> keys)
{
    return [=](Desk& desk) {
        desk.Control(caption, controlClass);
        for (const WORD key : keys)
            desk.Press(key);
    };
}

Robot::Script ClickButton(const wchar_t* caption, const wchar_t* text)
{
    return [=](Desk& desk) { desk.Click(desk.Control(caption, L"Button", text)); };
}

Robot::Script CloseBox(const wchar_t* caption)
{
    return [=](Desk& desk) { desk.Close(desk.Window(caption)); };
}

LastClient::LastClient(IUnknown* object)
{
    Check(object->QueryInterface(IID_PPV_ARGS(&connection_)));
    connection_->AddConnection(EXTCONN_STRONG, 0);
}

namespace {

thread_local std::function<void()> duringWait;
thread_local std::wstring awaited;
thread_local ULONGLONG shownAt; // 0: not yet

void CALLBACK RunDuringWait(HWND, UINT, UINT_PTR timer, DWORD)
{
    const ULONGLONG now = GetTickCount64();
    if (shownAt == 0 && IsWindowVisible(FindWindowW(nullptr, awaited.c_str()))) shownAt = now;
    if (!awaited.empty() && (shownAt == 0 || now < shownAt + kMoment)) return;
    KillTimer(nullptr, timer);
    std::exchange(duringWait, nullptr)();
    pending = false;
}

} // namespace

DuringWait::DuringWait(std::function<void()> action, std::wstring caption)
{
    duringWait = std::move(action);
    awaited = std::move(caption);
    shownAt = 0;
    pending = true;
    timer_ = SetTimer(nullptr, 0, USER_TIMER_MINIMUM, RunDuringWait);
}

DuringWait::~DuringWait()
{
    KillTimer(nullptr, timer_);
}

} // namespace quill::test
