#include "fuzz/Companion.h"

namespace quill::fuzz {

namespace {

constexpr DWORD kRound = 15;     // milliseconds between two looks
constexpr DWORD kPatience = 30;  // of a call before its windows are closed

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
    if (process == self.process_ && IsWindowVisible(window) && IsWindowEnabled(window)) {
        const unsigned attempt = self.attempts_[window]++;
        if (attempt == 0) ++self.closed_;
        self.Answer(window, attempt);
    }
    return TRUE;
}

// Cancels or accepts, by turns; what does not go by that gets every answer there is.
void Companion::Answer(HWND window, unsigned attempt) const
{
    switch ((number_ + attempt) % 4) {
    case 0: PostMessageW(window, WM_CLOSE, 0, 0); return;
    case 1:
        for (HWND child = nullptr;
             (child = FindWindowExW(window, child, WC_BUTTONW, nullptr)) != nullptr;)
            PostMessageW(child, BM_CLICK, 0, 0);
        return;
    case 2: PostMessageW(window, WM_COMMAND, IDOK, 0); return;
    default:
        PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
        if (attempt < 8) return;
        for (WPARAM button = 1; button < 12; ++button)
            PostMessageW(window, WM_COMMAND, button, 0);
        for (WPARAM button = 101; button < 133; ++button) // of a task dialog's own
            PostMessageW(window, TDM_CLICK_BUTTON, button, 0);
    }
}

} // namespace quill::fuzz
