// Fonts of forms.
#pragma once

#include "gui/Form.h"

namespace quill {

// Sets "Segoe UI" on the form and on its controls; sizes stay.
void ApplyModernFont(Form& form);

// Sets the size in points on the form and on its controls; names stay.
void ApplyFontSize(Form& form, int points);

} // namespace quill
