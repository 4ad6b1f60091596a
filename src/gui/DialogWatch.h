// A watch over the platform's own modal dialogs, which wait in loops of their own.
#pragma once

#include <functional>
#include <vector>

#include "core/Platform.h"

namespace quill {

// While it lives, the dialog that the calling thread shows comes to the front as soon as it is
// visible, and is ended when `abandoned` says that nobody waits for its answer any more. At its end
// the foreground is handed on.
class DialogWatch {
public:
    enum class Front { Bring, Leave };

    explicit DialogWatch(std::function<bool()> abandoned, Front front = Front::Bring);
    ~DialogWatch();
    DialogWatch(const DialogWatch&) = delete;
    DialogWatch& operator=(const DialogWatch&) = delete;

private:
    static void CALLBACK OnTimer(HWND window, UINT message, UINT_PTR timer, DWORD time) noexcept;
    void Look() noexcept;
    HWND FindDialog() const noexcept;

    std::function<bool()> abandoned_;
    bool toRaise_;       // to the front, once it is visible
    bool asked_ = false; // to end, and given time for it
    DialogWatch* outer_; // of a dialog that this one is nested in
    UINT_PTR timer_;
    std::vector<HWND> earlier_; // dialogs that were there before
};

} // namespace quill
