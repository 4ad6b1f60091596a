// The form of Quill.List.
#pragma once

#include "dialogs/ListForm.h"

namespace quill {

class frmListBox final : public ListForm {
public:
    explicit frmListBox(const DialogSettings& settings);

    // Shows the non-empty lines of `items` (separated by CR LF), preselects line `index` if there
    // is one, and waits for the user. Returns the chosen line, or with `multi` the chosen lines,
    // each followed by CR LF; an empty string when nothing was chosen.
    std::wstring LBox(const std::wstring& items, bool multi, long index, const std::wstring& title,
                      const std::function<bool()>& abandoned);

private:
    ListBox& ShownList() override;
    Button& Accepting() override { return OKButton; }

    void Accept();

    bool multi_ = false;
    std::vector<std::wstring> lines_;
    std::wstring result_;

    ListBox List1{*this, kDesign.list, ListBox::Kind::Single, [this] { Accept(); }};
    ListBox List2{*this, kDesign.list, ListBox::Kind::Multiple, nullptr};
    Button OKButton{*this, kDesign.button, L"OK", [this] { Accept(); }, Button::Kind::Default};
};

} // namespace quill
