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

// Runs from its making on. A key or a mouse button that the calling thread hears starts it anew,
// whichever loop of the platform fetches that: menus, open calendars and drags have loops of their
// own. With nested dialogs, that is for all of them: the outer ones cannot return before.
class AnswerTime {
public:
    explicit AnswerTime(LONG seconds); // 0: without end
    ~AnswerTime();
    AnswerTime(const AnswerTime&) = delete;
    AnswerTime& operator=(const AnswerTime&) = delete;

    void Restart() noexcept;
    bool Limited() const noexcept { return length_ > 0; }
    // A look at the time, which is when input counts: a countdown then goes on in whole seconds.
    bool Over() noexcept;
    LONG SecondsLeft() const noexcept; // a second that has begun counts whole
    // After how many milliseconds to look again: when the seconds left are others, or none.
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

// Ends the loop of the platform, of a menu or a drag, that the calling thread is in, as soon as it
// runs on. False when there is none.
bool EndPlatformLoop() noexcept;

} // namespace quill
