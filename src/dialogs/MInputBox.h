// Quill.MInputBox: asks the user for one text, or for up to ten.
#pragma once

#include "dialogs/frmMIB.h"
#include "gui/windowfn.h"

namespace quill {

// Keeps the first `Length` characters; an empty text is ignored.
template <size_t Length>
struct FilledCutTo {
    static std::wstring Apply(std::wstring old, std::wstring value)
    {
        return value.empty() ? old : CutTo<Length>::Apply(old, std::move(value));
    }
};

// Raises no errors of its own.
class MInputBox final : public WithCancelEsc<WithFonts<Dialog<_MInputBox, 256>>> {
public:
    MInputBox();

    STDMETHODIMP get_InputNumber(SHORT* value) noexcept override
    {
        return Get(value, input_.number);
    }
    STDMETHODIMP put_InputNumber(SHORT value) noexcept override
    {
        return Put<Within<1, 10>>(input_.number, value);
    }
    STDMETHODIMP get_InputStart(SHORT* value) noexcept override { return Get(value, input_.start); }
    STDMETHODIMP put_InputStart(SHORT value) noexcept override
    {
        return Put<Within<0, 9>>(input_.start, value);
    }
    STDMETHODIMP get_TextLimit(SHORT* value) noexcept override
    {
        return Get(value, input_.textLimit);
    }
    STDMETHODIMP put_TextLimit(SHORT value) noexcept override
    {
        return Put<Within<1, 1024>>(input_.textLimit, value);
    }
    STDMETHODIMP get_LabelEditRatio(SHORT* value) noexcept override
    {
        return Get(value, input_.labelEditRatio);
    }
    STDMETHODIMP put_LabelEditRatio(SHORT value) noexcept override
    {
        return Put<Within<1, 7>>(input_.labelEditRatio, value);
    }
    STDMETHODIMP get_AlignInput(SHORT* value) noexcept override
    {
        return Get(value, input_.alignInput);
    }
    STDMETHODIMP put_AlignInput(SHORT value) noexcept override
    {
        return Put<Within<0, 2>>(input_.alignInput, value);
    }
    STDMETHODIMP get_AlignLabel(SHORT* value) noexcept override
    {
        return Get(value, input_.alignLabel);
    }
    STDMETHODIMP put_AlignLabel(SHORT value) noexcept override
    {
        return Put<Within<0, 2>>(input_.alignLabel, value);
    }
    STDMETHODIMP get_ShowTipControl(SHORT* value) noexcept override
    {
        return Get(value, input_.tips);
    }
    STDMETHODIMP put_ShowTipControl(SHORT value) noexcept override
    {
        return Put<Within<0, 2>>(input_.tips, value);
    }
    STDMETHODIMP get_InputFlags(SHORT* value) noexcept override { return Get(value, input_.flags); }
    STDMETHODIMP put_InputFlags(SHORT value) noexcept override { return Put(input_.flags, value); }
    STDMETHODIMP get_CheckNumStyle(VARIANT_BOOL* value) noexcept override
    {
        return Get(value, input_.checkDigits);
    }
    STDMETHODIMP put_CheckNumStyle(VARIANT_BOOL value) noexcept override
    {
        return Put(input_.checkDigits, value);
    }
    STDMETHODIMP get_ConvertArr(VARIANT_BOOL* value) noexcept override
    {
        return Get(value, convertArr_);
    }
    STDMETHODIMP put_ConvertArr(VARIANT_BOOL value) noexcept override
    {
        return Put(convertArr_, value);
    }
    STDMETHODIMP get_InputSelection(VARIANT_BOOL* value) noexcept override
    {
        return Get(value, input_.selectText);
    }
    STDMETHODIMP put_InputSelection(VARIANT_BOOL value) noexcept override
    {
        return Put(input_.selectText, value);
    }
    STDMETHODIMP get_ShowCueAtFocus(VARIANT_BOOL* value) noexcept override
    {
        return Get(value, input_.cueAtFocus);
    }
    STDMETHODIMP put_ShowCueAtFocus(VARIANT_BOOL value) noexcept override
    {
        return Put(input_.cueAtFocus, value);
    }
    STDMETHODIMP get_AccPrefix(VARIANT_BOOL* value) noexcept override
    {
        return Get(value, input_.accessKeys);
    }
    STDMETHODIMP put_AccPrefix(VARIANT_BOOL value) noexcept override
    {
        return Put(input_.accessKeys, value);
    }
    STDMETHODIMP get_InfoBig(VARIANT_BOOL* value) noexcept override
    {
        return Get(value, input_.bigInfo);
    }
    STDMETHODIMP put_InfoBig(VARIANT_BOOL value) noexcept override
    {
        return Put(input_.bigInfo, value);
    }
    STDMETHODIMP get_PasswordChar(BSTR* value) noexcept override
    {
        return Get(value, input_.passwordChar);
    }
    STDMETHODIMP put_PasswordChar(BSTR value) noexcept override
    {
        return Put<FilledCutTo<1>>(input_.passwordChar, value);
    }
    STDMETHODIMP get_MinBalloonText(BSTR* value) noexcept override
    {
        return Get(value, input_.balloonText);
    }
    STDMETHODIMP put_MinBalloonText(BSTR value) noexcept override
    {
        return Put<FilledCutTo<160>>(input_.balloonText, value);
    }
    STDMETHODIMP get_MinBalloonTitle(BSTR* value) noexcept override
    {
        return Get(value, input_.balloonTitle);
    }
    STDMETHODIMP put_MinBalloonTitle(BSTR value) noexcept override
    {
        return Put<FilledCutTo<80>>(input_.balloonTitle, value);
    }
    STDMETHODIMP get_Title(BSTR* value) noexcept override { return Get(value, title_); }
    STDMETHODIMP put_Title(BSTR value) noexcept override
    {
        return Put<CutTo<kTitleLimit>>(title_, value);
    }
    STDMETHODIMP get_DlgCancelTime(SHORT* value) noexcept override
    {
        return Get(value, cancelSeconds_);
    }
    STDMETHODIMP put_DlgCancelTime(SHORT value) noexcept override
    {
        return Put<Within<0, 3600>>(cancelSeconds_, value);
    }
    STDMETHODIMP get_InpLabel(VARIANT* value) noexcept override { return Get(value, inpLabel_); }
    STDMETHODIMP put_InpLabel(VARIANT* value) noexcept override { return Put(inpLabel_, value); }
    STDMETHODIMP get_InpText(VARIANT* value) noexcept override { return Get(value, inpText_); }
    STDMETHODIMP put_InpText(VARIANT* value) noexcept override { return Put(inpText_, value); }
    STDMETHODIMP get_InpCueText(VARIANT* value) noexcept override
    {
        return Get(value, inpCueText_);
    }
    STDMETHODIMP put_InpCueText(VARIANT* value) noexcept override
    {
        return Put(inpCueText_, value);
    }
    STDMETHODIMP get_InpTipText(VARIANT* value) noexcept override
    {
        return Get(value, inpTipText_);
    }
    STDMETHODIMP put_InpTipText(VARIANT* value) noexcept override
    {
        return Put(inpTipText_, value);
    }
    STDMETHODIMP get_InpTextStyle(VARIANT* value) noexcept override
    {
        return Get(value, inpTextStyle_);
    }
    STDMETHODIMP put_InpTextStyle(VARIANT* value) noexcept override
    {
        return Put(inpTextStyle_, value);
    }
    STDMETHODIMP get_InpMaxLen(VARIANT* value) noexcept override { return Get(value, inpMaxLen_); }
    STDMETHODIMP put_InpMaxLen(VARIANT* value) noexcept override { return Put(inpMaxLen_, value); }
    STDMETHODIMP get_InpMinLen(VARIANT* value) noexcept override { return Get(value, inpMinLen_); }
    STDMETHODIMP put_InpMinLen(VARIANT* value) noexcept override { return Put(inpMinLen_, value); }
    STDMETHODIMP get_InpLocked(VARIANT* value) noexcept override { return Get(value, inpLocked_); }
    STDMETHODIMP put_InpLocked(VARIANT* value) noexcept override { return Put(inpLocked_, value); }
    STDMETHODIMP get_InpLabelColor(VARIANT* value) noexcept override
    {
        return Get(value, inpLabelColor_);
    }
    STDMETHODIMP put_InpLabelColor(VARIANT* value) noexcept override
    {
        return Put(inpLabelColor_, value);
    }
    STDMETHODIMP get_InpTextColor(VARIANT* value) noexcept override
    {
        return Get(value, inpTextColor_);
    }
    STDMETHODIMP put_InpTextColor(VARIANT* value) noexcept override
    {
        return Put(inpTextColor_, value);
    }

    STDMETHODIMP InputS(BSTR prompt, BSTR Title, BSTR Default, BSTR* result) noexcept override
    {
        return Call(result, &MInputBox::AskOne, prompt, Title, Default);
    }
    STDMETHODIMP InputM(VARIANT* vinp, VARIANT_BOOL* result) noexcept override
    {
        return Call(result, &MInputBox::AskSeveral, vinp);
    }

private:
    std::wstring AskOne(const std::wstring& prompt, const std::wstring& title,
                        const std::wstring& text);
    bool AskSeveral(VARIANT& texts);
    std::vector<InputField> Fields() const;

    InputSettings input_;
    bool convertArr_ = true;
    std::wstring title_;
    SHORT cancelSeconds_ = 0; // 0: never
    Variant inpLabel_;
    Variant inpText_;
    Variant inpCueText_;
    Variant inpTipText_;
    Variant inpTextStyle_;
    Variant inpMaxLen_;
    Variant inpMinLen_;
    Variant inpLocked_;
    Variant inpLabelColor_;
    Variant inpTextColor_;
};

} // namespace quill
