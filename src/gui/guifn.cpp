#include "gui/guifn.h"

namespace quill {

void ApplyModernFont(Form& form)
{
    FontSpec font = form.CurrentFont();
    font.name = L"Segoe UI";
    form.SetFont(font);
}

void ApplyFontSize(Form& form, int points)
{
    FontSpec font = form.CurrentFont();
    font.points = points;
    form.SetFont(font);
}

} // namespace quill
