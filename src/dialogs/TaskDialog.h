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
    STDMETHODIMP get_ErrorCode(LONG* value) noexcept override { return Get(value, errorCode_); }
    STDMETHODIMP get_Buttons(LONG* value) noexcept override { return Get(value, buttons_); }
    STDMETHODIMP put_Buttons(LONG value) noexcept override { return Put(buttons_, value); }
    STDMETHODIMP get_Icon(LONG* value) noexcept override { return Get(value, icon_); }
    STDMETHODIMP put_Icon(LONG value) noexcept override { return Put<StockIcon>(icon_, value); }
    STDMETHODIMP get_IconResFile(BSTR* value) noexcept override { return Get(value, iconResFile_); }
    STDMETHODIMP put_IconResFile(BSTR value) noexcept override { return Put(iconResFile_, value); }
    STDMETHODIMP get_IconResID(BSTR* value) noexcept override { return Get(value, iconResId_); }
    STDMETHODIMP put_IconResID(BSTR value) noexcept override { return Put(iconResId_, value); }
    STDMETHODIMP get_Text(BSTR* value) noexcept override { return Get(value, text_); }
    STDMETHODIMP put_Text(BSTR value) noexcept override { return Put(text_, value); }
    STDMETHODIMP get_SubText(BSTR* value) noexcept override { return Get(value, subText_); }
    STDMETHODIMP put_SubText(BSTR value) noexcept override { return Put(subText_, value); }
    STDMETHODIMP get_Title(BSTR* value) noexcept override { return Get(value, title_); }
    STDMETHODIMP put_Title(BSTR value) noexcept override
    {
        return Put<CutTo<kTitleLimit>>(title_, value);
    }
    STDMETHODIMP get_CustomButtons(VARIANT* value) noexcept override
    {
        return Get(value, customButtons_);
    }
    STDMETHODIMP put_CustomButtons(VARIANT* value) noexcept override
    {
        return Put(customButtons_, value);
    }
    STDMETHODIMP get_CustomButtonStyle(LONG* value) noexcept override
    {
        return Get(value, customButtonStyle_);
    }
    STDMETHODIMP put_CustomButtonStyle(LONG value) noexcept override
    {
        return Put<Within<0, 2>>(customButtonStyle_, value);
    }
    STDMETHODIMP get_DefaultButton(LONG* value) noexcept override
    {
        return Get(value, defaultButton_);
    }
    STDMETHODIMP put_DefaultButton(LONG value) noexcept override
    {
        return Put(defaultButton_, value);
    }
    STDMETHODIMP get_ExpandText(BSTR* value) noexcept override { return Get(value, expandText_); }
    STDMETHODIMP put_ExpandText(BSTR value) noexcept override { return Put(expandText_, value); }
    STDMETHODIMP get_ExpandLabelCo(BSTR* value) noexcept override
    {
        return Get(value, expandLabelCo_);
    }
    STDMETHODIMP put_ExpandLabelCo(BSTR value) noexcept override
    {
        return Put(expandLabelCo_, value);
    }
    STDMETHODIMP get_ExpandLabelEx(BSTR* value) noexcept override
    {
        return Get(value, expandLabelEx_);
    }
    STDMETHODIMP put_ExpandLabelEx(BSTR value) noexcept override
    {
        return Put(expandLabelEx_, value);
    }
    STDMETHODIMP get_FooterIcon(LONG* value) noexcept override { return Get(value, footerIcon_); }
    STDMETHODIMP put_FooterIcon(LONG value) noexcept override
    {
        return Put<StockIcon>(footerIcon_, value);
    }
    STDMETHODIMP get_FooterIconResID(BSTR* value) noexcept override
    {
        return Get(value, footerIconResId_);
    }
    STDMETHODIMP put_FooterIconResID(BSTR value) noexcept override
    {
        return Put(footerIconResId_, value);
    }
    STDMETHODIMP get_FooterText(BSTR* value) noexcept override { return Get(value, footerText_); }
    STDMETHODIMP put_FooterText(BSTR value) noexcept override { return Put(footerText_, value); }
    STDMETHODIMP get_Options(LONG* value) noexcept override { return Get(value, options_); }
    STDMETHODIMP put_Options(LONG value) noexcept override
    {
        return Put<Masked<kOptions>>(options_, value);
    }
    STDMETHODIMP get_RadioButtons(VARIANT* value) noexcept override
    {
        return Get(value, radioButtons_);
    }
    STDMETHODIMP put_RadioButtons(VARIANT* value) noexcept override
    {
        return Put(radioButtons_, value);
    }
    STDMETHODIMP get_RadioButtonSelected(LONG* value) noexcept override
    {
        return Get(value, radioButtonSelected_);
    }
    STDMETHODIMP put_RadioButtonSelected(LONG value) noexcept override
    {
        return Put(radioButtonSelected_, value);
    }
    STDMETHODIMP get_VerificationLabel(BSTR* value) noexcept override
    {
        return Get(value, verificationLabel_);
    }
    STDMETHODIMP put_VerificationLabel(BSTR value) noexcept override
    {
        return Put(verificationLabel_, value);
    }
    STDMETHODIMP get_VerificationChecked(VARIANT_BOOL* value) noexcept override
    {
        return Get(value, verificationChecked_);
    }
    STDMETHODIMP put_VerificationChecked(VARIANT_BOOL value) noexcept override
    {
        return Put(verificationChecked_, value);
    }
    STDMETHODIMP Show(BSTR prompt, LONG Buttons, BSTR Title, SHORT* result) noexcept override
    {
        return Call(result, &TaskDialog::ShowSimple, prompt, Buttons, Title);
    }
    STDMETHODIMP ShowEx(SHORT* result) noexcept override
    {
        return Call(result, &TaskDialog::ShowFull);
    }

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

    SHORT ShowSimple(const std::wstring& prompt, LONG buttons, const std::wstring& title);
    SHORT ShowFull();
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

    // Of the last dialog: a module that cannot be loaded leaves them as they were.
    IconName mainIconShown_;
    IconName footerIconShown_;
};

// The platform's task dialogs, null where this Windows lacks them; tests put their own in their
// place.
struct TaskDialogFunctions {
    std::function<HRESULT(HWND, HINSTANCE, PCWSTR, PCWSTR, PCWSTR, TASKDIALOG_COMMON_BUTTON_FLAGS,
                          PCWSTR, int*)>
        show;
    std::function<HRESULT(const TASKDIALOGCONFIG*, int*, int*, BOOL*)> showIndirect;
};
TaskDialogFunctions& TaskDialogsOfThread() noexcept;

} // namespace quill
