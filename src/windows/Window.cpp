#include "windows/Window.h"

#include "core/Catalogue.h"

namespace quill {

template <>
IDispatch* Create<::Window>()
{
    return new Window;
}

} // namespace quill
