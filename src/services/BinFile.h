// Quill.BinFile: reads and writes the bytes of one file, anywhere in it. File.OpenBinary makes it.
#pragma once

#include <cstdint>
#include <string>

#include "core/Automation.h"
#include "services/bytefn.h"

namespace quill {

// The file is open for this object alone, until BClose or the object's end. Sizes and positions are
// in bytes, as two halves of 32 bits or as one count (int64fn.h).
class BinFile final : public Automation<_BinFile> {
public:
    // False when the path does not name a file that can be opened so.
    bool Open(const std::wstring& path, bool writeAccess);

    METHOD(VARIANT_BOOL, BRead, (VARIANT * vdata, LONG numbytes, LONG vtype), vdata, numbytes,
           vtype)
    METHOD(VARIANT_BOOL, BWrite, (VARIANT * vdata, LONG numbytes), vdata, numbytes)
    METHOD(VARIANT_BOOL, BTrim, ())
    STDMETHODIMP BFlush() noexcept override;
    STDMETHODIMP BClose() noexcept override;
    READ_ONLY_PROPERTY(LONG, ByteCount, byteCount_)
    READ_ONLY_PROPERTY(VARIANT_BOOL, EOF, eof_)
    STORED_PROPERTY(LONG, ErrorLevel, errorLevel_, Within<0, 2>)
    STORED_PROPERTY(VARIANT_BOOL, ConvertAnsi, convertAnsi_)
    STORED_PROPERTY(VARIANT_BOOL, UseUnicode, form_.useUnicode)
    STORED_PROPERTY(VARIANT_BOOL, UseHexstring, form_.useHexstring)
    STORED_PROPERTY(VARIANT_BOOL, TwistEndian, form_.twistEndian)
    COMPUTED_PROPERTY(LONG, handle)
    COMPUTED_PROPERTY(LONG, Length)
    COMPUTED_PROPERTY(LONG, Length2)
    COMPUTED_PROPERTY(LONG, Location)
    PROPERTY_PUT(LONG, Location, BinFile::SetLocation)
    COMPUTED_PROPERTY(LONG, Location2)
    PROPERTY_PUT(LONG, Location2, BinFile::SetLocation2)
    COMPUTED_PROPERTY(CURRENCY, LOC)
    PROPERTY_PUT(CURRENCY, LOC, BinFile::SetLOC)
    COMPUTED_PROPERTY(CURRENCY, LOF)

private:
    // An error is raised when ErrorLevel is at least its severity.
    enum Severity : LONG { kOfFile = 1, kOfArgument = 2 };

    bool BRead(VARIANT& variable, LONG count, LONG type);
    bool ReadNumber(VARIANT& variable, VARTYPE type, LONG size);
    bool ReadText(VARIANT& variable, LONG count);
    bool ReadArray(VARIANT& variable, LONG count);
    bool ReadInto(void* buffer, LONG count);
    bool BWrite(VARIANT& data, LONG count);
    bool BTrim();

    LONG handle() const;
    LONG Length() const;
    LONG Length2() const;
    CURRENCY LOF() const;
    LONG Location();
    LONG Location2();
    CURRENCY LOC() const;
    void SetLocation(LONG low);
    void SetLocation2(LONG high);
    void SetLOC(CURRENCY amount);

    std::int64_t Size() const;
    std::int64_t Position() const;
    bool MoveTo(std::int64_t position);
    void RefreshHalves();
    CURRENCY AsCurrency(std::int64_t count, const wchar_t* property) const;

    bool RequireWriteAccess() const;
    bool Refuse(const PublishedError& entry, Severity severity,
                const std::wstring& value = {}) const;

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
