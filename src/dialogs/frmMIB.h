// The form of Quill.MInputBox: rows of a label and a field; with one question the label stands
// above its field.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "dialogs/Dialog.h"
#include "dialogs/Entries.h"
#include "gui/modPushParamThunk.h"

namespace quill {

// Must be heap-allocated: it contains the timer's executable code.
class frmMIB final : public DialogForm, public ExecutableObject {
public:
    frmMIB(DialogRequest request, const InputSettings& input,
           const std::vector<InputField>& fields);
    ~frmMIB() override;

    // Shows the form and waits for the user; false when they cancelled, or when this many
    // milliseconds (0: no end) have passed.
    bool Ask(const std::wstring& title, UINT milliseconds);

    // The texts of all fields, as they were on OK, or else empty ones; and what they mean by the
    // fields' kinds, or else nothing.
    const std::vector<std::wstring>& Texts() const noexcept { return texts_.texts; }
    std::vector<Answer> TakeAnswers() noexcept { return std::move(answers_); }

private:
    struct Row {
        Row(frmMIB& form, size_t index, const InputField& design);

        const InputField design;
        float labelHeight = 0, entryHeight = 0; // twips
        Label label;
        const std::unique_ptr<Entry> entry;
    };

    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
    bool OnPreview(const MSG& message) override;
    bool LeaveLoop() override;
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
    static bool TooShort(const Row& row);
    // Why OK does not take a field, besides what its length and its digits say; empty when it does.
    std::wstring FaultOf(size_t index, const std::vector<std::wstring>& texts) const;
    // Keeps the user in a field, and says why: `text`, unless the script has its own.
    void Refuse(Row& row, const std::wstring& title, std::wstring text, bool beep);
    void RefuseTooShort(Row& row);
    void Measure();
    float LabelWidth(float width) const;
    ptrdiff_t Growing() const; // how many rows can use more height
    // Moves all controls for this inner width, with this much height for those that can use it;
    // returns the height that they take without that. Twips.
    float LayOut(float inner, float spare);

    const InputSettings input_;
    float height_ = 0;         // of the content; twips
    float infoTextHeight_ = 0; // twips
    float frame_ = 0;          // the window's height beyond its content; twips
    float wider_ = 0;          // beyond the design, for two buttons; twips
    bool refused_ = false;     // the focus is on its way back to a field
    PassingTexts texts_;
    std::vector<Answer> answers_;
    Balloon balloon_;
    PushParamThunk thunk_{};
    UINT_PTR timer_ = 0;

    std::vector<std::unique_ptr<Row>> rows_;
    Label lblTip{*this, {240, 0, 5400, 0}};
};

} // namespace quill
