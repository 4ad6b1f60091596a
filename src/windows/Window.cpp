#include "windows/Window.h"

#include "core/Catalogue.h"

namespace quill {

CREATABLE(Window)

} // namespace quill
