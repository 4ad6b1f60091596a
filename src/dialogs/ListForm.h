// What the forms with a list share: an info text above it, the OK button below, the list takes what
// the window gains.
#pragma once

#include "dialogs/Dialog.h"
#include "dialogs/ListLayout.h"

namespace quill {

class ListForm : public DialogForm {
protected:
    static constexpr ListLayout kDesign = LayOutList(MinimumListSize(kInfoHeight), kInfoHeight);

    ListForm(const wchar_t* caption, DialogRequest request);

    // Gives the form its texts, fonts and size, for `list`, the control that is shown. What is
    // selected afterwards comes into view.
    void Prepare(const std::wstring& title, Control& list);

private:
    void OnActivate() override;
    void OnPosted(WPARAM) override; // to set the size back
    void OnResize(TwipSize outer) override;
    TwipSize MinimumSize() const override;
    bool SetsSizeBack() const override { return true; }

    Control* list_ = nullptr;  // the one that is shown
    bool settingBack_ = false; // to the smallest size
};

} // namespace quill
