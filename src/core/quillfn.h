// The published helpers of the classes: their errors, arrays, file names and ranges.
#pragma once

#include <string>

#include "core/Variant.h"

namespace quill {

// The one operation that raises an error of the system's own: exactly this number, source and
// description reach the script.
[[noreturn]] void Raise(HRESULT number, const std::wstring& source,
                        const std::wstring& description);

// Raises an entry of the error table, followed by the value at fault where its text asks for one.
[[noreturn]] void Raise(const PublishedError& entry, const std::wstring& value = {});

// Elements of a zero-based array of any type: 0 for anything else and for other lower bounds.
// Only dimension 1 counts. Raises overflow beyond 32767.
short ElementCount(const VARIANT& array);

// True for an array that was passed by reference.
bool IsArrayByReference(const VARIANT& value) noexcept;

// True when the path names something, folders included. The question goes to GetFileAttributesA, so
// a name outside the ANSI code page does not exist.
bool FileExists(const std::wstring& path) noexcept;

// The folder with a backslash at its end; an empty string stays empty.
std::wstring WithTrailingBackslash(std::wstring folder);

constexpr bool InRange(long value, long low, long high) noexcept
{
    return low <= value && value <= high;
}

} // namespace quill
