// Quill.DTPick: lets the user choose a date, a time, or both.
#pragma once

#include "dialogs/Dialog.h"
#include "gui/windowfn.h"

namespace quill {

// Raises no errors of its own. While a dialog of an object is open, its Selection returns False.
class DTPick final : public Dialog<_DTPick, 128> {
public:
    DTPick();

    STORED_PROPERTY(SHORT, ControlMode, mode_, Within<0, 2>)
    STORED_PROPERTY(BSTR, Title, title_, CutTo<kTitleLimit>)
    METHOD(VARIANT_BOOL, Selection, (VARIANT * vdt), vdt)

private:
    bool Selection(VARIANT& date);

    SHORT mode_ = 2;
    std::wstring title_;
    bool open_ = false;
};

} // namespace quill
