// The form of Quill.List.
#pragma once

#include "dialogs/Dialog.h"
#include "dialogs/ListLayout.h"

namespace quill {

class frmListBox final : public DialogForm {
public:
    explicit frmListBox(const DialogSettings& settings);

    // Shows the non-empty lines of `items` (separated by CR LF), preselects line `index` if there
    // is one, and waits for the user. Returns the chosen line, or with `multi` the chosen lines,
    // each followed by CR LF; an empty string when nothing was chosen.
    std::wstring LBox(const std::wstring& items, bool multi, long index, const std::wstring& title,
                      const std::function<bool()>& abandoned);

private:
    void OnActivate() override;
    void OnResize(TwipSize outer) override;
    TwipSize MinimumSize() const override;

    ListBox& Active();
    void Accept();

    static constexpr ListLayout kDesign = LayOutList(MinimumListSize(kInfoHeight), kInfoHeight);

    const DialogSettings& settings_;
    float infoHeight_ = 0; // twips; 0 without an info text
    float buttonWidth_ = kButtonWidth;
    bool multi_ = false;
    std::vector<std::wstring> lines_;
    std::wstring result_;

    Label lblText{*this, kDesign.label};
    ListBox List1{*this, kDesign.list, ListBox::Kind::Single, [this] { Accept(); }};
    ListBox List2{*this, kDesign.list, ListBox::Kind::Multiple, nullptr};
    Button OKButton{*this, kDesign.button, L"OK", [this] { Accept(); }, Button::Kind::Default};
};

} // namespace quill
