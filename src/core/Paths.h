// Paths, file names and command lines, as the platform reads them. A text with a NUL in it
// is not a path, and the result is empty.
#pragma once

#include <string>

#include "core/Variant.h"

namespace quill {

// True when a text can be given to a platform function that ends at the first NUL.
bool IsPlain(const std::wstring& text) noexcept;

// True for a path that means the same whatever the current directory and drive are. Those of this
// process are not those of the script.
bool IsFullPath(const std::wstring& path) noexcept;

// The current directory of the process.
std::wstring CurrentFolder();

// The path without its last part; empty when it has only one.
std::wstring FolderOf(const std::wstring& path);

// Opens a file on a disk, shared with all others; null, with the reason in GetLastError, for what
// is not there and for devices and pipes, where a read could wait indefinitely.
FileHandle OpenDiskFile(const std::wstring& path, DWORD access, DWORD disposition,
                        DWORD flags) noexcept;

std::wstring CombinePath(const std::wstring& folder, const std::wstring& name);

// Empty when the result would depend on a current directory.
std::wstring FullPath(const std::wstring& path, const std::wstring& folder);

// Paths of less than MAX_PATH characters; empty when they have no folder in common.
std::wstring RelativePath(const std::wstring& path, const std::wstring& folder);

// A path of less than MAX_PATH characters, unless it fits as it is.
std::wstring CompactPath(const std::wstring& path, LONG width);

std::wstring LongPath(const std::wstring& path);
std::wstring ShortPath(const std::wstring& path);

// Patterns are separated by semicolons; `*.*` matches every name, also one without a point.
bool MatchName(const std::wstring& name, const std::wstring& patterns);

std::wstring ExpandEnvironment(const std::wstring& text);

// The first part is read as the path of a program, in which a backslash escapes nothing.
Variant SplitCommandLine(const std::wstring& commandLine);

} // namespace quill
