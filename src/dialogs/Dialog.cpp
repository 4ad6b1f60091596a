#include "dialogs/Dialog.h"

#include <algorithm>

#include "gui/guifn.h"
#include "gui/windowfn.h"

namespace quill {

namespace {

// Longer captions are cut, in UTF-16 units.
constexpr size_t kButtonTextLimit = 32;

// The window is at least this much wider than its button.
constexpr float kBesideButton = 900;

} // namespace

DialogForm::DialogForm(const DialogDesign& design, DialogRequest request)
    : ScrollingForm(design.caption, design.outer, design.style), request_(std::move(request)),
      lblText(*this, {0, 0, design.infoWidth, 0})
{
}

void DialogForm::Prepare(const std::wstring& title)
{
    const DialogSettings& settings = Settings();
    const bool hasInfo = !settings.info.empty();
    if (!title.empty()) SetCaption(title.substr(0, kTitleLimit));
    lblText.SetText(settings.info);
    lblText.Enable(hasInfo);
    lblText.SetVisible(hasInfo);
    OKButton.PlaceLast();
    if (!settings.buttonText.empty())
        OKButton.SetText(settings.buttonText.substr(0, kButtonTextLimit));
    if (settings.fontModernize) ApplyModernFont(*this);
    if (settings.fontEnlarge != 0) ApplyFontSize(*this, kDesignFont.points + settings.fontEnlarge);
    if (hasInfo) infoHeight_ = std::clamp(lblText.HeightOfText(), kInfoHeight, kMaximumInfoHeight);
    buttonWidth_ =
        std::clamp(OKButton.WidthOfText(), kButtonWidth, OuterSize().width - kBesideButton);
}

bool DialogForm::Ask()
{
    Show(Settings().topmost);
    WaitUntilClosed(request_.abandoned);
    return accepted_;
}

void DialogForm::Accept()
{
    if (!OnAccept()) return;
    accepted_ = true;
    Unload();
}

float DialogForm::InfoSurplus() const noexcept
{
    return std::max(0.0F, infoHeight_ - kInfoHeight);
}

bool DialogForm::OnPreview(const MSG& message)
{
    const bool cancels =
        Settings().dlgCancelEsc && message.message == WM_KEYDOWN && message.wParam == VK_ESCAPE;
    if (cancels) Unload();
    return cancels;
}

} // namespace quill
