#include "services/Logging.h"

#include <knownfolders.h>
#include <shlobj.h>

#include "core/Apartment.h"
#include "core/AutomationError.h"
#include "core/MessagePump.h"
#include "core/Paths.h"
#include "messages.h"
#include "services/Bytes.h"

namespace quill {

namespace {

constexpr wchar_t kSource[] = L"Quill";
constexpr size_t kLongestEventText = 31'839; // UTF-16 units that the system takes in one event
constexpr DWORD kLockDeadline = 5'000;       // milliseconds that another writer is waited for
constexpr DWORD kLockRetry = 10;
constexpr std::wstring_view kByteOrderMark = L"\xFEFF";

// One byte far behind the end of any log file: writers keep each other out, readers may read.
constexpr DWORD kLockPosition = 0x7FFFFFFF;

using EventSourceHandle = Owned<HANDLE, DeregisterEventSource>;

// How many units from `begin` on go into one event; a surrogate pair is not parted.
size_t LengthOfPart(const std::wstring& text, size_t begin) noexcept
{
    const size_t left = text.size() - begin;
    if (left <= kLongestEventText) return left;
    return IS_HIGH_SURROGATE(text[begin + kLongestEventText - 1]) ? kLongestEventText - 1
                                                                  : kLongestEventText;
}

// The text as the event viewer shows it unchanged: it ends at no NUL, and its "%1" names no
// insertion, which a blank without width sees to.
std::wstring AsInsertion(std::wstring_view text)
{
    std::wstring shown;
    shown.reserve(text.size());
    for (const wchar_t unit : text) {
        if (unit >= L'0' && unit <= L'9' && shown.ends_with(L'%')) shown += L'\x200B';
        shown += unit == L'\0' ? L'\x2400' : unit;
    }
    return shown;
}

// Records the text from `begin` on, and moves `begin` behind what is recorded. 0, or why the
// system's event log refuses an event.
DWORD LogToSystem(const std::wstring& text, LogEventType type, size_t& begin)
{
    const EventSourceHandle source(RegisterEventSourceW(nullptr, kSource));
    if (!source) return GetLastError();
    do {
        const size_t length = LengthOfPart(text, begin);
        const std::wstring part = AsInsertion(std::wstring_view(text).substr(begin, length));
        const wchar_t* insertion = part.c_str();
        if (!Seam<EventLogFunctions>().report(source.get(), static_cast<WORD>(type), 0, QUILL_EVENT,
                                              nullptr, 1, 0, &insertion, nullptr))
            return GetLastError();
        begin += length;
    } while (begin < text.size());
    return ERROR_SUCCESS;
}

const wchar_t* NameOf(LogEventType type) noexcept
{
    switch (type) {
    case LogEventType::Error: return L"Error";
    case LogEventType::Warning: return L"Warning";
    case LogEventType::Information: return L"Information";
    }
    return L"";
}

// 2024-05-31T09:05:00.123+02:00
std::wstring LocalTime()
{
    SYSTEMTIME utc;
    SYSTEMTIME local;
    FILETIME utcTime;
    FILETIME localTime;
    GetSystemTime(&utc);
    SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local);
    SystemTimeToFileTime(&utc, &utcTime);
    SystemTimeToFileTime(&local, &localTime);
    const auto ticks = [](const FILETIME& time) { // of 100 ns
        return static_cast<LONGLONG>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    };
    const int offset = static_cast<int>((ticks(localTime) - ticks(utcTime)) / 600'000'000);
    const int minutes = offset < 0 ? -offset : offset;
    wchar_t text[64];
    swprintf(text, std::size(text), L"%04d-%02d-%02dT%02d:%02d:%02d.%03d%c%02d:%02d", local.wYear,
             local.wMonth, local.wDay, local.wHour, local.wMinute, local.wSecond,
             local.wMilliseconds, offset < 0 ? L'-' : L'+', minutes / 60, minutes % 60);
    return text;
}

std::wstring LineOf(const std::wstring& text, LogEventType type)
{
    std::wstring line = LocalTime() + L'\t' + NameOf(type) + L'\t';
    for (const wchar_t unit : text)
        line += unit < L' ' ? static_cast<wchar_t>(L'\x2400' + unit) : unit;
    return line + L"\r\n";
}

// Where a log file of this name lies; the folder of a relative one is made.
std::wstring Locate(const std::wstring& name)
{
    if (IsFullPath(name)) return name;
    TaskMemory<wchar_t> data;
    Check(SHGetKnownFolderPath(FOLDERID_LocalAppData, KF_FLAG_CREATE, nullptr, Into(data)));
    const std::wstring folder = CombinePath(data.get(), kSource);
    CreateDirectoryW(folder.c_str(), nullptr);
    return CombinePath(folder, name);
}

// Keeps other writers of the file out, in all processes, until it is closed.
void Lock(HANDLE file)
{
    const ULONGLONG begin = GetTickCount64();
    for (;;) {
        OVERLAPPED place{};
        place.OffsetHigh = kLockPosition;
        if (LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place))
            return;
        const DWORD reason = GetLastError();
        if ((reason != ERROR_LOCK_VIOLATION && reason != ERROR_IO_PENDING) ||
            GetTickCount64() - begin > kLockDeadline || !WaitForMessages(kLockRetry)) {
            RaiseWin32(reason);
        }
    }
}

void Append(const std::wstring& path, const std::wstring& line)
{
    const FileHandle file =
        OpenDiskFile(path, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL);
    CheckLast(file != nullptr);
    Lock(file.get());
    LARGE_INTEGER end{};
    CheckLast(SetFilePointerEx(file.get(), {}, &end, FILE_END));
    std::wstring text(end.QuadPart == 0 ? kByteOrderMark : std::wstring_view());
    const Bytes bytes = ToCodePage(text += line, CP_UTF8);
    const auto size = static_cast<DWORD>(bytes.size());
    DWORD written = 0;
    const BOOL done = WriteFile(file.get(), bytes.data(), size, &written, nullptr);
    if (done && written == size) return;

    // Half a line, of a disk that is full, is worse than none.
    const DWORD reason = done ? ERROR_DISK_FULL : GetLastError();
    if (SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN)) SetEndOfFile(file.get());
    RaiseWin32(reason);
}

void LogToFile(const std::wstring& name, const std::wstring& line)
{
    try {
        Append(Locate(name), line);
    } catch (AutomationError& error) {
        error.description = L"Cannot write to the log file " + name + L": " + error.description;
        throw;
    }
}

} // namespace

void Logging::Log(const std::wstring& text, LogEventType type) const
{
    size_t recorded = 0; // in the system's event log; the rest goes to the file
    if (mode_ != LogMode::File) {
        const DWORD refusal = LogToSystem(text, type, recorded);
        if (refusal == ERROR_SUCCESS) return;
        if (mode_ == LogMode::System) RaiseWin32(refusal);
    }
    LogToFile(file_, LineOf(text.substr(recorded), type));
}

} // namespace quill
