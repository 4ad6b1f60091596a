#include "dialogs/MessageBox.h"

#include "core/Apartment.h"
#include "core/Catalogue.h"
#include "core/quillfn.h"
#include "gui/DialogWatch.h"
#include "gui/windowfn.h"

namespace quill {

namespace {

constexpr SHORT kTimeOver = -1; // the result

constexpr LONG kPropertyMode = -1; // the style that stands for the properties

// Comes before everything else. Kept as published: both kinds of modality are set.
constexpr LONG kPrecedence = MB_TOPMOST | MB_SETFOREGROUND | MB_TASKMODAL | MB_SYSTEMMODAL;

// Identifiers of the system's own icons: IDI_APPLICATION to IDI_SHIELD.
constexpr LONG kFirstSystemIcon = 32512;
constexpr LONG kLastSystemIcon = 32518;

bool IsStandardIcon(LONG icon)
{
    return icon == MB_ICONHAND || icon == MB_ICONQUESTION || icon == MB_ICONEXCLAMATION ||
           icon == MB_ICONASTERISK;
}

} // namespace

CREATABLE(MessageBox)

SHORT MessageBox::Show(const std::wstring& message, LONG style, const std::wstring& title)
{
    OutcomeScope outcome(ending_);
    Appearance appearance;
    if (style == kPropertyMode)
        appearance = FromProperties();
    else
        appearance.style = static_cast<DWORD>(style);
    const std::wstring text = message.empty() ? text_ : message;
    const std::wstring caption = title.empty() ? title_ : title.substr(0, kTitleLimit);

    MSGBOXPARAMSW parameters{};
    parameters.cbSize = sizeof parameters;
    parameters.hInstance = appearance.module.get();
    parameters.lpszText = text.c_str();
    parameters.lpszCaption = caption.c_str();
    parameters.dwStyle = appearance.style;
    parameters.lpszIcon = appearance.icon.Pointer();
    parameters.dwLanguageId = static_cast<DWORD>(static_cast<SHORT>(LOWORD(language_)));

    const bool leave = (appearance.style & MB_NOFOCUS) != 0;
    const DialogWatch watch(
        timeout_, [this] { return ClientsGone(); },
        leave ? DialogWatch::Front::Leave : DialogWatch::Front::Bring);
    const auto button = static_cast<SHORT>(Seam<MessageBoxFunctions>().show(&parameters));
    if (button == 0) return 0;
    outcome.ending = watch.EndingOr(button == IDCANCEL ? Ending::Cancelled : Ending::Accepted);
    return outcome.ending == Ending::TimeOver ? kTimeOver : button;
}

MessageBox::Appearance MessageBox::FromProperties() const
{
    Appearance appearance;
    // The filtered properties have no bit in common.
    LONG style = buttons_ + defButton_ + (options_ | (precedence_ ? kPrecedence : 0));
    if (FindIcon(appearance))
        style |= MB_USERICON;
    else if (iconResFile_.empty() && IsStandardIcon(icon_))
        style |= icon_;
    appearance.style = static_cast<DWORD>(style);
    return appearance;
}

// True when the box has an icon other than the standard ones.
bool MessageBox::FindIcon(Appearance& appearance) const
{
    if (iconResFile_.empty()) {
        if (!InRange(icon_, kFirstSystemIcon, kLastSystemIcon)) return false;
        appearance.icon.number = LOWORD(icon_);
        return true;
    }
    if (iconResId_.empty() && icon_ == 0) return false;
    appearance.module = LoadIconModule(iconResFile_);
    if (!appearance.module) return false;
    appearance.icon = iconResId_.empty() ? IconName{LOWORD(icon_), {}} : ParseIconName(iconResId_);
    return true;
}

} // namespace quill
