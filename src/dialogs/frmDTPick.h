// The form of Quill.DTPick.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "dialogs/Dialog.h"

namespace quill {

enum class PickMode { Date, Time, Both };

class frmDTPick final : public DialogForm {
public:
    frmDTPick(DialogRequest request, PickMode mode);

    // True when the platform has made the pickers, as their handles show.
    static constexpr bool PickersMade(PickMode mode, UINT_PTR date, UINT_PTR time) noexcept
    {
        // Kept as published: handles without a bit in common count as a failure.
        if (mode == PickMode::Both) return (date & time) != 0;
        return (mode == PickMode::Date ? date : time) != 0;
    }

    // Shows `start` and waits for the user. Returns the chosen date (midnight), the chosen time
    // (day 0) or their sum; nothing when the user cancelled, or without pickers.
    std::optional<DATE> Pick(const SYSTEMTIME& start, const std::wstring& title);

private:
    bool OnPreview(const MSG& message) override;
    void OnResize(TwipSize outer) override;
    void OnButton() override;
    bool OnAccept() override;
    bool LeaveLoop() override;

    std::unique_ptr<DateTimePicker> MakePicker(DateTimePicker::Kind kind);
    std::unique_ptr<DateTimePicker> MakeTimePicker();
    float ButtonTop() const;
    float Widening() const; // beyond the design, for two buttons

    const PickMode mode_;
    DATE result_ = 0;

    // Null in a mode without it. MakeTimePicker may make several before it keeps one.
    std::unique_ptr<DateTimePicker> date_;
    std::unique_ptr<DateTimePicker> time_;
};

} // namespace quill
