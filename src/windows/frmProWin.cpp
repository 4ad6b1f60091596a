#include "windows/frmProWin.h"

#include <algorithm>
#include <utility>

#include "windows/ProgressBarFn.h"

namespace quill {

namespace {

constexpr float kBarTop = 1200; // twips
constexpr int kBarHeight = 20;  // pixels

} // namespace

frmProWin::frmProWin(Owner& owner)
    : Form(L"QUILL Progress Window", {kWidth, kHeight}, kModelessStyle), owner_(owner)
{
    for (Control* control :
         {static_cast<Control*>(&lblMainText), static_cast<Control*>(&lblSubText),
          static_cast<Control*>(&lblBtnText), static_cast<Control*>(&PwButton)})
        control->SetFont(
            {L"Segoe UI", control == &lblMainText ? 12 : control->CurrentFont().points});
    SetButtonMode(0);
}

void frmProWin::SetButtonMode(SHORT mode)
{
    mode_ = mode;
    const bool shown = mode == 1 || mode == 2;
    PwButton.Enable(mode == 1);
    PwButton.SetVisible(shown);
    lblBtnText.SetVisible(shown);
    btnFrame.SetVisible(shown);
    RECT place{};
    GetWindowRect(Window(), &place);
    ResizeWindow(Window(), place.right - place.left, ToPixels(Height()));
}

void frmProWin::SetWidth(int pixels)
{
    if (ToTwips(pixels) > kWidth) ResizeWindow(Window(), pixels, ToPixels(Height()));
}

bool frmProWin::AddBar(LONG style, bool classic)
{
    barTop_ = ToPixels(kBarTop);
    bar_ = CreateBar(Window(), style, barTop_, classic);
    if (!bar_) return false;
    barPainting_.emplace(bar_);
    // Right behind the main text, which names it for screen readers.
    SetWindowPos(bar_, lblMainText.Window(), 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    return true;
}

void frmProWin::ShowAtCentre(bool topmost)
{
    PlaceAtCentre(OuterSize());
    ShowModeless(topmost);
}

void frmProWin::OnResize(TwipSize outer)
{
    const float wider = std::max(0.0F, outer.width - kWidth);
    const auto widen = [](Control& control, float width) {
        TwipRect place = control.Place();
        place.width = width;
        control.Move(place);
    };
    widen(lblMainText, wider + kTextWidth);
    widen(lblSubText, wider + kTextWidth);
    widen(btnFrame, wider + kWidth);
    widen(lblBtnText, wider + 3000);
    TwipRect button = PwButton.Place();
    button.left = wider + kButtonLeft;
    PwButton.Move(button);
    if (!bar_) return;
    if (const int top = ToPixels(kBarTop); top != barTop_) { // on a monitor of another resolution
        POINT corner{};
        MapWindowPoints(bar_, Window(), &corner, 1);
        SetWindowPos(bar_, nullptr, corner.x, top, 0, 0,
                     SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
        barTop_ = top;
    }
    ResizeWindow(bar_, ToPixels(lblMainText.Place().width), kBarHeight);
}

// True when the press was told.
bool frmProWin::Press()
{
    if (!std::exchange(armed_, false)) return false;
    owner_.OnPressed();
    return true;
}

// The close box presses the button. Where that tells nobody, it closes the window.
void frmProWin::OnClose()
{
    if (mode_ == 1 && Press()) return;
    Unload();
    owner_.OnPressed();
}

void frmProWin::OnMessage(UINT message)
{
    if (message == taskbarButtonCreated_) owner_.OnTaskbarButton();
}

} // namespace quill
