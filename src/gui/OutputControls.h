// The text controls of windows that a script writes to, line by line. However much text is there,
// one more line costs the same: it is kept at once, and shown at once or soon after. What is read
// from the control is always up to date.
#pragma once

#include "gui/Controls.h"
#include "gui/PacedDisplay.h"

namespace quill {

// When more text than the first number is there, the oldest goes, down to the second; both in
// UTF-16 units.
inline constexpr size_t kMostOutput = 8 << 20;
inline constexpr size_t kOutputToKeep = 6 << 20;

// A label that shows the end of its text: the last lines that fit, the newest at the bottom. Its
// window text is all of it.
class OutputLabel final : public Label, private PacedDisplay {
public:
    OutputLabel(Form& form, const TwipRect& place);

    // Adds whole lines, each with CR LF at its end.
    void Append(const std::wstring& lines);
    void Clear();

private:
    void Show() override;
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) override;
    void OnDestroyed() noexcept override;
    void Draw(HDC target) const;
    LRESULT CopyText(wchar_t* buffer, size_t size) const noexcept;

    std::wstring text_; // whole lines
};

// A locked text box with a scroll bar, which the user can read back and copy from.
class OutputBox final : public TextBox, private PacedDisplay {
public:
    OutputBox(Form& form, const TwipRect& place);

    // Adds whole lines. The selection stays, and so does the place that the user looks at, unless
    // the end is to be followed.
    void Append(const std::wstring& lines);
    void Clear();
    void FollowEnd(bool follow);

private:
    void Show() override;
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) override;
    void OnDestroyed() noexcept override;
    void Write();
    bool CaretIsAt(DWORD position) const noexcept;

    std::wstring pending_; // lines that are not in the native control yet
    size_t units_ = 0;     // that are in it
    bool follow_ = false;
};

} // namespace quill
