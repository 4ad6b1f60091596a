// URLs: percent encoding in UTF-8, parts, relative URLs, files. A text with a NUL in it is not a
// URL.
#pragma once

#include <string>

#include "core/Variant.h"

namespace quill {

// Keeps letters and digits of ASCII and - . _ ~ only. With `plus`, a blank becomes a plus sign.
std::wstring EncodeUrl(const std::wstring& text, bool plus);

// A percent sign without two digits stays; bytes that are not UTF-8 become U+FFFD.
std::wstring DecodeUrl(const std::wstring& text, bool plus);

// Eight texts, as they stand in the URL: scheme, user, password, host, port, path, query, fragment.
// No elements for an empty URL.
Variant SplitUrl(const std::wstring& url);

// The platform's, for URLs and paths of at most 2083 characters.
std::wstring CombineUrl(const std::wstring& base, const std::wstring& relative);
std::wstring PathToUrl(const std::wstring& path); // a full one
std::wstring UrlToPath(const std::wstring& url);  // of a file

} // namespace quill
