// The form of Quill.CheckList.
#pragma once

#include "dialogs/ChoiceForm.h"

namespace quill {

class frmCheckListBox final : public ChoiceForm {
public:
    frmCheckListBox(DialogRequest request, bool filter)
        : ChoiceForm(L"QUILL CheckList", std::move(request), ChoiceView::Kind::Checks, filter)
    {
    }

    // Shows the lines, the chosen ones checked, and waits for the user. True when `choices` has
    // the answer.
    bool CLBox(Choices& choices, const std::wstring& title) { return Choose(choices, {}, title); }
};

} // namespace quill
