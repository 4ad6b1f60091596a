// What the forms with a list share: an info text above it, the OK button below, the list takes what
// the window gains.
#pragma once

#include "dialogs/Dialog.h"
#include "dialogs/ListLayout.h"

namespace quill {

class ListForm : public DialogForm {
protected:
    static constexpr ListLayout kDesign = LayOutList(MinimumListSize(kInfoHeight), kInfoHeight);

    // The settings stay where they are as long as the form.
    ListForm(const wchar_t* caption, const DialogSettings& settings);

    // Gives the form its texts, fonts and size. What is selected afterwards comes into view.
    void Prepare(const std::wstring& title);

    // Shows the form with its list filled, and waits for the user.
    void Ask(const std::function<bool()>& abandoned);

    // The controls that the derived form has: the list that is shown, the button below it.
    virtual Control& ShownList() = 0;
    virtual Button& Accepting() = 0;

private:
    void OnActivate() override;
    void OnPosted(WPARAM) override; // to set the size back
    void OnResize(TwipSize outer) override;
    TwipSize MinimumSize() const override;
    bool SetsSizeBack() const override { return true; }

    const DialogSettings& settings_;
    bool settingBack_ = false; // to the smallest size

    Label lblText{*this, kDesign.label};
};

} // namespace quill
