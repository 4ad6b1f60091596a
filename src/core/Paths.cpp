#include "core/Paths.h"

#include <algorithm>

#include "core/Text.h"

namespace quill {

namespace {

constexpr size_t kLongestPath = 32767; // UTF-16 units, with the NUL

// Calls a platform function that fills a buffer and says how much room it needs, with the NUL,
// when that was too little. 0 is failure.
template <class Fill>
std::wstring Filled(Fill fill)
{
    std::wstring buffer(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = fill(buffer.data(), static_cast<DWORD>(buffer.size()));
        const bool fits = length < buffer.size();
        buffer.resize(length);
        if (fits) return buffer;
    }
}

} // namespace

bool IsPlain(const std::wstring& text) noexcept
{
    return text.find(L'\0') == std::wstring::npos;
}

bool IsFullPath(const std::wstring& path) noexcept
{
    return path.starts_with(L"\\\\") || (path.size() >= 3 && path[1] == L':' && path[2] == L'\\');
}

std::wstring CurrentFolder()
{
    std::wstring folder(GetCurrentDirectoryW(0, nullptr), L'\0');
    folder.resize(GetCurrentDirectoryW(static_cast<DWORD>(folder.size()), folder.data()));
    return folder;
}

std::wstring FolderOf(const std::wstring& path)
{
    const auto end = path.find_last_of(L'\\');
    return end == std::wstring::npos ? std::wstring() : path.substr(0, end);
}

FileHandle OpenDiskFile(const std::wstring& path, DWORD access, DWORD disposition,
                        DWORD flags) noexcept
{
    SetLastError(ERROR_INVALID_NAME);
    if (!IsPlain(path) || !IsFullPath(path)) return nullptr;
    FileHandle file(CreateFileW(path.c_str(), access,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                disposition, flags, nullptr));
    if (!file || GetFileType(file.get()) == FILE_TYPE_DISK) return file;
    SetLastError(ERROR_INVALID_NAME);
    return nullptr;
}

std::wstring CombinePath(const std::wstring& folder, const std::wstring& name)
{
    using PathAllocCombineFunction = HRESULT WINAPI(PCWSTR, PCWSTR, unsigned long, PWSTR*);
    static const auto combine =
        FindSystemFunction<PathAllocCombineFunction>(L"kernelbase.dll", "PathAllocCombine");
    constexpr unsigned long kAllowLongPaths = 1;
    if (!IsPlain(folder) || !IsPlain(name) || (folder.empty() && name.empty())) return {};
    if (combine) {
        Owned<PWSTR, LocalFree> combined;
        if (FAILED(combine(folder.c_str(), name.c_str(), kAllowLongPaths, Into(combined))))
            return {};
        return combined.get();
    }
    // Windows 7, which knows short paths only.
    wchar_t combined[MAX_PATH];
    if (folder.size() >= MAX_PATH || name.size() >= MAX_PATH ||
        !PathCombineW(combined, folder.c_str(), name.c_str()))
        return {};
    return combined;
}

std::wstring FullPath(const std::wstring& path, const std::wstring& folder)
{
    std::wstring name = path;
    std::wstring start = folder;
    std::replace(name.begin(), name.end(), L'/', L'\\');
    std::replace(start.begin(), start.end(), L'/', L'\\');
    const std::wstring combined = IsFullPath(name) ? name : CombinePath(start, name);
    if (name.empty() || !IsPlain(combined) || !IsFullPath(combined)) return {};
    return Filled([&](wchar_t* buffer, DWORD size) {
        return GetFullPathNameW(combined.c_str(), size, buffer, nullptr);
    });
}

std::wstring RelativePath(const std::wstring& path, const std::wstring& folder)
{
    if (!IsPlain(path) || !IsPlain(folder) || path.size() >= MAX_PATH || folder.size() >= MAX_PATH)
        return {};
    wchar_t relative[3 * MAX_PATH]; // "..\\" replaces a folder of one letter
    if (!PathRelativePathToW(relative, folder.c_str(), FILE_ATTRIBUTE_DIRECTORY, path.c_str(), 0))
        return {};
    return relative;
}

std::wstring CompactPath(const std::wstring& path, LONG width)
{
    if (width <= 0 || !IsPlain(path)) return {};
    if (path.size() <= static_cast<size_t>(width)) return path;
    wchar_t compact[MAX_PATH];
    if (path.size() >= MAX_PATH ||
        !PathCompactPathExW(compact, path.c_str(), static_cast<UINT>(width) + 1, 0))
        return {};
    return compact;
}

std::wstring LongPath(const std::wstring& path)
{
    if (!IsPlain(path) || !IsFullPath(path)) return {};
    return Filled(
        [&](wchar_t* buffer, DWORD size) { return GetLongPathNameW(path.c_str(), buffer, size); });
}

std::wstring ShortPath(const std::wstring& path)
{
    if (!IsPlain(path) || !IsFullPath(path)) return {};
    return Filled(
        [&](wchar_t* buffer, DWORD size) { return GetShortPathNameW(path.c_str(), buffer, size); });
}

bool MatchName(const std::wstring& name, const std::wstring& patterns)
{
    if (name.size() > kLongestPath || patterns.size() > kLongestPath) return false;
    const std::wstring upper = UpperCase(name);
    const auto parts = SplitAt(UpperCase(patterns), L";");
    return std::any_of(parts.begin(), parts.end(), [&](std::wstring_view pattern) {
        pattern.remove_prefix(std::min(pattern.find_first_not_of(L' '), pattern.size()));
        return pattern == L"*.*" || IsLike(upper, pattern);
    });
}

std::wstring ExpandEnvironment(const std::wstring& text)
{
    if (text.empty() || !IsPlain(text)) return {};
    return Filled([&](wchar_t* buffer, DWORD size) {
        // Its length counts the NUL also when all is well.
        const DWORD length = ExpandEnvironmentStringsW(text.c_str(), buffer, size);
        return length <= size && length > 0 ? length - 1 : length;
    });
}

Variant SplitCommandLine(const std::wstring& commandLine)
{
    // The platform takes an empty command line for that of this process.
    const size_t begin = commandLine.find_first_not_of(L" \t");
    std::vector<std::wstring> parts;
    if (begin != std::wstring::npos && IsPlain(commandLine)) {
        int count = 0;
        const Owned<LPWSTR*, LocalFree> split(
            CommandLineToArgvW(commandLine.c_str() + begin, &count));
        if (split) parts.assign(split.get(), split.get() + count);
    }
    return MakeStringArray(parts, true);
}

} // namespace quill
