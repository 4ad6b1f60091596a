#include "windows/Window2.h"

#include "core/Catalogue.h"

namespace quill {

CREATABLE(Window2)

} // namespace quill
