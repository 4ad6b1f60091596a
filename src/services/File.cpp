#include "services/File.h"

#include "core/Catalogue.h"
#include "core/Dates.h"
#include "services/BinFile.h"

namespace quill {

namespace {

enum Time : SHORT { kCreation = 1, kLastWrite = 2, kLastAccess = 4 };

// Null if the platform refuses. Not shared; opening a file for its attributes alone ignores that
// and keeps nobody out.
FileHandle OpenFile(const std::wstring& path, DWORD access, DWORD disposition, DWORD flags)
{
    return FileHandle(CreateFileW(path.c_str(), access, 0, nullptr, disposition, flags, nullptr));
}

// Folders have times too, and open with backup semantics.
FileHandle OpenForTimes(const std::wstring& path, DWORD access)
{
    return OpenFile(path, access, OPEN_EXISTING,
                    FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_RANDOM_ACCESS);
}

bool TimeOf(HANDLE file, SHORT which, FILETIME& time)
{
    return GetFileTime(file, which == kCreation ? &time : nullptr,
                       which == kLastAccess ? &time : nullptr,
                       which == kCreation || which == kLastAccess ? nullptr : &time) != FALSE;
}

// The shell's functions keep paths in buffers of this size; a longer one would run over them.
bool FitsTheShell(const std::wstring& path) noexcept
{
    return path.size() < MAX_PATH;
}

// "PE" or another signature in the low word, the version of Windows that is expected in the high
// one; 0 for what is not a program.
DWORD ShellExeType(const std::wstring& path)
{
    if (!FitsTheShell(path)) return 0;
    SHFILEINFOW unused{};
    return static_cast<DWORD>(
        SHGetFileInfoW(path.c_str(), 0, &unused, sizeof unused, SHGFI_EXETYPE));
}

} // namespace

CREATABLE(File)

std::wstring File::Application(const std::wstring& path) const
{
    if (!FitsTheShell(path)) return {};
    std::wstring program(8192, L'\0');
    const auto found =
        reinterpret_cast<INT_PTR>(FindExecutableW(path.c_str(), nullptr, program.data()));
    return found > 32 ? program.c_str() : std::wstring();
}

bool File::Create(const std::wstring& path, bool overwrite) const
{
    return OpenFile(path, GENERIC_WRITE, overwrite ? CREATE_ALWAYS : CREATE_NEW, 0) != nullptr;
}

LONG File::ExeType(const std::wstring& path) const
{
    DWORD type;
    return GetBinaryTypeW(path.c_str(), &type) ? static_cast<LONG>(type) : -1;
}

LONG File::ExeType2(const std::wstring& path) const
{
    const LONG type = ExeType(path);
    const bool shellKnows = type == SCS_32BIT_BINARY || type == SCS_DOS_BINARY ||
                            type == SCS_WOW_BINARY || type == SCS_64BIT_BINARY;
    return shellKnows && ShellExeType(path) == 0 ? -1 : type;
}

SHORT File::ExeType3(const std::wstring& path, bool version) const
{
    const DWORD type = ShellExeType(path);
    const WORD expected = HIWORD(type);
    if (version) return static_cast<SHORT>(HIBYTE(expected) * 100 + LOBYTE(expected));
    switch (LOWORD(type)) {
    case IMAGE_OS2_SIGNATURE: return 4;
    case LOWORD(IMAGE_NT_SIGNATURE): return expected != 0 ? 1 : 2;
    case IMAGE_DOS_SIGNATURE: return 3;
    default: return 0;
    }
}

bool File::Exists(const std::wstring& pattern) const
{
    WIN32_FIND_DATAW data;
    return OwnedOrInvalid<FindClose>(FindFirstFileW(pattern.c_str(), &data)) != nullptr;
}

bool File::Replace(const std::wstring& path, const std::wstring& replacement,
                   const std::wstring& backup) const
{
    return ReplaceFileW(path.c_str(), replacement.c_str(),
                        backup.empty() ? nullptr : backup.c_str(),
                        REPLACEFILE_WRITE_THROUGH | REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr,
                        nullptr) != FALSE;
}

ComPtr<_BinFile> File::OpenBinary(const std::wstring& path, bool writeAccess) const
{
    const ComPtr<BinFile> file(new BinFile);
    if (!file->Open(path, writeAccess)) return nullptr;
    return file.Get();
}

bool File::TimeSet(const std::wstring& path, DATE date, SHORT which) const
{
    const FileHandle file = OpenForTimes(path, FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES);
    const std::optional<SYSTEMTIME> parts = PartsOf(date);
    FILETIME time;
    if (!file || !parts || !SystemTimeToFileTime(&*parts, &time)) return false;
    BOOL done = TRUE; // the last step decides
    if (which & kCreation) done = SetFileTime(file.get(), &time, nullptr, nullptr);
    if (which & kLastWrite) done = SetFileTime(file.get(), nullptr, nullptr, &time);
    if (which & kLastAccess) done = SetFileTime(file.get(), nullptr, &time, nullptr);
    return done != FALSE;
}

DATE File::TimeGet(const std::wstring& path, SHORT which) const
{
    const FileHandle file = OpenForTimes(path, FILE_READ_ATTRIBUTES);
    FILETIME time;
    SYSTEMTIME parts;
    if (!file || !TimeOf(file.get(), which, time) || !FileTimeToSystemTime(&time, &parts)) return 0;
    return DateOf(parts);
}

SHORT File::TimeCompare(const std::wstring& first, const std::wstring& second, SHORT which) const
{
    const FileHandle firstFile = OpenForTimes(first, FILE_READ_ATTRIBUTES);
    if (!firstFile) return -1;
    const FileHandle secondFile = OpenForTimes(second, FILE_READ_ATTRIBUTES);
    if (!secondFile) return -1;
    FILETIME firstTime{};
    FILETIME secondTime;
    TimeOf(firstFile.get(), which, firstTime); // a time that cannot be read counts as the earliest
    if (!TimeOf(secondFile.get(), which, secondTime)) return -1;
    const LONG order = CompareFileTime(&firstTime, &secondTime);
    return static_cast<SHORT>(order < 0 ? 1 : order > 0 ? 2 : 0);
}

} // namespace quill
