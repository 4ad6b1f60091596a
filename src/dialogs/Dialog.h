// What the selection dialogs share: their appearance properties, and how their forms are shown.
#pragma once

#include "core/Automation.h"
#include "gui/Controls.h"

namespace quill {

// The appearance of a dialog. A change takes effect the next time that it is shown.
struct DialogSettings {
    bool topmost = true;
    bool fontModernize = true;
    SHORT fontEnlarge = 0; // points added to the design's 9
    std::wstring info;
    std::wstring buttonText;
    bool dlgCancelEsc = false;
};

// The properties of every selection dialog: Topmost, Info (cut to `InfoLimit` characters) and
// ButtonText. The mixins below add the others to the dialogs that have them.
template <class Interface, size_t InfoLimit>
class Dialog : public Automation<Interface> {
public:
    STORED_PROPERTY(VARIANT_BOOL, Topmost, settings_.topmost)
    STORED_PROPERTY(BSTR, Info, settings_.info, CutTo<InfoLimit>)
    STORED_PROPERTY(BSTR, ButtonText, settings_.buttonText)

protected:
    DialogSettings settings_;
};

// Adds FontModernize and FontEnlarge (0 to 2; other values are ignored).
template <class Base>
class WithFonts : public Base {
public:
    STORED_PROPERTY(VARIANT_BOOL, FontModernize, this->settings_.fontModernize)
    STORED_PROPERTY(SHORT, FontEnlarge, this->settings_.fontEnlarge, Within<0, 2>)
};

// Adds DlgCancelEsc.
template <class Base>
class WithCancelEsc : public Base {
public:
    STORED_PROPERTY(VARIANT_BOOL, DlgCancelEsc, this->settings_.dlgCancelEsc)
};

// Room for the info text as designed, and the most that a long one gets. Twips, as all below.
constexpr float kInfoHeight = 840;
constexpr float kMaximumInfoHeight = 3360;

// The OK button as designed; a long caption makes it wider, to the left.
constexpr float kButtonWidth = 1200;
constexpr float kButtonHeight = 380;

// A form that asks the user for something: an info text, controls, an OK button.
class DialogForm : public Form {
protected:
    DialogForm(const wchar_t* caption, TwipSize outer, DWORD style);

    // Gives the form its title (an empty one leaves the designed caption), its texts, its fonts and
    // its keys, and measures what the texts need. Without an info text the label is hidden; closing
    // up is the form's own.
    void Apply(const DialogSettings& settings, const std::wstring& title, Label& lblText,
               Button& OKButton);

    // What Apply has measured: 0 without an info text.
    float InfoHeight() const noexcept { return infoHeight_; }
    float ButtonWidth() const noexcept { return buttonWidth_; }
    // How much more than designed the info text needs.
    float InfoSurplus() const noexcept;

    // Esc, where the settings let it cancel.
    bool OnKeyDown(WPARAM key) override;

private:
    float infoHeight_ = 0;
    float buttonWidth_ = kButtonWidth;
};

} // namespace quill
