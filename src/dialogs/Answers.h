// How every class with a dialog reports its end.
#pragma once

#include "core/Automation.h"
#include "gui/AnswerTime.h"

namespace quill {

// Adds Timeout (seconds; 0 is without end) and Outcome: how the last dialog of the object ended.
template <class Base>
class WithTimeout : public Base {
public:
    STORED_PROPERTY(LONG, Timeout, timeout_, Within<0, kLongestAnswerTime>)
    COMPUTED_PROPERTY(SHORT, Outcome)

protected:
    LONG timeout_ = 0;
    Ending ending_ = Ending::None;

private:
    SHORT Outcome() const noexcept { return static_cast<SHORT>(ending_); }
};

// One call of a method that shows a dialog. `ending` is that dialog's, and at the end of the call
// the object's: with nested calls, the one counts that returned last.
class OutcomeScope {
public:
    explicit OutcomeScope(Ending& ofObject) noexcept : ofObject_(ofObject) {}
    ~OutcomeScope() { ofObject_ = ending; }
    OutcomeScope(const OutcomeScope&) = delete;
    OutcomeScope& operator=(const OutcomeScope&) = delete;

    Ending ending = Ending::NotShown;

private:
    Ending& ofObject_;
};

} // namespace quill
