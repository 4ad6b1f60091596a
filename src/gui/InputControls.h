// More native controls for what a user fills in, and the balloon that points at one of them.
#pragma once

#include "gui/Controls.h"

namespace quill {

// Called when the user enters a control (true) or leaves it (false).
using FocusHandler = std::function<void(bool)>;

// A check box with its caption, which wraps.
class CheckBox final : public Control {
public:
    // With access keys, & marks one in the caption.
    CheckBox(Form& form, const std::wstring& caption, bool accessKeys, FocusHandler onFocus);

    bool Checked() const { return Send(BM_GETCHECK) == BST_CHECKED; }
    void SetChecked(bool checked) { Send(BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED); }

private:
    void OnCommand(WORD code) override;

    FocusHandler onFocus_;
};

// A text box of several lines. Enter begins a new one; Tab, and Enter with Ctrl, are the form's.
class LinesBox final : public TextBox {
public:
    LinesBox(Form& form, DWORD style, FocusHandler onFocus);
    ~LinesBox() override;

private:
    static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                      UINT_PTR box, DWORD_PTR) noexcept;
    bool OnCharacter(wchar_t unit) override;
};

// A combo box: a drop-down list whose text the user may also type.
class ComboBox final : public DropDownList {
public:
    ComboBox(Form& form, FocusHandler onFocus);

    // The text box in it.
    HWND Edit() const noexcept;
};

// A picker of a date within limits.
class DateBox final : public DateTimePicker {
public:
    DateBox(Form& form, FocusHandler onFocus);

    // Null stands for no limit.
    void SetRange(const SYSTEMTIME* first, const SYSTEMTIME* last);

private:
    LRESULT OnNotify(NMHDR& notification) override;

    FocusHandler onFocus_;
};

// A window of tips, of this width in twips at most; it goes with its form. Null when there is none
// to be had.
HWND MakeTipWindow(const Form& form, float width, bool balloons);

// A balloon at a control, for all those that have none of their own. It stays until it is hidden.
class Balloon {
public:
    void Show(const Form& form, HWND control, const std::wstring& title, const std::wstring& text);
    void Hide() noexcept;

private:
    HWND window_ = nullptr;
};

} // namespace quill
