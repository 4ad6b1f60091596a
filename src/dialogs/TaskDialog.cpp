#include "dialogs/TaskDialog.h"

#include "core/Apartment.h"
#include "core/Catalogue.h"
#include "gui/DialogWatch.h"

namespace quill {

namespace {

constexpr LONG kButtonsProperty = -1; // the argument that stands for the property
constexpr size_t kMaximumButtons = 32;
constexpr int kFirstCustomButton = 101;
constexpr int kFirstRadioButton = 1;

static_assert(sizeof(TASKDIALOGCONFIG) == 96);

// A text that was never set, or was emptied, is none at all: an empty one would show an empty
// label.
PCWSTR NullIfEmpty(const std::wstring& text)
{
    return text.empty() ? nullptr : text.c_str();
}

} // namespace

CREATABLE(TaskDialog)

// Runs a dialog; a run-time error on the way to it becomes the ErrorCode.
template <class Body>
SHORT TaskDialog::Guarded(Body&& body)
{
    const DialogWatch company([this] { return ClientsGone(); });
    try {
        return body();
    } catch (const AutomationError& error) {
        errorCode_ = NumberOf(error);
        return 0;
    }
}

SHORT TaskDialog::Finish(HRESULT result, int pressed)
{
    errorCode_ = result;
    return result == S_OK ? static_cast<SHORT>(pressed) : SHORT{0};
}

SHORT TaskDialog::Show(const std::wstring& prompt, LONG buttons, const std::wstring& title)
{
    return Guarded([&] {
        // One argument can carry both texts, with a NUL between them.
        const size_t nul = prompt.find(L'\0');
        const std::wstring instruction = prompt.empty() ? text_ : prompt.substr(0, nul);
        std::wstring content = prompt.empty() ? subText_ : std::wstring();
        if (nul != std::wstring::npos) content = prompt.substr(nul + 1);
        const std::wstring caption = title.empty() ? title_ : title.substr(0, kTitleLimit);
        const auto shown = static_cast<TASKDIALOG_COMMON_BUTTON_FLAGS>(
            buttons == kButtonsProperty ? buttons_ : buttons);

        const IconModule module = FindIcon();
        const IconName icon = mainIconShown_; // calls that come in meanwhile may change it
        const auto& show = Seam<TaskDialogFunctions>().show;
        if (!show) RaiseRuntimeError(RuntimeError::EntryPointNotFound);
        int pressed = 0;
        const HRESULT result = show(nullptr, module.get(), caption.c_str(), instruction.c_str(),
                                    NullIfEmpty(content), shown, icon.Pointer(), &pressed);
        return Finish(result, pressed);
    });
}

SHORT TaskDialog::ShowEx()
{
    return Guarded([&] {
        LONG flags = options_;
        if (customButtonStyle_ == 1) flags |= TDF_USE_COMMAND_LINKS;
        if (customButtonStyle_ == 2) flags |= TDF_USE_COMMAND_LINKS_NO_ICON;
        if (radioButtonSelected_ == 0) flags |= TDF_NO_DEFAULT_RADIO_BUTTON;
        if (verificationChecked_) flags |= TDF_VERIFICATION_FLAG_CHECKED;

        const IconModule module = FindIcons();
        const ButtonList buttons = MakeButtons(customButtons_, kFirstCustomButton);
        const ButtonList radioButtons = MakeButtons(radioButtons_, kFirstRadioButton);
        // Calls that come in while the dialog is open may change the properties.
        const std::array<std::wstring, 8> texts{
            title_,         text_,          subText_,    expandText_,
            expandLabelEx_, expandLabelCo_, footerText_, verificationLabel_};
        const IconName mainIcon = mainIconShown_;
        const IconName footerIcon = footerIconShown_;

        TASKDIALOGCONFIG config{};
        config.cbSize = sizeof config;
        config.hInstance = module.get();
        config.dwFlags = static_cast<TASKDIALOG_FLAGS>(flags);
        config.dwCommonButtons = static_cast<TASKDIALOG_COMMON_BUTTON_FLAGS>(buttons_);
        config.pszMainIcon = mainIcon.Pointer();
        config.pszFooterIcon = footerIcon.Pointer();
        config.pszWindowTitle = texts[0].c_str();
        config.pszMainInstruction = texts[1].c_str();
        config.pszContent = texts[2].c_str();
        config.pszExpandedInformation = NullIfEmpty(texts[3]);
        config.pszExpandedControlText = NullIfEmpty(texts[4]);
        config.pszCollapsedControlText = NullIfEmpty(texts[5]);
        config.pszFooter = NullIfEmpty(texts[6]);
        config.pszVerificationText = NullIfEmpty(texts[7]);
        config.cButtons = static_cast<UINT>(buttons.records.size());
        config.pButtons = buttons.records.data();
        config.nDefaultButton = defaultButton_;
        config.cRadioButtons = static_cast<UINT>(radioButtons.records.size());
        config.pRadioButtons = radioButtons.records.data();
        config.nDefaultRadioButton = radioButtonSelected_;

        const auto& show = Seam<TaskDialogFunctions>().showIndirect;
        if (!show) RaiseRuntimeError(RuntimeError::EntryPointNotFound);
        int pressed = 0;
        int radioButton = 0;
        BOOL checked = FALSE;
        const HRESULT result = show(&config, &pressed, &radioButton, &checked);
        if (result == S_OK && pressed != 0) {
            radioButtonSelected_ = radioButton;
            verificationChecked_ = checked != FALSE;
        }
        return Finish(result, pressed);
    });
}

// The icon of Show; the module it comes from stays loaded until the dialog is closed.
IconModule TaskDialog::FindIcon()
{
    mainIconShown_ = {};
    if (iconResFile_.empty()) {
        mainIconShown_.number = LOWORD(icon_);
        return nullptr;
    }
    if (iconResId_.empty()) return nullptr;
    IconModule module = LoadIconModule(iconResFile_);
    if (module) mainIconShown_ = ParseIconName(iconResId_);
    return module;
}

// Both icons of ShowEx.
IconModule TaskDialog::FindIcons()
{
    const auto byNumber = [](LONG icon) { return IconName{LOWORD(icon), {}}; };
    if (iconResFile_.empty()) {
        mainIconShown_ = byNumber(icon_);
        footerIconShown_ = byNumber(footerIcon_);
        return nullptr;
    }
    IconModule module = LoadIconModule(iconResFile_);
    if (!module) return nullptr; // Kept as published: the icons of the last dialog stay.
    mainIconShown_ = iconResId_.empty() ? byNumber(icon_) : ParseIconName(iconResId_);
    // Kept as published: a "#" has no meaning here.
    footerIconShown_ =
        footerIconResId_.empty() ? byNumber(footerIcon_) : IconName{0, footerIconResId_};
    // Without a name the numbers are the system's.
    if (iconResId_.empty() && footerIconResId_.empty()) return nullptr;
    return module;
}

TaskDialog::ButtonList TaskDialog::MakeButtons(const VARIANT& captions, int firstIdentifier)
{
    ButtonList buttons;
    const SAFEARRAY* array = ArrayOf(captions);
    if (!array || array->cDims == 0 || array->rgsabound[array->cDims - 1].lLbound != 0)
        return buttons;
    for (const Variant& caption : ElementsOf(*array, kMaximumButtons))
        buttons.captions.push_back(ToText(caption));
    for (const std::wstring& caption : buttons.captions)
        buttons.records.push_back(
            {firstIdentifier + static_cast<int>(buttons.records.size()), caption.c_str()});
    return buttons;
}

} // namespace quill
