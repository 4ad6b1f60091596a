// A form whose content may be higher than its window: it has a scroll bar then, and follows the
// focus.
#pragma once

#include "gui/Form.h"

namespace quill {

class ScrollingForm : public Form {
public:
    using Form::Form;

    // The height in twips that the controls take.
    void SetContentHeight(float height);

protected:
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
    void Reveal(const Control& control) override;
    int Scrolled() const noexcept override { return scrolled_; }

private:
    void FitScrollBar();
    void Scroll(WORD request);
    void ScrollTo(int top);

    float contentHeight_ = 0; // twips; 0: no more than the window shows
    int scrolled_ = 0;        // pixels
};

} // namespace quill
