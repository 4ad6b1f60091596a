// Quill.DTPick: lets the user choose a date, a time, or both.
#pragma once

#include "dialogs/Dialog.h"
#include "gui/windowfn.h"

namespace quill {

// Raises no errors of its own. While a dialog of an object is open, its Selection returns False.
class DTPick final : public Dialog<_DTPick, 128> {
public:
    STDMETHODIMP get_ControlMode(SHORT* value) noexcept override { return Get(value, mode_); }
    STDMETHODIMP put_ControlMode(SHORT value) noexcept override
    {
        return Put<Within<0, 2>>(mode_, value);
    }
    STDMETHODIMP get_Title(BSTR* value) noexcept override { return Get(value, title_); }
    STDMETHODIMP put_Title(BSTR value) noexcept override
    {
        return Put<CutTo<kTitleLimit>>(title_, value);
    }
    STDMETHODIMP Selection(VARIANT* vdt, VARIANT_BOOL* result) noexcept override
    {
        return Call(result, &DTPick::Choose, vdt);
    }

private:
    bool Choose(VARIANT& date);

    SHORT mode_ = 2;
    std::wstring title_;
    bool open_ = false;
};

} // namespace quill
