// Quill.TaskDialog: the system's task dialog.
#pragma once

#include <array>
#include <functional>

#include "core/Automation.h"
#include "gui/IconModule.h"
#include "gui/windowfn.h"

namespace quill {

// Raises no errors of its own: ErrorCode tells what failed, and the result is 0.
class TaskDialog final : public Automation<_TaskDialog> {
public:
    READ_ONLY_PROPERTY(LONG, ErrorCode, errorCode_)
    STORED_PROPERTY(LONG, Buttons, buttons_)
    STORED_PROPERTY(LONG, Icon, icon_, StockIcon)
    STORED_PROPERTY(BSTR, IconResFile, iconResFile_)
    STORED_PROPERTY(BSTR, IconResID, iconResId_)
    STORED_PROPERTY(BSTR, Text, text_)
    STORED_PROPERTY(BSTR, SubText, subText_)
    STORED_PROPERTY(BSTR, Title, title_, CutTo<kTitleLimit>)
    STORED_VARIANT(CustomButtons, customButtons_)
    STORED_PROPERTY(LONG, CustomButtonStyle, customButtonStyle_, Within<0, 2>)
    STORED_PROPERTY(LONG, DefaultButton, defaultButton_)
    STORED_PROPERTY(BSTR, ExpandText, expandText_)
    STORED_PROPERTY(BSTR, ExpandLabelCo, expandLabelCo_)
    STORED_PROPERTY(BSTR, ExpandLabelEx, expandLabelEx_)
    STORED_PROPERTY(LONG, FooterIcon, footerIcon_, StockIcon)
    STORED_PROPERTY(BSTR, FooterIconResID, footerIconResId_)
    STORED_PROPERTY(BSTR, FooterText, footerText_)
    STORED_PROPERTY(LONG, Options, options_, Masked<kOptions>)
    STORED_VARIANT(RadioButtons, radioButtons_)
    STORED_PROPERTY(LONG, RadioButtonSelected, radioButtonSelected_)
    STORED_PROPERTY(BSTR, VerificationLabel, verificationLabel_)
    STORED_PROPERTY(VARIANT_BOOL, VerificationChecked, verificationChecked_)
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

    SHORT Show(const std::wstring& prompt, LONG buttons, const std::wstring& title);
    SHORT ShowEx();
    template <class Body>
    SHORT Guarded(Body&& body);
    SHORT Finish(HRESULT result, int pressed);
    IconModule FindIcon();
    IconModule FindIcons();
    static ButtonList MakeButtons(const VARIANT& captions, int firstIdentifier);

    LONG errorCode_ = 0;
    LONG buttons_ = 0;
    LONG icon_ = 0;
    std::wstring iconResFile_;
    std::wstring iconResId_;
    std::wstring text_;
    std::wstring subText_;
    std::wstring title_;
    Variant customButtons_;
    LONG customButtonStyle_ = 0;
    LONG defaultButton_ = 0;
    std::wstring expandText_;
    std::wstring expandLabelCo_;
    std::wstring expandLabelEx_;
    LONG footerIcon_ = 0;
    std::wstring footerIconResId_;
    std::wstring footerText_;
    LONG options_ = 0;
    Variant radioButtons_;
    LONG radioButtonSelected_ = 1;
    std::wstring verificationLabel_;
    bool verificationChecked_ = false;

    // From the last dialog.
    IconName mainIconShown_;
    IconName footerIconShown_;
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
