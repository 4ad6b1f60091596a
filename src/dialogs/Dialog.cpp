#include "dialogs/Dialog.h"

#include <algorithm>

#include "gui/guifn.h"
#include "gui/windowfn.h"

namespace quill {

namespace {

// Longer captions are cut, in UTF-16 units.
constexpr size_t kButtonTextLimit = 32;

} // namespace

DialogForm::DialogForm(const wchar_t* caption, TwipSize outer, DWORD style)
    : Form(caption, outer, style)
{
}

void DialogForm::Apply(const DialogSettings& settings, const std::wstring& title, Label& lblText,
                       Button& OKButton)
{
    if (!title.empty()) SetCaption(title.substr(0, kTitleLimit));
    lblText.SetText(settings.info);
    lblText.Enable(!settings.info.empty());
    lblText.SetVisible(!settings.info.empty());
    if (!settings.buttonText.empty())
        OKButton.SetText(settings.buttonText.substr(0, kButtonTextLimit));
    if (settings.fontModernize) ApplyModernFont(*this);
    if (settings.fontEnlarge != 0) ApplyFontSize(*this, kDesignFont.points + settings.fontEnlarge);
    SetKeyPreview(settings.dlgCancelEsc);
    if (!settings.info.empty())
        infoHeight_ = std::clamp(lblText.HeightOfText(), kInfoHeight, kMaximumInfoHeight);
    buttonWidth_ = std::clamp(OKButton.WidthOfText(), kButtonWidth, OuterSize().width - 900);
}

float DialogForm::InfoSurplus() const noexcept
{
    return std::max(0.0F, infoHeight_ - kInfoHeight);
}

bool DialogForm::OnKeyDown(WPARAM key)
{
    if (key == VK_ESCAPE) Unload();
    return key == VK_ESCAPE;
}

} // namespace quill
