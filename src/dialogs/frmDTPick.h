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

    // Shows `start` and waits for the user. Returns the chosen date (midnight), the chosen time
    // (day 0) or their sum; nothing when the user cancelled.
    std::optional<DATE> Pick(const SYSTEMTIME& start, const std::wstring& title,
                             const std::function<bool()>& abandoned);

private:
    void OnKeyDown(WPARAM key) override;
    void OnMouseDown(HWND target) override;
    void OnResize(TwipSize outer) override;

    std::unique_ptr<DateTimePicker> MakePicker(DateTimePicker::Kind kind);
    float ButtonTop() const;
    void Accept();

    const DialogSettings& settings_;
    bool accepted_ = false;
    DATE result_ = 0;

    Label lblText{*this, {240, 120, 2480, kInfoHeight}};
    std::unique_ptr<DateTimePicker> date_; // null in a mode without it
    std::unique_ptr<DateTimePicker> time_;
    Button OKButton{*this,
                    {1320, 2760, kButtonWidth, kButtonHeight},
                    L"OK",
                    [this] { Accept(); },
                    Button::Kind::Default};
};

} // namespace quill
