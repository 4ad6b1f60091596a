// Quill.List: lets the user choose one or several of a script's lines.
#pragma once

#include "dialogs/ListDialog.h"

namespace quill {

// Raises no errors of its own.
class List final : public WithChoices<WithCancelEsc<WithFonts<Dialog<_List, 256>>>> {
public:
    STORED_PROPERTY(VARIANT_BOOL, MultiSel, multiSel_)
    METHOD(BSTR, Selection, (BSTR items, LONG Index, BSTR Title), items, Index, Title)
    METHOD(LONG, SelectionA, (VARIANT * items, VARIANT* selected, BSTR Title), items, selected,
           Title)
    STORED_VARIANT(Columns, columns_, ArrayOrEmpty)

private:
    std::wstring Selection(std::wstring items, LONG index, const std::wstring& title);
    LONG SelectionA(VARIANT& items, VARIANT& selected, const std::wstring& title);
    void Show(Choices& choices, DialogRequest request, bool multi, const std::wstring& title);

    bool multiSel_ = false;
    Variant columns_;
};

} // namespace quill
