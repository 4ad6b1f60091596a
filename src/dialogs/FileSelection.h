// Quill.FileSelection: the system's dialogs that open and save files.
#pragma once

#include "core/Automation.h"
#include "core/ErrorLevel.h"

#include <commdlg.h> // needs the platform's main header before it

namespace quill {

// An invalid mode raises as ErrorLevel says; what goes wrong in the dialog is told by ErrorCode.
class FileSelection final : public WithErrorLevel<Automation<_FileSelection>> {
public:
    STORED_PROPERTY(BSTR, Directory, directory_)
    STORED_PROPERTY(BSTR, DlgTitle, dlgTitle_)
    STORED_PROPERTY(BSTR, FileName, fileName_)
    STORED_PROPERTY(BSTR, FileExtension, fileExtension_)
    PROPERTY_SET_BY(BSTR, Filter, filter_, FileSelection::SetFilterText)
    STORED_PROPERTY(LONG, FileNumber, fileNumber_)
    STORED_PROPERTY(VARIANT_BOOL, Convert, convert_)
    READ_ONLY_PROPERTY(LONG, ErrorCode, errorCode_)
    METHOD(LONG, Dialog, (SHORT mode), mode)
    ACTION(SetFilter, (VARIANT * f), f)

private:
    enum Mode : SHORT { kOpen, kSave, kOpenSeveral };

    LONG Dialog(SHORT mode);
    void SetFilterText(const std::wstring& text);
    void SetFilter(VARIANT& filter);
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

// The platform's dialog to save one file, or to open files. Raises an error where it is missing.
BOOL ShowFileDialog(OPENFILENAMEW* dialog, bool save);

// A seam: the platform's dialogs.
struct FileDialogs {
    std::function<BOOL(OPENFILENAMEW* dialog, bool save)> show = ShowFileDialog;
};

} // namespace quill
