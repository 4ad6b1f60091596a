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

    STORED_PROPERTY(SHORT, InputNumber, input_.number, Within<1, 10>)
    STORED_PROPERTY(SHORT, InputStart, input_.start, Within<0, 9>)
    STORED_PROPERTY(SHORT, TextLimit, input_.textLimit, Within<1, 1024>)
    STORED_PROPERTY(SHORT, LabelEditRatio, input_.labelEditRatio, Within<1, 7>)
    STORED_PROPERTY(SHORT, AlignInput, input_.alignInput, Within<0, 2>)
    STORED_PROPERTY(SHORT, AlignLabel, input_.alignLabel, Within<0, 2>)
    STORED_PROPERTY(SHORT, ShowTipControl, input_.tips, Within<0, 2>)
    STORED_PROPERTY(SHORT, InputFlags, input_.flags)
    STORED_PROPERTY(VARIANT_BOOL, CheckNumStyle, input_.checkDigits)
    STORED_PROPERTY(VARIANT_BOOL, ConvertArr, convertArr_)
    STORED_PROPERTY(VARIANT_BOOL, InputSelection, input_.selectText)
    STORED_PROPERTY(VARIANT_BOOL, ShowCueAtFocus, input_.cueAtFocus)
    STORED_PROPERTY(VARIANT_BOOL, AccPrefix, input_.accessKeys)
    STORED_PROPERTY(VARIANT_BOOL, InfoBig, input_.bigInfo)
    STORED_PROPERTY(BSTR, PasswordChar, input_.passwordChar, FilledCutTo<1>)
    STORED_PROPERTY(BSTR, MinBalloonText, input_.balloonText, FilledCutTo<160>)
    STORED_PROPERTY(BSTR, MinBalloonTitle, input_.balloonTitle, FilledCutTo<80>)
    STORED_PROPERTY(BSTR, Title, title_, CutTo<kTitleLimit>)
    STORED_PROPERTY(SHORT, DlgCancelTime, cancelSeconds_, Within<0, 3600>)
    STORED_VARIANT(InpLabel, inpLabel_)
    STORED_VARIANT(InpText, inpText_)
    STORED_VARIANT(InpCueText, inpCueText_)
    STORED_VARIANT(InpTipText, inpTipText_)
    STORED_VARIANT(InpTextStyle, inpTextStyle_)
    STORED_VARIANT(InpMaxLen, inpMaxLen_)
    STORED_VARIANT(InpMinLen, inpMinLen_)
    STORED_VARIANT(InpLocked, inpLocked_)
    STORED_VARIANT(InpLabelColor, inpLabelColor_)
    STORED_VARIANT(InpTextColor, inpTextColor_)
    STORED_VARIANT(InpType, inpType_)
    STORED_VARIANT(InpItems, inpItems_)
    STORED_VARIANT(InpMin, inpMin_)
    STORED_VARIANT(InpMax, inpMax_)
    STORED_VARIANT(InpRequired, inpRequired_)
    STORED_VARIANT(InpSameAs, inpSameAs_)
    STORED_VARIANT(InpPattern, inpPattern_)
    STORED_VARIANT(InpErrorText, inpErrorText_)
    COMPUTED_PROPERTY(VARIANT, Values)

    METHOD(BSTR, InputS, (BSTR prompt, BSTR Title, BSTR Default), prompt, Title, Default)
    METHOD(VARIANT_BOOL, InputM, (VARIANT * vinp), vinp)

private:
    std::wstring InputS(const std::wstring& prompt, const std::wstring& title,
                        const std::wstring& text);
    bool InputM(VARIANT& texts);
    std::vector<InputField> Fields() const;
    Variant Values() const;

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
    Variant inpType_;
    Variant inpItems_;
    Variant inpMin_;
    Variant inpMax_;
    Variant inpRequired_;
    Variant inpSameAs_;
    Variant inpPattern_;
    Variant inpErrorText_;
    std::vector<Answer> answers_; // of the last call
};

} // namespace quill
