// Shared routines that several classes use.
#pragma once

#include <optional>

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

// True when the path names something, folders included. With `resolve`, a bare file name is first
// rewritten in `path` to lie in the program's folder (or the current directory). The question goes
// to GetFileAttributesA, so a name outside the ANSI code page does not exist.
bool FileExists(std::wstring& path, bool resolve) noexcept;

// The current directory of the process.
std::wstring CurrentFolder();

// The path without its last part; empty when it has but one.
std::wstring FolderOf(const std::wstring& path);

// The folder with a backslash at its end; an empty string stays empty.
std::wstring WithTrailingBackslash(std::wstring folder);

// A Date's parts to the second (VariantTimeToSystemTime); nothing for what is no Date: outside the
// years 100 to 9999, infinite, or not a number, for which the platform does not look out.
std::optional<SYSTEMTIME> PartsOf(DATE date) noexcept;

// The Date to the second (SystemTimeToVariantTime); 0 for what is no time.
DATE DateOf(SYSTEMTIME parts) noexcept;

// True when the value is numeric and lies within both limits, compared as automation does.
bool InRange(const VARIANT& value, const VARIANT& low, const VARIANT& high) noexcept;

constexpr bool InRange(long value, long low, long high) noexcept
{
    return low <= value && value <= high;
}

} // namespace quill
