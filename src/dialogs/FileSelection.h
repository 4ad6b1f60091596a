// Quill.FileSelection: the system's dialogs that open and save files.
#pragma once

#include "core/Automation.h"
#include "core/ErrorLevel.h"

namespace quill {

// An invalid mode raises as ErrorLevel says; what goes wrong in the dialog is told by ErrorCode.
class FileSelection final : public WithErrorLevel<Automation<_FileSelection>> {
public:
    STDMETHODIMP get_Directory(BSTR* value) noexcept override { return Get(value, directory_); }
    STDMETHODIMP put_Directory(BSTR value) noexcept override { return Put(directory_, value); }
    STDMETHODIMP get_DlgTitle(BSTR* value) noexcept override { return Get(value, dlgTitle_); }
    STDMETHODIMP put_DlgTitle(BSTR value) noexcept override { return Put(dlgTitle_, value); }
    STDMETHODIMP get_FileName(BSTR* value) noexcept override { return Get(value, fileName_); }
    STDMETHODIMP put_FileName(BSTR value) noexcept override { return Put(fileName_, value); }
    STDMETHODIMP get_FileExtension(BSTR* value) noexcept override
    {
        return Get(value, fileExtension_);
    }
    STDMETHODIMP put_FileExtension(BSTR value) noexcept override
    {
        return Put(fileExtension_, value);
    }
    STDMETHODIMP get_Filter(BSTR* value) noexcept override { return Get(value, filter_); }
    STDMETHODIMP put_Filter(BSTR value) noexcept override
    {
        return Call(&FileSelection::SetFilterText, value);
    }
    STDMETHODIMP get_FileNumber(LONG* value) noexcept override { return Get(value, fileNumber_); }
    STDMETHODIMP put_FileNumber(LONG value) noexcept override { return Put(fileNumber_, value); }
    STDMETHODIMP get_Convert(VARIANT_BOOL* value) noexcept override { return Get(value, convert_); }
    STDMETHODIMP put_Convert(VARIANT_BOOL value) noexcept override { return Put(convert_, value); }
    STDMETHODIMP get_ErrorCode(LONG* value) noexcept override { return Get(value, errorCode_); }
    STDMETHODIMP Dialog(SHORT mode, LONG* result) noexcept override
    {
        return Call(result, &FileSelection::ShowDialog, mode);
    }
    STDMETHODIMP SetFilter(VARIANT* f) noexcept override
    {
        return Call(&FileSelection::SetFilterFrom, f);
    }

private:
    enum Mode : SHORT { kOpen, kSave, kOpenSeveral };

    LONG ShowDialog(SHORT mode);
    void SetFilterText(const std::wstring& text);
    void SetFilterFrom(VARIANT& filter);
    size_t BufferUnits(SHORT mode) const;
    LONG TakeOne(const std::wstring& path, size_t nameOffset);
    LONG TakeSeveral(const std::wstring& buffer, size_t nameOffset);

    std::wstring directory_;
    std::wstring dlgTitle_;
    std::wstring fileName_;
    std::wstring fileExtension_;
    std::wstring filter_;
    LONG fileNumber_ = 0;
    bool convert_ = false;
    LONG errorCode_ = 0;
};

} // namespace quill
