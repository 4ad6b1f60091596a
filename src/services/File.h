// Quill.File: operations on files that script languages lack, and access to the bytes of a file.
#pragma once

#include "core/Automation.h"

namespace quill {

// Raises nothing of its own: what fails is told by the result.
class File final : public Automation<_File> {
public:
    STDMETHODIMP Application(BSTR filespec, BSTR* result) noexcept override
    {
        return Call(result, &File::FindApplication, filespec);
    }
    STDMETHODIMP Create(BSTR filespec, VARIANT_BOOL overwrite,
                        VARIANT_BOOL* result) noexcept override
    {
        return Call(result, &File::CreateEmpty, filespec, overwrite);
    }
    STDMETHODIMP ExeType(BSTR filespec, LONG* result) noexcept override
    {
        return Call(result, &File::BinaryType, filespec);
    }
    STDMETHODIMP ExeType2(BSTR filespec, LONG* result) noexcept override
    {
        return Call(result, &File::ProgramType, filespec);
    }
    STDMETHODIMP ExeType3(BSTR filespec, VARIANT_BOOL winversion, SHORT* result) noexcept override
    {
        return Call(result, &File::ShellType, filespec, winversion);
    }
    STDMETHODIMP Exists(BSTR filespec, VARIANT_BOOL* result) noexcept override
    {
        return Call(result, &File::IsFound, filespec);
    }
    STDMETHODIMP Replace(BSTR filespec, BSTR replacementfile, BSTR backupfile,
                         VARIANT_BOOL* result) noexcept override
    {
        return Call(result, &File::ReplaceBy, filespec, replacementfile, backupfile);
    }
    STDMETHODIMP OpenBinary(BSTR filespec, VARIANT_BOOL write_access,
                            _BinFile** result) noexcept override
    {
        return Call(result, &File::Open, filespec, write_access);
    }
    STDMETHODIMP TimeSet(BSTR path, DATE dt, SHORT which, VARIANT_BOOL* result) noexcept override
    {
        return Call(result, &File::SetTimes, path, dt, which);
    }
    STDMETHODIMP TimeGet(BSTR path, SHORT which, DATE* result) noexcept override
    {
        return Call(result, &File::ReadTime, path, which);
    }
    STDMETHODIMP TimeCompare(BSTR file1, BSTR file2, SHORT which, SHORT* result) noexcept override
    {
        return Call(result, &File::CompareTimes, file1, file2, which);
    }

private:
    std::wstring FindApplication(const std::wstring& path) const;
    bool CreateEmpty(const std::wstring& path, bool overwrite) const;
    LONG BinaryType(const std::wstring& path) const;
    LONG ProgramType(const std::wstring& path) const;
    SHORT ShellType(const std::wstring& path, bool version) const;
    bool IsFound(const std::wstring& pattern) const;
    bool ReplaceBy(const std::wstring& path, const std::wstring& replacement,
                   const std::wstring& backup) const;
    ComPtr<_BinFile> Open(const std::wstring& path, bool writeAccess) const;
    bool SetTimes(const std::wstring& path, DATE date, SHORT which) const;
    DATE ReadTime(const std::wstring& path, SHORT which) const;
    SHORT CompareTimes(const std::wstring& first, const std::wstring& second, SHORT which) const;
};

} // namespace quill
