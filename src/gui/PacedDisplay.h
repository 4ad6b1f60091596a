// Windows that change more often than anybody can see: they are drawn now and then, so that a
// change costs its caller next to nothing.
#pragma once

#include "core/Platform.h"

namespace quill {

// A first look at the messages of a native control, and a clock for when to show what has changed:
// at once after a pause, else as soon as the pause is over.
class PacedDisplay {
public:
    PacedDisplay(const PacedDisplay&) = delete;
    PacedDisplay& operator=(const PacedDisplay&) = delete;

protected:
    explicit PacedDisplay(HWND window);
    ~PacedDisplay();

    // Calls Show, now or soon.
    void Changed();

    virtual void Show() = 0;
    // A message of the native control. True when it is dealt with, and `result` is its answer.
    virtual bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) = 0;
    // The native control is gone.
    virtual void OnDestroyed() noexcept {}

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                      UINT_PTR self, DWORD_PTR reference) noexcept;
    void ShowNow();

    HWND window_;          // null once it is destroyed
    ULONGLONG nextAt_ = 0; // not before this time, in milliseconds
    bool waiting_ = false; // the timer runs
};

// Paces the drawing of a native control, whatever makes it draw itself.
class PacedPainting final : private PacedDisplay {
public:
    explicit PacedPainting(HWND window) : PacedDisplay(window), painted_(window) {}

private:
    void Show() override;
    bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) override;

    const HWND painted_;
    bool painting_ = false;
};

} // namespace quill
