// Bytes of scripts, and what they can represent: text in a code page, hexadecimal digits, Base64.
//
// Scripts pass bytes as an array of Byte, as an array of whole numbers from 0 to 255, or as text,
// which stands for its UTF-8; they get an array of Byte.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/Variant.h"

namespace quill {

using Bytes = std::vector<std::uint8_t>;

// Nothing for data that is not bytes. An empty Variant and an empty text are no bytes.
std::optional<Bytes> BytesIn(const VARIANT& data);

Variant MakeByteArray(const Bytes& bytes);

// Any code page that the platform knows, and 1200 and 1201 for UTF-16 in either byte order. What
// the code page lacks becomes its replacement character; a byte order mark is a character like any
// other. Nothing for an unknown code page.
Bytes ToCodePage(std::wstring_view text, UINT codePage);
std::wstring FromCodePage(const Bytes& bytes, UINT codePage);

Variant TextToBytes(const std::wstring& text, LONG codePage);
std::wstring BytesToText(const VARIANT& data, LONG codePage);

// Upper-case digits. Those read may have white space between the pairs and either case.
std::wstring ToHex(const Bytes& bytes);
std::wstring EncodeHex(const VARIANT& data);
Variant DecodeHex(const std::wstring& digits);

std::wstring EncodeBase64(const VARIANT& data);
Variant DecodeBase64(const std::wstring& text);

// The value of a hexadecimal digit; -1 for any other character.
int HexDigit(wchar_t digit) noexcept;

} // namespace quill
