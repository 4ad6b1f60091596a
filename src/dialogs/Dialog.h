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

// Says that a dialog of an object is open, for those of which there is one at a time.
class OpenMark {
public:
    explicit OpenMark(bool& open) noexcept : open_(open) { open_ = true; }
    ~OpenMark() { open_ = false; }
    OpenMark(const OpenMark&) = delete;
    OpenMark& operator=(const OpenMark&) = delete;

private:
    bool& open_;
};

// The properties of every selection dialog: Topmost, Info (cut to `InfoLimit` characters) and
// ButtonText. The mixins below add the others to the dialogs that have them.
template <class Interface, size_t InfoLimit>
class Dialog : public Automation<Interface> {
public:
    STDMETHODIMP get_Topmost(VARIANT_BOOL* value) noexcept override
    {
        return this->Get(value, settings_.topmost);
    }
    STDMETHODIMP put_Topmost(VARIANT_BOOL value) noexcept override
    {
        return this->Put(settings_.topmost, value);
    }
    STDMETHODIMP get_Info(BSTR* value) noexcept override
    {
        return this->Get(value, settings_.info);
    }
    STDMETHODIMP put_Info(BSTR value) noexcept override
    {
        return this->template Put<CutTo<InfoLimit>>(settings_.info, value);
    }
    STDMETHODIMP get_ButtonText(BSTR* value) noexcept override
    {
        return this->Get(value, settings_.buttonText);
    }
    STDMETHODIMP put_ButtonText(BSTR value) noexcept override
    {
        return this->Put(settings_.buttonText, value);
    }

protected:
    DialogSettings settings_;
};

// Adds FontModernize and FontEnlarge (0 to 2; other values are ignored).
template <class Base>
class WithFonts : public Base {
public:
    STDMETHODIMP get_FontModernize(VARIANT_BOOL* value) noexcept override
    {
        return this->Get(value, this->settings_.fontModernize);
    }
    STDMETHODIMP put_FontModernize(VARIANT_BOOL value) noexcept override
    {
        return this->Put(this->settings_.fontModernize, value);
    }
    STDMETHODIMP get_FontEnlarge(SHORT* value) noexcept override
    {
        return this->Get(value, this->settings_.fontEnlarge);
    }
    STDMETHODIMP put_FontEnlarge(SHORT value) noexcept override
    {
        return this->template Put<Within<0, 2>>(this->settings_.fontEnlarge, value);
    }
};

// Adds DlgCancelEsc.
template <class Base>
class WithCancelEsc : public Base {
public:
    STDMETHODIMP get_DlgCancelEsc(VARIANT_BOOL* value) noexcept override
    {
        return this->Get(value, this->settings_.dlgCancelEsc);
    }
    STDMETHODIMP put_DlgCancelEsc(VARIANT_BOOL value) noexcept override
    {
        return this->Put(this->settings_.dlgCancelEsc, value);
    }
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
    void OnKeyDown(WPARAM key) override;

private:
    float infoHeight_ = 0;
    float buttonWidth_ = kButtonWidth;
};

} // namespace quill
