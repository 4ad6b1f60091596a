#include "windows/frmProWin.h"

#include <algorithm>
#include <utility>

#include "windows/ProgressBarFn.h"

namespace quill {

namespace {

constexpr TwipRect kBar{150, 1200, 4560, 300}; // when it is made; 10, 80, 304, 20 pixels of 96
constexpr int kMainTextPoints = 12;
constexpr float kTwipsPerPixel = 15; // of 96 an inch

} // namespace

frmProWin::frmProWin(Owner& owner)
    : Form(L"QUILL Progress Window", {kWidth, kHeight}, kModelessStyle), owner_(owner)
{
    Control* const controls[] = {&lblMainText, &lblSubText, &lblBtnText, &PwButton};
    for (Control* control : controls)
        control->SetFont({L"Segoe UI", control->CurrentFont().points});
    lblMainText.SetFont({L"Segoe UI", kMainTextPoints});
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
    // One that is minimised takes its height when it is restored.
    if (!IsIconic(Window())) Resize({OuterSize().width, Height()});
}

void frmProWin::SetWidth(int pixels)
{
    Resize({static_cast<float>(pixels) * kTwipsPerPixel, Height()});
}

// The user may be at work elsewhere, so the window is not activated.
void frmProWin::Resize(TwipSize outer)
{
    SetWindowPos(Window(), nullptr, 0, 0, ToPixels(outer.width), ToPixels(outer.height),
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOOWNERZORDER | SWP_NOACTIVATE);
}

bool frmProWin::AddBar(LONG style, bool classic)
{
    bar_ = CreateBar(Window(), style,
                     {ToPixels(kBar.left), ToPixels(kBar.top), ToPixels(kBar.left + kBar.width),
                      ToPixels(kBar.top + kBar.height)},
                     classic);
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
    // A window manager may ignore the limits of the size.
    const TwipSize allowed{std::max(outer.width, kWidth), Height()};
    if (ToPixels(allowed.width) != ToPixels(outer.width) ||
        ToPixels(allowed.height) != ToPixels(outer.height))
        Resize(allowed); // comes back here, unless the system allows no other size

    const float wider = std::max(0.0F, OuterSize().width - kWidth);
    const auto widen = [](Control& control, float width) {
        TwipRect place = control.Place();
        place.width = width;
        control.Move(place);
    };
    widen(lblMainText, wider + kTextWidth);
    widen(lblSubText, wider + kTextWidth);
    widen(btnFrame, wider + kWidth);
    widen(lblBtnText, wider + kLabelWidth);
    TwipRect button = PwButton.Place();
    button.left = wider + kButtonLeft;
    PwButton.Move(button);
    if (!bar_) return;
    // The monitor may have another resolution than the last one.
    SetWindowPos(bar_, nullptr, ToPixels(kBar.left), ToPixels(kBar.top), 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    ResizeWindow(bar_, ToPixels(lblMainText.Place().width), ToPixels(kBar.height));
}

void frmProWin::Press()
{
    owner_.OnPressed(std::exchange(armed_, false));
}

// The close box presses a button that is enabled and armed. Otherwise it closes the window, and
// nothing is reported.
void frmProWin::OnClose()
{
    if (mode_ == 1 && armed_)
        Press();
    else
        Unload();
}

LRESULT frmProWin::Handle(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == taskbarButtonCreated_) owner_.OnTaskbarButton();
    return Form::Handle(message, wParam, lParam);
}

} // namespace quill
