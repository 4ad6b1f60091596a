// The forms of Quill.Window and Quill.Window2: a text as large as the window.
#pragma once

#include "gui/OutputControls.h"

namespace quill {

// `Text` is the control that shows what is written.
template <class Text>
class OutputForm final : public Form {
public:
    OutputForm() : Form(L"QUILL Window", {7200, 4800}, kModelessStyle | WS_MAXIMIZEBOX) {}

    Text text{*this, {kMargin, kMargin, 6900, 4200}};

private:
    static constexpr float kMargin = 140; // twips

    void OnResize(TwipSize) override
    {
        const TwipSize inner = InnerSize();
        TwipRect place = text.Place();
        if (inner.width > 2 * kMargin) place.width = inner.width - 2 * kMargin;
        if (inner.height > 2 * kMargin) place.height = inner.height - 2 * kMargin;
        text.Move(place);
    }
};

using frmWindow = OutputForm<OutputLabel>;
using frmWindow2 = OutputForm<OutputBox>;

} // namespace quill
