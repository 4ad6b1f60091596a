// The form of Quill.List with a filter or columns.
#pragma once

#include "dialogs/ChoiceForm.h"

namespace quill {

class frmListView final : public ChoiceForm {
public:
    frmListView(DialogRequest request, bool multi, bool filter)
        : ChoiceForm(L"QUILL List", std::move(request),
                     multi ? ChoiceView::Kind::Multiple : ChoiceView::Kind::Single, filter)
    {
    }

    using ChoiceForm::Choose;
};

} // namespace quill
