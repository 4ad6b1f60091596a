#include "fuzz/Companion.h"

namespace quill::fuzz {

namespace {

constexpr DWORD kRound = 15;    // milliseconds between two looks
constexpr DWORD kPatience = 30; // of a call before its windows are closed
constexpr unsigned kPause = 8;  // rounds between two answers to the same window

// The shell's progress dialog, which no call waits for. Under Wine, a cancel that meets the call
// that ends it leaves both waiting for each other.
bool IsShellProgress(HWND window) noexcept
{
    return GetClassLongW(window, GCW_ATOM) == 32770 &&
           FindWindowExW(window, nullptr, PROGRESS_CLASSW, nullptr);
}

} // namespace

Companion::Companion(DWORD process, DWORD longestCall, void (*fail)(const wchar_t* reason))
    : process_(process), longestCall_(longestCall), fail_(fail), thread_([this] { Run(); })
{
}

Companion::~Companion()
{
    SetEvent(stop_.get());
    thread_.join();
}

void Companion::Run()
{
    while (WaitForSingleObject(stop_.get(), kRound) == WAIT_TIMEOUT) {
        const DWORD running = Running();
        if (running > longestCall_) fail_(L"the call does not return");
        if (running > kPatience)
            EnumWindows(Look, reinterpret_cast<LPARAM>(this));
        else
            attempts_.clear();
    }
}

BOOL CALLBACK Companion::Look(HWND window, LPARAM parameter)
{
    auto& self = *reinterpret_cast<Companion*>(parameter);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process == self.process_ && IsWindowVisible(window) && IsWindowEnabled(window) &&
        !IsShellProgress(window)) {
        const unsigned looks = self.attempts_[window]++;
        if (looks == 0) ++self.closed_;
        if (looks % kPause == 0) self.Answer(window, looks / kPause);
    }
    return TRUE;
}

// Cancels or accepts, by turns: one thing at a time, as a user does, for a dialog may ask something
// in a window of its own then. What does not go by that is given every answer that there is.
void Companion::Answer(HWND window, unsigned attempt) const
{
    switch ((number_ + attempt) % 4) {
    case 0: PostMessageW(window, WM_CLOSE, 0, 0); return;
    case 1: {
        HWND button = nullptr;
        for (unsigned passed = 0; passed <= attempt / 4; ++passed)
            button = FindWindowExW(window, button, WC_BUTTONW, nullptr);
        if (button) PostMessageW(button, BM_CLICK, 0, 0);
        return;
    }
    case 2: PostMessageW(window, WM_COMMAND, attempt < 8 ? IDOK : 1 + attempt / 4 % 11, 0); return;
    default:
        if (attempt < 8)
            PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
        else // buttons of a task dialog, those of a script, too
            PostMessageW(window, TDM_CLICK_BUTTON,
                         attempt % 8 < 4 ? 1 + attempt / 8 % 11 : 101 + attempt / 8 % 32, 0);
    }
}

} // namespace quill::fuzz
