// Quill.Window2: an output window that the user can scroll back and copy from.
#pragma once

#include "windows/OutputWindow.h"

namespace quill {

class Window2 final : public OutputWindow<_Window2, frmWindow2> {
public:
    Window2() : OutputWindow(L"QUILL Window2") {}

    SHOWN_PROPERTY(VARIANT_BOOL, Scroll, scroll_, form.text.FollowEnd(scroll_))

private:
    void Prepare(frmWindow2& form) override { form.text.FollowEnd(scroll_); }

    bool scroll_ = false;
};

} // namespace quill
