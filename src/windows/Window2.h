// Quill.Window2: an output window that the user can scroll back and copy from.
#pragma once

#include "windows/OutputWindow.h"

namespace quill {

class Window2 final : public OutputWindow<_Window2, frmWindow2> {
public:
    Window2() : OutputWindow(L"QUILL Window2") {}

    PROPERTY_SET_BY(VARIANT_BOOL, Scroll, scroll_, Window2::SetScroll)

private:
    void Prepare(frmWindow2& form) override { form.text.FollowEnd(scroll_); }

    void SetScroll(bool scroll)
    {
        scroll_ = scroll;
        if (frmWindow2* form = Shown()) form->text.FollowEnd(scroll);
    }

    bool scroll_ = false;
};

} // namespace quill
