#include "dialogs/TaskDialog.h"

#include "core/Apartment.h"
#include "core/Catalogue.h"

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
    OutcomeScope outcome(ending_);
    const DialogWatch watch(timeout_, [this] { return ClientsGone(); });
    try {
        return body(outcome, watch);
    } catch (const AutomationError& error) {
        errorCode_ = NumberOf(error);
        return 0;
    }
}

SHORT TaskDialog::Finish(HRESULT result, int pressed, OutcomeScope& outcome,
                         const DialogWatch& watch)
{
    errorCode_ = result;
    if (result != S_OK) return 0;
    outcome.ending = watch.EndingOr(pressed == IDCANCEL ? Ending::Cancelled : Ending::Accepted);
    return outcome.ending == Ending::TimeOver ? SHORT{0} : static_cast<SHORT>(pressed);
}

SHORT TaskDialog::Show(const std::wstring& prompt, LONG buttons, const std::wstring& title)
{
    return Guarded([&](OutcomeScope& outcome, const DialogWatch& watch) {
        // One argument can carry both texts, with a NUL between them.
        const size_t nul = prompt.find(L'\0');
        const std::wstring instruction = prompt.empty() ? properties_.text : prompt.substr(0, nul);
        std::wstring content = prompt.empty() ? properties_.subText : std::wstring();
        if (nul != std::wstring::npos) content = prompt.substr(nul + 1);
        const std::wstring caption =
            title.empty() ? properties_.title : title.substr(0, kTitleLimit);
        const auto common = static_cast<TASKDIALOG_COMMON_BUTTON_FLAGS>(
            buttons == kButtonsProperty ? properties_.buttons : buttons);

        const IconModule module = FindIcon();
        const IconName icon = properties_.mainIconShown; // a copy, for the time of the wait
        const auto& show = Seam<TaskDialogFunctions>().show;
        if (!show) RaiseRuntimeError(RuntimeError::EntryPointNotFound);
        int pressed = 0;
        const HRESULT result = show(nullptr, module.get(), caption.c_str(), instruction.c_str(),
                                    NullIfEmpty(content), common, icon.Pointer(), &pressed);
        return Finish(result, pressed, outcome, watch);
    });
}

SHORT TaskDialog::ShowEx()
{
    return Guarded([&](OutcomeScope& outcome, const DialogWatch& watch) {
        LONG flags = properties_.options;
        if (properties_.customButtonStyle == 1) flags |= TDF_USE_COMMAND_LINKS;
        if (properties_.customButtonStyle == 2) flags |= TDF_USE_COMMAND_LINKS_NO_ICON;
        if (properties_.radioButtonSelected == 0) flags |= TDF_NO_DEFAULT_RADIO_BUTTON;
        if (properties_.verificationChecked) flags |= TDF_VERIFICATION_FLAG_CHECKED;

        const IconModule module = FindIcons();
        const ButtonList buttons = MakeButtons(customButtons_, kFirstCustomButton);
        const ButtonList radioButtons = MakeButtons(radioButtons_, kFirstRadioButton);
        const Properties shown = properties_;

        TASKDIALOGCONFIG config{};
        config.cbSize = sizeof config;
        config.hInstance = module.get();
        config.dwFlags = static_cast<TASKDIALOG_FLAGS>(flags);
        config.dwCommonButtons = static_cast<TASKDIALOG_COMMON_BUTTON_FLAGS>(shown.buttons);
        config.pszMainIcon = shown.mainIconShown.Pointer();
        config.pszFooterIcon = shown.footerIconShown.Pointer();
        config.pszWindowTitle = shown.title.c_str();
        config.pszMainInstruction = shown.text.c_str();
        config.pszContent = shown.subText.c_str();
        config.pszExpandedInformation = NullIfEmpty(shown.expandText);
        config.pszExpandedControlText = NullIfEmpty(shown.expandLabelEx);
        config.pszCollapsedControlText = NullIfEmpty(shown.expandLabelCo);
        config.pszFooter = NullIfEmpty(shown.footerText);
        config.pszVerificationText = NullIfEmpty(shown.verificationLabel);
        config.cButtons = static_cast<UINT>(buttons.records.size());
        config.pButtons = buttons.records.data();
        config.nDefaultButton = shown.defaultButton;
        config.cRadioButtons = static_cast<UINT>(radioButtons.records.size());
        config.pRadioButtons = radioButtons.records.data();
        config.nDefaultRadioButton = shown.radioButtonSelected;

        const auto& show = Seam<TaskDialogFunctions>().showIndirect;
        if (!show) RaiseRuntimeError(RuntimeError::EntryPointNotFound);
        int pressed = 0;
        int radioButton = 0;
        BOOL checked = FALSE;
        const HRESULT result = show(&config, &pressed, &radioButton, &checked);
        const SHORT answer = Finish(result, pressed, outcome, watch);
        if (answer != 0) {
            properties_.radioButtonSelected = radioButton;
            properties_.verificationChecked = checked != FALSE;
        }
        return answer;
    });
}

// The icon of Show; the module it comes from stays loaded until the dialog is closed.
IconModule TaskDialog::FindIcon()
{
    properties_.mainIconShown = {};
    if (properties_.iconResFile.empty()) {
        properties_.mainIconShown.number = LOWORD(properties_.icon);
        return nullptr;
    }
    if (properties_.iconResId.empty()) return nullptr;
    IconModule module = LoadIconModule(properties_.iconResFile);
    if (module) properties_.mainIconShown = ParseIconName(properties_.iconResId);
    return module;
}

// Both icons of ShowEx.
IconModule TaskDialog::FindIcons()
{
    const auto byNumber = [](LONG icon) { return IconName{LOWORD(icon), {}}; };
    if (properties_.iconResFile.empty()) {
        properties_.mainIconShown = byNumber(properties_.icon);
        properties_.footerIconShown = byNumber(properties_.footerIcon);
        return nullptr;
    }
    IconModule module = LoadIconModule(properties_.iconResFile);
    if (!module) return nullptr; // Kept as published: the icons of the last dialog stay.
    properties_.mainIconShown = properties_.iconResId.empty()
                                    ? byNumber(properties_.icon)
                                    : ParseIconName(properties_.iconResId);
    // Kept as published: a "#" has no meaning here.
    properties_.footerIconShown = properties_.footerIconResId.empty()
                                      ? byNumber(properties_.footerIcon)
                                      : IconName{0, properties_.footerIconResId};
    // Without a name the numbers are the system's.
    if (properties_.iconResId.empty() && properties_.footerIconResId.empty()) return nullptr;
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
