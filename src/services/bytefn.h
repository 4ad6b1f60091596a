// Values as the bytes of a file.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "core/Variant.h"

namespace quill {

// How values become bytes. Numbers have their lowest byte first, and text is in the ANSI code page,
// unless one of these says otherwise.
struct ByteForm {
    bool twistEndian = false;  // numbers have their highest byte first
    bool useUnicode = false;   // text is UTF-16
    bool useHexstring = false; // text that begins with &H gives its bytes in hexadecimal
};

// The bytes of an Integer, Long, Single, Double, Currency, Byte, String or byte array; none for a
// value of any other type, an array that is not there, and hexadecimal text without a digit.
// Those of an array stay where they are; others are put into `storage`.
std::optional<std::span<const BYTE>> BytesOf(const VARIANT& value, const ByteForm& form,
                                             std::vector<BYTE>& storage);

} // namespace quill
