// The text controls of windows that a script writes to, line by line. However much text is there,
// one more line costs the same: it is kept at once and shown within kShowMilliseconds.
#pragma once

#include "gui/Controls.h"

namespace quill {

// What these controls share: when to show what was written, and a first look at the messages of
// the native control. A base of a control, behind Control itself.
class OutputHook {
public:
    // When more text than the first number is there, the oldest goes, down to the second; both in
    // UTF-16 units.
    static constexpr size_t kMostUnits = 8 << 20;
    static constexpr size_t kUnitsToKeep = 6 << 20;
    static constexpr UINT kShowMilliseconds = 40;

    OutputHook(const OutputHook&) = delete;
    OutputHook& operator=(const OutputHook&) = delete;

protected:
    explicit OutputHook(HWND window);
    ~OutputHook();

    // The text is another one: calls Show, now or soon.
    void Changed();

    // Shows the text as it is now.
    virtual void Show() = 0;
    // A message of the native control. True when it is dealt with, and `result` is its answer.
    virtual bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) = 0;
    // The native control is gone.
    virtual void OnDestroyed() noexcept = 0;

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                      UINT_PTR self, DWORD_PTR reference) noexcept;

    HWND window_; // null once the form is closed
    ULONGLONG shownAt_ = 0;
    bool waiting_ = false; // the timer runs
};

// A label that shows the end of its text: the last lines that fit, the newest at the bottom. Its
// window text is all of it.
class OutputLabel final : public Label, private OutputHook {
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
class OutputBox final : public TextBox, private OutputHook {
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
