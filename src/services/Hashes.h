// Hashes of bytes and of files, by the platform's cryptographic provider.
#pragma once

#include <string>

#include "core/Variant.h"

namespace quill {

// Upper-case hexadecimal digits. The algorithm is MD5, SHA1 or SHA256, in any case, with a hyphen
// (SHA-256) or without. Empty for another algorithm and for data that is not bytes.
std::wstring Hash(const VARIANT& data, const std::wstring& algorithm);

// Empty also when the file cannot be read to its end, or when the path is not a full one.
std::wstring HashFile(const std::wstring& path, const std::wstring& algorithm);

} // namespace quill
