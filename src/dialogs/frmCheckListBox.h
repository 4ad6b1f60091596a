// The form of Quill.CheckList.
#pragma once

#include <string>
#include <vector>

#include "dialogs/ListForm.h"

namespace quill {

class frmCheckListBox final : public ListForm {
public:
    explicit frmCheckListBox(DialogRequest request);

    // Shows the lines that are not empty, at most 30, and waits for the user. Bit i of `checked`
    // checks line i of those shown, if position i of `lines` is not empty. Returns the bits of the
    // lines that were checked on OK, otherwise 0.
    LONG CLBox(const std::vector<std::wstring>& lines, LONG checked, const std::wstring& title);

private:
    bool OnAccept() override;

    int shown_ = 0; // lines
    LONG result_ = 0;

    CheckListBox ChkList{*this, kDesign.list};
};

} // namespace quill
