// What the selection dialogs share: their properties, how their forms are shown and how they end.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "core/Automation.h"
#include "dialogs/Answers.h"
#include "gui/Controls.h"
#include "gui/ScrollingForm.h"

namespace quill {

// The properties of a dialog. A change takes effect the next time that it is shown.
struct DialogSettings {
    bool topmost = true;
    bool fontModernize = true;
    SHORT fontEnlarge = 0; // points added to the design's 9
    std::wstring info;
    std::wstring buttonText;
    bool dlgCancelEsc = false;
    bool timeoutAccepts = false;
    bool showCountdown = false;
    std::wstring cancelText; // empty: no Cancel button
};

// What a form needs for one call. The settings are a copy, since calls that arrive during the wait
// may change the object's.
struct DialogRequest {
    DialogSettings settings;
    LONG timeout;                    // seconds; 0: none
    std::function<bool()> abandoned; // true once no caller waits for the answer
    Ending& ending;                  // receives how the dialog ended
};

// The properties of every selection dialog: Topmost, Info (cut to `InfoLimit` characters),
// ButtonText, and those for its end. The mixins below add the others to the dialogs that have them.
template <class Interface, size_t InfoLimit>
class Dialog : public WithTimeout<Automation<Interface>> {
public:
    STORED_PROPERTY(VARIANT_BOOL, Topmost, settings_.topmost)
    STORED_PROPERTY(BSTR, Info, settings_.info, CutTo<InfoLimit>)
    STORED_PROPERTY(BSTR, ButtonText, settings_.buttonText)
    STORED_PROPERTY(VARIANT_BOOL, TimeoutAccepts, settings_.timeoutAccepts)
    STORED_PROPERTY(VARIANT_BOOL, ShowCountdown, settings_.showCountdown)
    STORED_PROPERTY(BSTR, CancelText, settings_.cancelText)

protected:
    // Every method that shows the dialog begins with `Showing showing(*this);`. At its end the
    // object knows how the dialog ended, or that there was none.
    class Showing : public OutcomeScope {
    public:
        explicit Showing(Dialog& dialog) noexcept : OutcomeScope(dialog.ending_), dialog_(dialog) {}
        DialogRequest Request()
        {
            return {dialog_.settings_, dialog_.timeout_,
                    [&dialog = dialog_] { return dialog.ClientsGone(); }, ending};
        }

    private:
        Dialog& dialog_;
    };

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

// A form that asks the user for something: an info text, the controls of the derived form, the OK
// button and, where the settings ask for it, the Cancel button, the last one for the tab key.
// Derived forms place them by OnResize.
class DialogForm : public ScrollingForm {
protected:
    DialogForm(const DialogDesign& design, DialogRequest request);

    // Gives the form its title, texts, fonts and keys, and measures what the texts need. Without an
    // info text its label is hidden, and the derived form closes the gap.
    void Prepare(const std::wstring& title);

    // Shows the form and waits for the user, or for the end of the time. True when the answer
    // counts.
    bool Ask();

    // Keeps the user's answer and closes the form, unless OnAccept refuses.
    void Accept();

    // Closes the form, which has ended in this way. Of two ends in the same instant the first
    // counts: the window is gone then.
    void Finish(Ending ending);

    // The time is over. The form closes once whatever loop of the platform the user is in has
    // ended; `accept` presses OK then, and what OK refuses is cancelled.
    void EndByTime(bool accept);

    // Ends the loop of the platform that a control of the form is in; false when there is none.
    virtual bool LeaveLoop() { return EndPlatformLoop(); }

    // Shows a dialog of the platform on top of the form, by `show`, and brings it to the front. It
    // is ended before the form, when the form's time is over or nobody waits for the answer.
    void Nest(const std::function<void()>& show);

    // Keeps the user's answer; false leaves the form open.
    virtual bool OnAccept() = 0;

    // The OK button was pressed.
    virtual void OnButton() { Accept(); }

    const DialogSettings& Settings() const noexcept { return request_.settings; }
    // As Prepare has measured it: 0 without an info text.
    float InfoHeight() const noexcept { return infoHeight_; }
    float ButtonWidth() const noexcept { return buttonWidth_; }
    // How much more than `room` two buttons need; 0 without a Cancel button.
    float WidthSurplus(float room) const noexcept;
    // Places OK where it stands alone, or Cancel there, at its right edge, and OK left of that.
    void PlaceButtons(const TwipRect& alone);
    // How much more than designed the info text needs.
    float InfoSurplus() const noexcept;

    // Esc, where the settings let it cancel, and Enter on the Cancel button.
    bool OnPreview(const MSG& message) override;
    // Not while another dialog is on top of it: that goes first.
    void OnClose() override
    {
        if (!nested_) Finish(Ending::Closed);
    }
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    // The button that the end of the time presses; null without one.
    Button* TimedButton() noexcept;
    void ShowSecondsLeft(LONG seconds);
    void OnLook();
    float WidthOf(const Button& button) const;

    const DialogRequest request_;
    float infoHeight_ = 0;
    float buttonWidth_ = kButtonWidth;
    float cancelWidth_ = 0; // 0: there is none
    bool accepted_ = false;
    bool timeOver_ = false;
    bool acceptThen_ = false;
    bool nested_ = false;              // a dialog of the platform is open
    std::unique_ptr<AnswerTime> time_; // while the form is shown
    std::wstring counted_;             // the caption that the countdown stands behind

protected:
    Label lblText;
    Button OKButton{*this,
                    {0, 0, kButtonWidth, kButtonHeight},
                    L"OK",
                    [this] { OnButton(); },
                    Button::Kind::Default};

private:
    std::unique_ptr<Button> cancelButton_; // null where the settings ask for none
};

} // namespace quill
