// Quill.Window2: an output window that the user can scroll back and copy from.
#pragma once

#include "windows/OutputWindow.h"

namespace quill {

class Window2 final : public OutputWindow<_Window2, frmWindow2> {
public:
    Window2() : OutputWindow(L"QUILL Window2") {}

    STDMETHODIMP get_Scroll(VARIANT_BOOL* value) noexcept override { return Get(value, scroll_); }
    STDMETHODIMP put_Scroll(VARIANT_BOOL value) noexcept override
    {
        return Call(&Window2::SetScroll, value);
    }

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
