// The form of Quill.List.
#pragma once

#include <string>
#include <vector>

#include "dialogs/ListForm.h"

namespace quill {

class frmListBox final : public ListForm {
public:
    explicit frmListBox(DialogRequest request);

    // Shows the non-empty lines of `items` (separated by CR LF), preselects line `index` if there
    // is one, and waits for the user. Returns the chosen line, or with `multi` the chosen lines,
    // each followed by CR LF; an empty string when nothing was chosen.
    std::wstring LBox(const std::wstring& items, bool multi, long index, const std::wstring& title);

private:
    ListBox& ShownList() noexcept { return multi_ ? List2 : List1; }
    bool OnAccept() override;

    bool multi_ = false;
    std::vector<std::wstring> lines_;
    std::wstring result_;

    ListBox List1{*this, kDesign.list, ListBox::Kind::Single, [this] { Accept(); }};
    ListBox List2{*this, kDesign.list, ListBox::Kind::Multiple, nullptr};
};

} // namespace quill
