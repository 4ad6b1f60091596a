// What the selection dialogs share: their appearance properties, and how their forms are shown.
#pragma once

#include <functional>
#include <string>

#include "core/Automation.h"
#include "gui/Controls.h"
#include "gui/ScrollingForm.h"

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

// What a form needs for one call. The settings are a copy, since calls that arrive during the wait
// may change the object's.
struct DialogRequest {
    DialogSettings settings;
    std::function<bool()> abandoned; // true once no caller waits for the answer
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
    DialogRequest Request() const
    {
        return {settings_, [this] { return this->ClientsGone(); }};
    }

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

// How a form is designed. The caption stands where a script gives no title; the info text wraps at
// its width.
struct DialogDesign {
    const wchar_t* caption;
    TwipSize outer;
    DWORD style;
    float infoWidth;
};

// A form that asks the user for something: an info text, the controls of the derived form, and the
// OK button, the last one for the tab key. Derived forms place both by OnResize.
class DialogForm : public ScrollingForm {
protected:
    DialogForm(const DialogDesign& design, DialogRequest request);

    // Gives the form its title, texts, fonts and keys, and measures what the texts need. Without an
    // info text its label is hidden, and the derived form closes the gap.
    void Prepare(const std::wstring& title);

    // Shows the form and waits for the user. True when they accepted.
    bool Ask();

    // Keeps the user's answer and closes the form, unless OnAccept refuses.
    void Accept();

    // Keeps the user's answer; false leaves the form open.
    virtual bool OnAccept() = 0;

    // The OK button was pressed.
    virtual void OnButton() { Accept(); }

    const DialogSettings& Settings() const noexcept { return request_.settings; }
    // As Prepare has measured it: 0 without an info text.
    float InfoHeight() const noexcept { return infoHeight_; }
    float ButtonWidth() const noexcept { return buttonWidth_; }
    // How much more than designed the info text needs.
    float InfoSurplus() const noexcept;

    // Esc, where the settings let it cancel.
    bool OnPreview(const MSG& message) override;

private:
    const DialogRequest request_;
    float infoHeight_ = 0;
    float buttonWidth_ = kButtonWidth;
    bool accepted_ = false;

protected:
    Label lblText;
    Button OKButton{*this,
                    {0, 0, kButtonWidth, kButtonHeight},
                    L"OK",
                    [this] { OnButton(); },
                    Button::Kind::Default};
};

} // namespace quill
