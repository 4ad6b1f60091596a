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

// In ten-thousandths.
inline Variant Currency(std::int64_t units)
{
    Variant value = OfType(VT_CY);
    V_CY(&value).int64 = units;
    return value;
}

} // namespace quill::test
