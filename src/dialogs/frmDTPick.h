// The form of Quill.DTPick.
#pragma once

#include <memory>
#include <optional>

#include "dialogs/Dialog.h"

namespace quill {

enum class PickMode { Date, Time, Both };

class frmDTPick final : public DialogForm {
public:
    frmDTPick(const DialogSettings& settings, PickMode mode);

    // Whether the platform has made the pickers, as their handles tell it.
    static constexpr bool PickersMade(PickMode mode, UINT_PTR date, UINT_PTR time) noexcept
    {
        // Kept as published: handles without a bit in common count as a failure.
        if (mode == PickMode::Both) return (date & time) != 0;
        return (mode == PickMode::Date ? date : time) != 0;
    }

    // Shows `start` and waits for the user. Returns the chosen date (midnight), the chosen time
    // (day 0) or their sum; nothing when the user cancelled, or without pickers.
    std::optional<DATE> Pick(const SYSTEMTIME& start, const std::wstring& title,
                             const std::function<bool()>& abandoned);

private:
    bool OnKeyDown(WPARAM key) override;
    void OnMouseDown(HWND target) override;
    void OnResize(TwipSize outer) override;

    std::unique_ptr<DateTimePicker> MakePicker(DateTimePicker::Kind kind);
    std::unique_ptr<DateTimePicker> MakeTimePicker();
    float ButtonTop() const;
    bool SendEnterToCalendar();
    void AcceptUnlessCalendar();
    void Accept();

    const DialogSettings& settings_;
    const PickMode mode_;
    bool accepted_ = false;
    DATE result_ = 0;

    Label lblText{*this, {240, 120, 2480, kInfoHeight}};
    std::unique_ptr<DateTimePicker> date_; // null in a mode without it
    std::unique_ptr<DateTimePicker> time_;
    Button OKButton{*this,
                    {1320, 2760, kButtonWidth, kButtonHeight},
                    L"OK",
                    [this] { AcceptUnlessCalendar(); },
                    Button::Kind::Default};
};

} // namespace quill
