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

    // The height of what stands between the info text and the list.
    virtual float HeightAboveList() const { return 0; }
    // Places the list, and what stands above it, in this room.
    virtual void PlaceList(const TwipRect& room) { list_->Move(room); }
    // The outer size that the form opens with.
    virtual TwipSize OpeningSize() const { return MinimumSize(); }
    // What the outer size has more than the list.
    TwipSize AroundList() const;

    // False: the keyboard goes back to where it was when the user comes back to the window.
    virtual bool ReturnsToList() const { return true; }
    TwipSize MinimumSize() const override;

private:
    void OnActivate() override;
    void OnPosted(WPARAM) override; // to set the size back
    void OnResize(TwipSize outer) override;
    bool SetsSizeBack() const override { return true; }
    ListLayout LayOut(TwipSize outer) const;

    Control* list_ = nullptr;  // the one that is shown
    bool settingBack_ = false; // to the smallest size
};

} // namespace quill
