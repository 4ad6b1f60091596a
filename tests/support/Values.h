// Values as typed languages make them.
#pragma once

#include <stdexcept>
#include <string>

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

inline Variant ByteArray(std::string_view bytes)
{
    Array array = MakeArray(VT_UI1, bytes.size());
    std::copy(bytes.begin(), bytes.end(), DataOf<char>(*array).begin());
    return Variant(std::move(array));
}

inline std::string BytesOf(const VARIANT& value)
{
    if (V_VT(&value) != (VT_ARRAY | VT_UI1))
        throw std::logic_error("no bytes but type " + std::to_string(V_VT(&value)));
    const auto bytes = DataOf<char>(*V_ARRAY(&value));
    return {bytes.begin(), bytes.end()};
}

// Two by two Variants, where a list is asked for.
inline Variant Square()
{
    SAFEARRAYBOUND bounds[2]{{2, 0}, {2, 0}};
    return Variant(Array(SafeArrayCreate(VT_VARIANT, 2, bounds)));
}

} // namespace quill::test
