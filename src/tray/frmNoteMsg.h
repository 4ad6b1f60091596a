// The hidden window that receives the messages of a Notice's icon.
#pragma once

#include "core/MessagePump.h"

namespace quill {

// A top-level window, so that the shell's broadcasts reach it. Destroyed with the object.
class frmNoteMsg {
public:
    HWND Window() const noexcept { return window_.get(); }

private:
    static LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam) noexcept
    {
        // Programs that ask all windows to close mean those that the user sees.
        if (message == WM_CLOSE) return 0;
        return DefWindowProcW(window, message, wParam, lParam);
    }

    const Owned<HWND, DestroyWindow> window_{
        CreateHiddenWindow(L"frmNoteMsg", WindowProcedure, nullptr, false)};
};

} // namespace quill
