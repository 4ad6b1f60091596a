// Quill.CheckList: lets the user check some of a script's lines.
#pragma once

#include "dialogs/ListDialog.h"

namespace quill {

// Raises no errors of its own.
class CheckList final : public WithChoices<WithCancelEsc<WithFonts<Dialog<_CheckList, 256>>>> {
public:
    METHOD(LONG, Selection, (BSTR items, LONG Index, BSTR Title), items, Index, Title)
    METHOD(LONG, SelectionA, (VARIANT * items, VARIANT* indices, BSTR Title), items, indices, Title)
    METHOD(LONG, SelectionEx, (VARIANT * items, VARIANT* checked, BSTR Title), items, checked,
           Title)

private:
    LONG Selection(const std::wstring& items, LONG checked, const std::wstring& title);
    LONG SelectionA(VARIANT& items, VARIANT& indices, const std::wstring& title);
    LONG SelectionEx(VARIANT& items, VARIANT& checked, const std::wstring& title);
    void Show(Choices& choices, DialogRequest request, const std::wstring& title);
};

} // namespace quill
