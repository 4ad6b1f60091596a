// The form of Quill.MInputBox: rows of a label and a field; with one question the label stands
// above its field.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "dialogs/Dialog.h"
#include "gui/modPushParamThunk.h"

namespace quill {

// What all fields have in common. Whole numbers are as scripts set them.
struct InputSettings {
    SHORT number = 1;
    SHORT start = 0; // index of the field with the focus
    SHORT textLimit = 1024;
    SHORT labelEditRatio = 4; // eighths of a row for the label
    SHORT alignInput = 0;     // 0 left, 1 right, 2 centre
    SHORT alignLabel = 0;
    SHORT tips = 0;  // 0 tooltips, 1 balloons, 2 a line below the fields
    SHORT flags = 0; // bit i: field i hides its text
    bool checkDigits = true;
    bool selectText = true;
    bool cueAtFocus = false;
    bool accessKeys = false;
    bool bigInfo = false;
    bool columns = false; // labels beside their fields; limits apply
    std::wstring passwordChar = L"*";
    std::wstring balloonText, balloonTitle;
};

struct InputField {
    std::wstring label, text, cueText, tipText;
    SHORT textStyle = 0; // 1 upper case, 2 lower case, 3 digits
    SHORT maxLen = 0;    // 0: the common limit
    SHORT minLen = 0;
    bool locked = false;
    COLORREF labelColor = 0; // 0: the system's
    COLORREF textColor = 0;
};

// Must be heap-allocated: it contains the timer's executable code.
class frmMIB final : public DialogForm, public ExecutableObject {
public:
    frmMIB(DialogRequest request, const InputSettings& input,
           const std::vector<InputField>& fields);
    ~frmMIB() override { StopTimer(); }

    // Shows the form and waits for the user; false when they cancelled, or when this many
    // milliseconds (0: no end) have passed.
    bool Ask(const std::wstring& title, UINT milliseconds);

    // The texts of all fields, as they were on OK.
    const std::vector<std::wstring>& Texts() const noexcept { return texts_; }

private:
    struct Row {
        Row(frmMIB& form, size_t index, const InputField& design);
        void LimitText(const InputSettings& input);

        InputField design;
        float labelHeight = 0, editHeight = 0; // twips
        Label label;
        TextBox edit;
    };

    void OnFocusMoved(Control& control) override;
    void OnPosted(WPARAM index) override;
    void OnResize(TwipSize outer) override;
    TwipSize MinimumSize() const override;
    TwipSize MaximumSize() const override;
    bool OnAccept() override;

    static void CALLBACK OnTimer(frmMIB* self, HWND window, UINT message, UINT_PTR timer,
                                 DWORD time) noexcept;
    void StopTimer() noexcept;

    std::vector<std::unique_ptr<Row>> MakeRows(const std::vector<InputField>& fields);
    void AddTips();
    // The user has come into a field, or has left it.
    void OnFieldFocus(size_t index, bool entered);
    void PlaceCaret(Row& row);
    static bool TooShort(const Row& row);
    // Keeps the user in a field, and says why.
    void Refuse(Row& row, const std::wstring& title, const std::wstring& text);
    void Measure();
    float LabelWidth(float width) const;
    // Moves all controls for this inner width; returns the height that they take. Twips.
    float LayOut(float inner);

    const InputSettings input_;
    float height_ = 0;         // of the content; twips
    float infoTextHeight_ = 0; // twips
    float frame_ = 0;          // the window's height beyond its content; twips
    float wider_ = 0;          // beyond the design, for two buttons; twips
    bool refused_ = false;     // the focus is on its way back to a field
    std::vector<std::wstring> texts_;
    PushParamThunk thunk_{};
    UINT_PTR timer_ = 0;

    std::vector<std::unique_ptr<Row>> rows_;
    Label lblTip{*this, {240, 0, 5400, 0}};
};

} // namespace quill
