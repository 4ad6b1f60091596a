// Quill.List: lets the user choose one or several of a script's lines.
#pragma once

#include "dialogs/Dialog.h"

namespace quill {

// Raises no errors of its own.
class List final : public WithCancelEsc<WithFonts<Dialog<_List, 256>>> {
public:
    STORED_PROPERTY(VARIANT_BOOL, MultiSel, multiSel_)
    METHOD(BSTR, Selection, (BSTR items, LONG Index, BSTR Title), items, Index, Title)

private:
    std::wstring Selection(const std::wstring& items, LONG index, const std::wstring& title);

    bool multiSel_ = false;
};

} // namespace quill
