// The form of Quill.ProgressWindow.
#pragma once

#include <optional>

#include "gui/Controls.h"
#include "gui/PacedDisplay.h"
#include "gui/windowfn.h"

namespace quill {

class frmProWin final : public Form {
public:
    // What the form reports to its object, which closes the form before it is destroyed.
    class Owner {
    public:
        // The button was pressed; `armed` when this press is one that is reported.
        virtual void OnPressed(bool armed) noexcept = 0;
        // The taskbar has made a button for the window; its state is still to be set.
        virtual void OnTaskbarButton() noexcept = 0;

    protected:
        ~Owner() = default;
    };

    explicit frmProWin(Owner& owner);

    // 1: the button can be pressed, 2: it is shown, any other value: there is none.
    void SetButtonMode(SHORT mode);
    // The next press is reported; the ones after it are not.
    void SetArmed(bool armed) noexcept { armed_ = armed; }
    // The outer width in pixels of 96 an inch.
    void SetWidth(int pixels);

    // Makes the progress bar; false when the platform refuses. Arguments as for CreateBar.
    bool AddBar(LONG style, bool classic);
    HWND Bar() const noexcept { return Closed() ? nullptr : bar_; }

    void ShowAtCentre(bool topmost);

private:
    static constexpr float kWidth = 5100; // twips, as all that follow
    static constexpr float kHeight = 3000;
    static constexpr float kHeightWithButton = 3945;
    static constexpr float kTextWidth = 4600;
    static constexpr float kLabelWidth = 3000;
    static constexpr float kButtonLeft = 3560;

    void OnResize(TwipSize outer) override;
    TwipSize MinimumSize() const override { return {kWidth, Height()}; }
    TwipSize MaximumSize() const override { return {0, Height()}; }
    void OnClose() override;
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;

    float Height() const noexcept { return mode_ == 0 ? kHeight : kHeightWithButton; }
    void Resize(TwipSize outer);
    void Press();

    Owner& owner_;
    const UINT taskbarButtonCreated_ = HearShell(Window(), L"TaskbarButtonCreated");
    SHORT mode_ = 0;
    bool armed_ = false;
    HWND bar_ = nullptr; // a child of the window, and goes with it
    std::optional<PacedPainting> barPainting_;

public:
    Label lblMainText{*this, {150, 120, kTextWidth, 1020}};
    Label lblSubText{*this, {150, 1600, kTextWidth, 740}, L"", SS_NOPREFIX | SS_EDITCONTROL};
    Frame btnFrame{*this, {-15, 2340, kWidth, 1500}};
    Label lblBtnText{*this, {150, 2700, kLabelWidth, 560}};
    Button PwButton{*this, {kButtonLeft, 2720, 1190, 380}, L"Stop", [this] { Press(); }};
};

} // namespace quill
