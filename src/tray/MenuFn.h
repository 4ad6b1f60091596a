// A menu at a point of the screen, made of texts.
#pragma once

#include <string>
#include <vector>

#include "core/Platform.h"

namespace quill {

// Shows the texts as a menu, "-" as a separator, and waits for the user. `owner` becomes the
// foreground window. Returns the chosen item, from 1 and without counting separators, or 0.
int ChooseFromMenu(HWND owner, const std::vector<std::wstring>& texts, POINT screen);

} // namespace quill
