// Quill.BinFile: reads and writes the bytes of one file, anywhere in it. File.OpenBinary makes it.
#pragma once

#include "core/Automation.h"
#include "services/bytefn.h"

namespace quill {

// The file is open for this object alone, until BClose or the object's end. Sizes and positions are
// in bytes, as two halves of 32 bits or as one count (int64fn.h).
class BinFile final : public Automation<_BinFile> {
public:
    // False when the path does not name a file that can be opened so.
    bool Open(const std::wstring& path, bool writeAccess);

    STDMETHODIMP BRead(VARIANT* vdata, LONG numbytes, LONG vtype,
                       VARIANT_BOOL* result) noexcept override
    {
        return Call(result, &BinFile::Read, vdata, numbytes, vtype);
    }
    STDMETHODIMP BWrite(VARIANT* vdata, LONG numbytes, VARIANT_BOOL* result) noexcept override
    {
        return Call(result, &BinFile::Write, vdata, numbytes);
    }
    STDMETHODIMP BTrim(VARIANT_BOOL* result) noexcept override
    {
        return Call(result, &BinFile::Trim);
    }
    STDMETHODIMP BFlush() noexcept override { return Call(&BinFile::Flush); }
    STDMETHODIMP BClose() noexcept override { return Call(&BinFile::Close); }
    STDMETHODIMP get_ByteCount(LONG* value) noexcept override { return Get(value, byteCount_); }
    STDMETHODIMP get_EOF(VARIANT_BOOL* value) noexcept override { return Get(value, eof_); }
    STORED_PROPERTY(LONG, ErrorLevel, errorLevel_, Within<0, 2>)
    STORED_PROPERTY(VARIANT_BOOL, ConvertAnsi, convertAnsi_)
    STORED_PROPERTY(VARIANT_BOOL, UseUnicode, form_.useUnicode)
    STORED_PROPERTY(VARIANT_BOOL, UseHexstring, form_.useHexstring)
    STORED_PROPERTY(VARIANT_BOOL, TwistEndian, form_.twistEndian)
    STDMETHODIMP get_handle(LONG* value) noexcept override
    {
        return Call(value, &BinFile::HandleNumber);
    }
    STDMETHODIMP get_Length(LONG* value) noexcept override
    {
        return Call(value, &BinFile::LengthLow);
    }
    STDMETHODIMP get_Length2(LONG* value) noexcept override
    {
        return Call(value, &BinFile::LengthHigh);
    }
    STDMETHODIMP get_Location(LONG* value) noexcept override
    {
        return Call(value, &BinFile::LocationLow);
    }
    STDMETHODIMP put_Location(LONG value) noexcept override
    {
        return Call(&BinFile::SetLocationLow, value);
    }
    STDMETHODIMP get_Location2(LONG* value) noexcept override
    {
        return Call(value, &BinFile::LocationHigh);
    }
    STDMETHODIMP put_Location2(LONG value) noexcept override
    {
        return Call(&BinFile::SetLocationHigh, value);
    }
    STDMETHODIMP get_LOC(CURRENCY* value) noexcept override
    {
        return Call(value, &BinFile::LocationCount);
    }
    STDMETHODIMP put_LOC(CURRENCY value) noexcept override
    {
        return Call(&BinFile::SetLocationCount, value);
    }
    STDMETHODIMP get_LOF(CURRENCY* value) noexcept override
    {
        return Call(value, &BinFile::LengthCount);
    }

private:
    // An error is raised when ErrorLevel is at least its severity.
    enum Severity : LONG { kOfFile = 1, kOfArgument = 2 };

    bool Read(VARIANT& variable, LONG count, LONG type);
    bool ReadNumber(VARIANT& variable, VARTYPE type, LONG size);
    bool ReadText(VARIANT& variable, LONG count);
    bool ReadArray(VARIANT& variable, LONG count);
    bool ReadInto(void* buffer, LONG count);
    bool Write(VARIANT& data, LONG count);
    bool Trim();
    void Flush() const;
    void Close();

    LONG HandleNumber() const;
    LONG LengthLow() const;
    LONG LengthHigh() const;
    CURRENCY LengthCount() const;
    LONG LocationLow();
    LONG LocationHigh();
    CURRENCY LocationCount() const;
    void SetLocationLow(LONG low);
    void SetLocationHigh(LONG high);
    void SetLocationCount(CURRENCY amount);

    std::int64_t Size() const;
    std::int64_t Position() const;
    bool MoveTo(std::int64_t position);
    void RefreshHalves();
    CURRENCY AsCurrency(std::int64_t count, const wchar_t* property) const;

    bool MayWrite() const;
    void Fail(const ErrorEntry& entry, Severity severity, const std::wstring& value = {}) const;

    FileHandle file_; // null when closed
    std::wstring path_;
    bool writeAccess_ = false;
    ByteForm form_;
    bool convertAnsi_ = false;
    LONG errorLevel_ = 2;
    LONG byteCount_ = 0;
    bool eof_ = false;

    // What Location and Location2 show. They are kept, because a script sets one after the other;
    // every other answer about the file comes from the platform.
    LONG locationLow_ = 0;
    LONG locationHigh_ = 0;
    bool halvesAreStale_ = false; // the position has moved since they were read
};

} // namespace quill
