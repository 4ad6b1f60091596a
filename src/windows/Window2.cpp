#include "windows/Window2.h"

#include "core/Catalogue.h"

namespace quill {

template <>
IDispatch* Create<::Window2>()
{
    return new Window2;
}

} // namespace quill
