// Values as typed languages make them.
#pragma once

#include "core/Variant.h"

namespace quill::test {

inline Variant OfType(VARTYPE type)
{
    Variant value;
    V_VT(&value) = type;
    return value;
}

} // namespace quill::test
