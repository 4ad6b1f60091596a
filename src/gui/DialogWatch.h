// A watch over the platform's own modal dialogs, which wait in loops of their own.
#pragma once

#include <functional>
#include <vector>

#include "gui/AnswerTime.h"

namespace quill {

// While it lives, the dialog that the calling thread shows comes to the front as soon as it is
// visible, and is ended when its time is over (which begins then; seconds, 0: never), or when
// `abandoned` says that nobody waits for its answer any more. At its end the foreground is handed
// on.
class DialogWatch {
public:
    enum class Front { Bring, Leave };

    DialogWatch(LONG seconds, std::function<bool()> abandoned, Front front = Front::Bring);
    ~DialogWatch();
    DialogWatch(const DialogWatch&) = delete;
    DialogWatch& operator=(const DialogWatch&) = delete;

    // How the dialog ended: as the user's answer says, unless the watch has ended it.
    Ending EndingOr(Ending users) const noexcept { return asked_ ? ending_ : users; }

private:
    static void CALLBACK OnTimer(HWND window, UINT message, UINT_PTR timer, DWORD time) noexcept;
    void Look() noexcept;
    HWND FindDialog() const noexcept;

    std::function<bool()> abandoned_;
    AnswerTime time_;
    const Front front_;
    bool seen_ = false;                // it was visible once
    HWND asked_ = nullptr;             // to end, and given time for it
    bool leftLoop_ = false;            // of a menu or a drag, before that
    Ending ending_ = Ending::TimeOver; // once that has begun
    DialogWatch* outer_;               // of a dialog that this one is nested in
    UINT_PTR timer_;
    std::vector<HWND> earlier_; // dialogs that were there before
};

} // namespace quill
