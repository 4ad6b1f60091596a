#include "services/BinFile.h"

#include <algorithm>
#include <new>

#include "core/Text.h"
#include "core/quillfn.h"
#include "services/int64fn.h"

namespace quill {

namespace {

constexpr PublishedError kFileNotOpen{ErrorNumber(0x8004034A), L"File is not open: "};
constexpr PublishedError kNoWriteAccess{ErrorNumber(0x8004034C), L"Write access not permitted."};
constexpr PublishedError kReadSizeUndefined{ErrorNumber(0x8004034D),
                                            L"Number of bytes to read is undefined."};
constexpr PublishedError kWriteSizeMismatch{
    ErrorNumber(0x8004034E), L"Write data do not match the requested number of bytes."};
constexpr PublishedError kWriteDataUnusable{ErrorNumber(0x8004034E),
                                            L"Could not prepare write data."};
constexpr PublishedError kNoFileSize{ErrorNumber(0x80040350),
                                     L"API function failed to return the file size."};
constexpr PublishedError kNoFilePointer{ErrorNumber(0x80040350),
                                        L"API function failed to return the file pointer."};
constexpr PublishedError kFilePointerNotSet{ErrorNumber(0x80040350),
                                            L"API function failed to set the file pointer."};
constexpr PublishedError kLocationNotSet{ErrorNumber(0x80040350),
                                         L"Could not set the assigned file pointer."};
constexpr PublishedError kWrongVariantType{ErrorNumber(0x80040360),
                                           L"Wrong argument (wrong Variant type)"};
constexpr PublishedError kWrongPropertyValue{ErrorNumber(0x80040361), L"Wrong property value: "};

// No call carries more into a 32-bit process; a script that asks for it gets "out of memory" before
// any is taken.
constexpr LONG kLargestRead = 0x20000000; // bytes

constexpr LONG Low(std::int64_t value) noexcept
{
    return static_cast<LONG>(value);
}

constexpr LONG High(std::int64_t value) noexcept
{
    return static_cast<LONG>(value >> 32);
}

constexpr std::int64_t Joined(LONG low, LONG high) noexcept
{
    return std::int64_t{high} << 32 | static_cast<std::uint32_t>(low);
}

} // namespace

bool BinFile::Open(const std::wstring& path, bool writeAccess)
{
    path_ = path;
    writeAccess_ = writeAccess;
    FileHandle file(CreateFileW(
        path.c_str(), writeAccess ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ, 0, nullptr,
        OPEN_EXISTING, FILE_FLAG_RANDOM_ACCESS | FILE_ATTRIBUTE_ARCHIVE, nullptr));
    if (!file || GetFileType(file.get()) != FILE_TYPE_DISK) return false;
    SetLastError(NO_ERROR);
    DWORD high = 0;
    if (GetFileSize(file.get(), &high) == INVALID_FILE_SIZE && GetLastError() != NO_ERROR) {
        // Kept as published: a volume, which is not a file, stays held until the server ends.
        static_cast<void>(file.release());
        return false;
    }
    file_ = std::move(file);
    return true;
}

bool BinFile::BRead(VARIANT& variable, LONG count, LONG type)
{
    if (!file_) return Refuse(kFileNotOpen, kOfFile, path_);
    if (IsArrayByReference(variable)) return Refuse(kWrongVariantType, kOfArgument);
    Assign(variable, {});
    switch (type) {
    case VT_UI1: return ReadNumber(variable, VT_UI1, 1);
    case VT_I2: return ReadNumber(variable, VT_I2, 2);
    case VT_I4: return ReadNumber(variable, VT_I4, 4);
    case VT_R4: return ReadNumber(variable, VT_R4, 4);
    case VT_R8: return ReadNumber(variable, VT_R8, 8);
    case VT_CY: return ReadNumber(variable, VT_CY, 8);
    }
    if (count <= 0) return Refuse(kReadSizeUndefined, kOfArgument);
    if (count >= kLargestRead) throw std::bad_alloc();
    return type == VT_BSTR ? ReadText(variable, count) : ReadArray(variable, count);
}

// As it stands in the file: lowest byte first. TwistEndian is for writing only.
bool BinFile::ReadNumber(VARIANT& variable, VARTYPE type, LONG size)
{
    Variant number;
    if (!ReadInto(&V_UI1(&number), size)) return false;
    V_VT(&number) = type;
    Assign(variable, std::move(number));
    return true;
}

bool BinFile::ReadText(VARIANT& variable, LONG count)
{
    // Two bytes of the file are one character of the buffer.
    std::wstring text((static_cast<size_t>(count) + 1) / sizeof(wchar_t), L'\0');
    if (!ReadInto(text.data(), count)) return false;
    const auto bytes = static_cast<size_t>(byteCount_);
    if (form_.useUnicode) {
        text.resize((bytes + 1) / sizeof(wchar_t));
    } else {
        // As many characters as bytes were read, which is all of the buffer unless the read was
        // much too short. Scripts cut what they get to ByteCount.
        text.resize(std::min(text.size(), bytes));
        if (convertAnsi_)
            text = FromAnsi(
                {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)});
    }
    Assign(variable, Variant(text));
    return true;
}

bool BinFile::ReadArray(VARIANT& variable, LONG count)
{
    Array bytes = MakeArray(VT_UI1, static_cast<size_t>(count));
    if (!ReadInto(bytes->pvData, count)) return false;
    Assign(variable, Variant(std::move(bytes)));
    return true;
}

bool BinFile::ReadInto(void* buffer, LONG count)
{
    const auto wanted = static_cast<DWORD>(count);
    DWORD got = 0;
    if (!ReadFile(file_.get(), buffer, wanted, &got, nullptr)) got = 0;
    eof_ = got < wanted;
    if (got == 0) return false;
    byteCount_ = static_cast<LONG>(got);
    halvesAreStale_ = true;
    return true;
}

bool BinFile::BWrite(VARIANT& data, LONG count)
{
    byteCount_ = 0;
    if (!RequireWriteAccess()) return false;
    std::vector<BYTE> storage;
    const auto bytes = BytesOf(data, form_, storage);
    if (!bytes) return Refuse(kWriteDataUnusable, kOfArgument);
    if (count < 0 || static_cast<size_t>(count) > bytes->size())
        return Refuse(kWriteSizeMismatch, kOfArgument);
    const DWORD wanted = static_cast<DWORD>(count == 0 ? bytes->size() : count);
    DWORD written = 0;
    if (!WriteFile(file_.get(), bytes->data(), wanted, &written, nullptr)) written = 0;
    if (written == 0) return false;
    byteCount_ = static_cast<LONG>(written);
    halvesAreStale_ = true;
    return true;
}

bool BinFile::BTrim()
{
    if (!RequireWriteAccess() || !SetEndOfFile(file_.get())) return false;
    byteCount_ = 0;
    halvesAreStale_ = true;
    return true;
}

HRESULT BinFile::BFlush() noexcept
{
    return Run([&] {
        if (RequireWriteAccess()) FlushFileBuffers(file_.get());
    });
}

HRESULT BinFile::BClose() noexcept
{
    return Run([&] {
        if (!file_) return;
        FlushFileBuffers(file_.get());
        file_.reset();
    });
}

LONG BinFile::handle() const
{
    return static_cast<LONG>(reinterpret_cast<LONG_PTR>(file_.get()));
}

LONG BinFile::Length() const
{
    return Low(Size());
}

LONG BinFile::Length2() const
{
    return High(Size());
}

CURRENCY BinFile::LOF() const
{
    return AsCurrency(Size(), L"LOF");
}

LONG BinFile::Location()
{
    RefreshHalves();
    return file_ ? locationLow_ : 0;
}

LONG BinFile::Location2()
{
    RefreshHalves();
    return file_ ? locationHigh_ : 0;
}

CURRENCY BinFile::LOC() const
{
    return AsCurrency(Position(), L"LOC");
}

void BinFile::SetLocation(LONG low)
{
    if (!file_) return;
    if (MoveTo(Joined(low, locationHigh_)))
        locationLow_ = low;
    else
        Refuse(kLocationNotSet, kOfFile);
}

void BinFile::SetLocation2(LONG high)
{
    if (!file_) return;
    if (high >= 0)
        locationHigh_ = high;
    else
        Refuse(kWrongPropertyValue, kOfFile, L"Location2");
}

void BinFile::SetLOC(CURRENCY amount)
{
    if (!file_) return;
    if (!IsCountInRange(amount))
        Refuse(kWrongPropertyValue, kOfFile, L"LOC");
    else if (!MoveTo(CurrencyToCount(amount)))
        Refuse(kFilePointerNotSet, kOfFile);
}

// In bytes; 0 when the file is closed.
std::int64_t BinFile::Size() const
{
    if (!file_) return 0;
    LARGE_INTEGER size;
    if (GetFileSizeEx(file_.get(), &size)) return size.QuadPart;
    Refuse(kNoFileSize, kOfFile);
    return 0;
}

// In bytes; 0 when the file is closed.
std::int64_t BinFile::Position() const
{
    if (!file_) return 0;
    LARGE_INTEGER position;
    if (SetFilePointerEx(file_.get(), LARGE_INTEGER{}, &position, FILE_CURRENT))
        return position.QuadPart;
    Refuse(kNoFilePointer, kOfFile);
    return 0;
}

bool BinFile::MoveTo(std::int64_t position)
{
    LARGE_INTEGER distance;
    distance.QuadPart = position;
    if (!SetFilePointerEx(file_.get(), distance, nullptr, FILE_BEGIN)) return false;
    halvesAreStale_ = true;
    eof_ = false;
    return true;
}

void BinFile::RefreshHalves()
{
    if (!file_ || !halvesAreStale_) return;
    const std::int64_t position = Position();
    locationLow_ = Low(position);
    locationHigh_ = High(position);
    halvesAreStale_ = false;
}

CURRENCY BinFile::AsCurrency(std::int64_t count, const wchar_t* property) const
{
    if (IsCountInRange(count)) return CountToCurrency(count);
    Refuse(kWrongPropertyValue, kOfFile, property);
    return {};
}

bool BinFile::RequireWriteAccess() const
{
    if (!file_) return Refuse(kFileNotOpen, kOfFile, path_);
    return writeAccess_ || Refuse(kNoWriteAccess, kOfFile);
}

// Raises an error of at least this severity, or returns False.
bool BinFile::Refuse(const PublishedError& entry, Severity severity,
                     const std::wstring& value) const
{
    if (errorLevel_ >= severity) Raise(entry, value);
    return false;
}

} // namespace quill
