// Quill.File: operations on files that script languages lack, and access to the bytes of a file.
#pragma once

#include "core/Automation.h"

namespace quill {

// Raises no errors of its own: the results report failures.
class File final : public Automation<_File> {
public:
    METHOD(BSTR, Application, (BSTR filespec), filespec)
    METHOD(VARIANT_BOOL, Create, (BSTR filespec, VARIANT_BOOL overwrite), filespec, overwrite)
    METHOD(LONG, ExeType, (BSTR filespec), filespec)
    METHOD(LONG, ExeType2, (BSTR filespec), filespec)
    METHOD(SHORT, ExeType3, (BSTR filespec, VARIANT_BOOL winversion), filespec, winversion)
    METHOD(VARIANT_BOOL, Exists, (BSTR filespec), filespec)
    METHOD(VARIANT_BOOL, Replace, (BSTR filespec, BSTR replacementfile, BSTR backupfile), filespec,
           replacementfile, backupfile)
    METHOD(_BinFile*, OpenBinary, (BSTR filespec, VARIANT_BOOL write_access), filespec,
           write_access)
    METHOD(VARIANT_BOOL, TimeSet, (BSTR path, DATE dt, SHORT which), path, dt, which)
    METHOD(DATE, TimeGet, (BSTR path, SHORT which), path, which)
    METHOD(SHORT, TimeCompare, (BSTR file1, BSTR file2, SHORT which), file1, file2, which)

private:
    std::wstring Application(const std::wstring& path) const;
    bool Create(const std::wstring& path, bool overwrite) const;
    LONG ExeType(const std::wstring& path) const;
    LONG ExeType2(const std::wstring& path) const;
    SHORT ExeType3(const std::wstring& path, bool version) const;
    bool Exists(const std::wstring& pattern) const;
    bool Replace(const std::wstring& path, const std::wstring& replacement,
                 const std::wstring& backup) const;
    ComPtr<_BinFile> OpenBinary(const std::wstring& path, bool writeAccess) const;
    bool TimeSet(const std::wstring& path, DATE date, SHORT which) const;
    DATE TimeGet(const std::wstring& path, SHORT which) const;
    SHORT TimeCompare(const std::wstring& first, const std::wstring& second, SHORT which) const;
};

} // namespace quill
