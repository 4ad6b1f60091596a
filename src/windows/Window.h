// Quill.Window: an output window that shows the last lines written to it.
#pragma once

#include "windows/OutputWindow.h"

namespace quill {

class Window final : public OutputWindow<_Window, frmWindow> {
public:
    Window() : OutputWindow(L"QUILL Window") {}
};

} // namespace quill
