// The form of Quill.List.
#pragma once

#include "dialogs/Choices.h"
#include "dialogs/ListForm.h"

namespace quill {

class frmListBox final : public ListForm {
public:
    frmListBox(DialogRequest request, bool multi);

    // Shows the lines, the chosen ones selected, and waits for the user. True when `choices` has
    // the answer.
    bool LBox(Choices& choices, const std::wstring& title);

private:
    ListBox& ShownList() noexcept { return multi_ ? List2 : List1; }
    bool OnAccept() override;

    const bool multi_;
    Choices* choices_ = nullptr;

    ListBox List1{*this, kDesign.list, ListBox::Kind::Single, [this] { Accept(); }};
    ListBox List2{*this, kDesign.list, ListBox::Kind::Multiple, nullptr};
};

} // namespace quill
