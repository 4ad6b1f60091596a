// Quill.TaskDialog: the system's task dialog.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "dialogs/Answers.h"
#include "gui/DialogWatch.h"
#include "gui/IconModule.h"
#include "gui/windowfn.h"

namespace quill {

// Raises no errors of its own: ErrorCode tells what failed, and the result is 0.
class TaskDialog final : public WithTimeout<Automation<_TaskDialog>> {
public:
    READ_ONLY_PROPERTY(LONG, ErrorCode, errorCode_)
    STORED_PROPERTY(LONG, Buttons, properties_.buttons)
    STORED_PROPERTY(LONG, Icon, properties_.icon, StockIcon)
    STORED_PROPERTY(BSTR, IconResFile, properties_.iconResFile)
    STORED_PROPERTY(BSTR, IconResID, properties_.iconResId)
    STORED_PROPERTY(BSTR, Text, properties_.text)
    STORED_PROPERTY(BSTR, SubText, properties_.subText)
    STORED_PROPERTY(BSTR, Title, properties_.title, CutTo<kTitleLimit>)
    STORED_VARIANT(CustomButtons, customButtons_)
    STORED_PROPERTY(LONG, CustomButtonStyle, properties_.customButtonStyle, Within<0, 2>)
    STORED_PROPERTY(LONG, DefaultButton, properties_.defaultButton)
    STORED_PROPERTY(BSTR, ExpandText, properties_.expandText)
    STORED_PROPERTY(BSTR, ExpandLabelCo, properties_.expandLabelCo)
    STORED_PROPERTY(BSTR, ExpandLabelEx, properties_.expandLabelEx)
    STORED_PROPERTY(LONG, FooterIcon, properties_.footerIcon, StockIcon)
    STORED_PROPERTY(BSTR, FooterIconResID, properties_.footerIconResId)
    STORED_PROPERTY(BSTR, FooterText, properties_.footerText)
    STORED_PROPERTY(LONG, Options, properties_.options, Masked<kOptions>)
    STORED_VARIANT(RadioButtons, radioButtons_)
    STORED_PROPERTY(LONG, RadioButtonSelected, properties_.radioButtonSelected)
    STORED_PROPERTY(BSTR, VerificationLabel, properties_.verificationLabel)
    STORED_PROPERTY(VARIANT_BOOL, VerificationChecked, properties_.verificationChecked)
    METHOD(SHORT, Show, (BSTR prompt, LONG Buttons, BSTR Title), prompt, Buttons, Title)
    METHOD(SHORT, ShowEx, ())

private:
    // Cancellation, where the expanded text goes, right-to-left, minimising. What would need a
    // callback is not among them.
    static constexpr LONG kOptions = TDF_ALLOW_DIALOG_CANCELLATION | TDF_EXPAND_FOOTER_AREA |
                                     TDF_EXPANDED_BY_DEFAULT | TDF_RTL_LAYOUT |
                                     TDF_CAN_BE_MINIMIZED;

    // The dialog's stock icons (-1 to -9), none, or a system icon; the old one stays otherwise.
    struct StockIcon {
        static LONG Apply(LONG old, LONG value)
        {
            return (value >= -9 && value <= 0) || (value >= 32512 && value <= 32518) ? value : old;
        }
    };

    // Captions of buttons, and the records that point at them.
    struct ButtonList {
        std::vector<std::wstring> captions;
        std::vector<TASKDIALOG_BUTTON> records;
    };

    // What scripts set, and the icons of the last dialog. A dialog shows a copy, and a ButtonList
    // of each kind, since calls that arrive meanwhile may change all that.
    struct Properties {
        LONG buttons = 0;
        LONG icon = 0;
        std::wstring iconResFile, iconResId;
        std::wstring text, subText, title;
        LONG customButtonStyle = 0;
        LONG defaultButton = 0;
        std::wstring expandText, expandLabelCo, expandLabelEx;
        LONG footerIcon = 0;
        std::wstring footerIconResId, footerText;
        LONG options = 0;
        LONG radioButtonSelected = 1;
        std::wstring verificationLabel;
        bool verificationChecked = false;
        IconName mainIconShown, footerIconShown;
    };

    SHORT Show(const std::wstring& prompt, LONG buttons, const std::wstring& title);
    SHORT ShowEx();
    template <class Body>
    SHORT Guarded(Body&& body);
    // Keeps how the dialog ended; what Show and ShowEx return.
    SHORT Finish(HRESULT result, int pressed, OutcomeScope& outcome, const DialogWatch& watch);
    IconModule FindIcon();
    IconModule FindIcons();
    static ButtonList MakeButtons(const VARIANT& captions, int firstIdentifier);

    Properties properties_;
    Variant customButtons_;
    Variant radioButtons_;
    LONG errorCode_ = 0;
};

// A seam: the platform's task dialogs, null where this Windows lacks them.
struct TaskDialogFunctions {
    std::function<HRESULT(HWND, HINSTANCE, PCWSTR, PCWSTR, PCWSTR, TASKDIALOG_COMMON_BUTTON_FLAGS,
                          PCWSTR, int*)>
        show = FindSystemFunction<decltype(::PlatformTaskDialog)>(L"comctl32.dll", "TaskDialog");
    std::function<HRESULT(const TASKDIALOGCONFIG*, int*, int*, BOOL*)> showIndirect =
        FindSystemFunction<decltype(::TaskDialogIndirect)>(L"comctl32.dll", "TaskDialogIndirect");
};

} // namespace quill
