// The time that a dialog gives its user, and how a dialog may end.
#pragma once

#include "core/Platform.h"

namespace quill {

// How the last dialog of an object ended, as scripts read it.
enum class Ending : SHORT {
    None,       // there was no dialog yet
    Accepted,   // OK; in the platform's own dialogs, any button but Cancel
    Cancelled,  // the Cancel button or Esc; there, the close box too
    Closed,     // the close box
    TimeOver,   // by itself, whether or not that has pressed OK
    ClientGone, // nobody waits for the answer any more, or the thread is to end
    NotShown,   // there was none: the arguments left nothing to show
};

// The longest time that scripts can give, in seconds.
inline constexpr LONG kLongestAnswerTime = 86'400;

// A seam: how long a second of that time is.
struct AnswerSecond {
    DWORD milliseconds = 1000;
};

// Runs from construction. A key or a mouse button in the calling thread restarts it, whichever loop
// of the platform fetches the message: menus, open calendars and drags have loops of their own.
// Input in a nested dialog restarts the outer times too, since the outer dialogs cannot return
// before.
class AnswerTime {
public:
    explicit AnswerTime(LONG seconds); // 0: without end
    ~AnswerTime();
    AnswerTime(const AnswerTime&) = delete;
    AnswerTime& operator=(const AnswerTime&) = delete;

    void Restart() noexcept;
    bool Limited() const noexcept { return length_ > 0; }
    // Looks at the clock. Input since the last look counts from now on, so that a countdown
    // proceeds in whole seconds.
    bool Over() noexcept;
    LONG SecondsLeft() const noexcept; // a second that has begun counts whole
    // Milliseconds until the next look is due: when the number of seconds left changes.
    UINT UntilNextLook() const noexcept;

private:
    static LRESULT CALLBACK OnMessage(int code, WPARAM removed, LPARAM message) noexcept;
    ULONGLONG MillisecondsLeft() const noexcept;

    const DWORD second_;
    const ULONGLONG length_; // milliseconds, like all below
    ULONGLONG end_ = 0;
    bool used_ = false; // the user has done something since the last look
    HHOOK hook_ = nullptr;
    AnswerTime* outer_ = nullptr; // of a dialog that this one's is nested in
};

// Makes the platform's loop that the calling thread is in (a menu, a drag) end when it next runs.
// False when there is none.
bool EndPlatformLoop() noexcept;

} // namespace quill
