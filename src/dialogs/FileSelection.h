// Quill.FileSelection: the system's dialogs that open and save files.
#pragma once

#include <string>
#include <vector>

#include "core/ErrorLevel.h"
#include "dialogs/Answers.h"

namespace quill {

// An invalid mode raises as ErrorLevel says; ErrorCode reports what goes wrong in the dialog.
class FileSelection final : public WithErrorLevel<WithTimeout<Automation<_FileSelection>>> {
public:
    STORED_PROPERTY(BSTR, Directory, properties_.directory)
    STORED_PROPERTY(BSTR, DlgTitle, properties_.dlgTitle)
    STORED_PROPERTY(BSTR, FileName, properties_.fileName)
    STORED_PROPERTY(BSTR, FileExtension, properties_.fileExtension)
    PROPERTY_SET_BY(BSTR, Filter, properties_.filter, FileSelection::SetFilterText)
    STORED_PROPERTY(LONG, FileNumber, properties_.fileNumber)
    STORED_PROPERTY(VARIANT_BOOL, Convert, properties_.convert)
    READ_ONLY_PROPERTY(LONG, ErrorCode, errorCode_)
    METHOD(LONG, Dialog, (SHORT mode), mode)
    ACTION(SetFilter, (VARIANT * f), f)
    METHOD(BSTR, SelectFolder, (BSTR Title), Title)
    COMPUTED_PROPERTY(VARIANT, Paths)
    STORED_PROPERTY(LONG, FilterIndex, properties_.filterIndex, Within<1, LONG_MAX>)

private:
    // The dialog shows a copy, since calls that arrive meanwhile may change them.
    struct Properties {
        std::wstring directory, dlgTitle, fileName, fileExtension, filter;
        LONG fileNumber = 0;
        LONG filterIndex = 1; // counted from 1
        bool convert = false;
    };

    LONG Dialog(SHORT mode);
    void SetFilterText(const std::wstring& text);
    void SetFilter(VARIANT& filter);
    std::wstring SelectFolder(const std::wstring& title);
    Variant Paths() const;
    size_t BufferUnits(SHORT mode) const;
    LONG TakeOne(const std::wstring& path, size_t nameOffset);
    LONG TakeSeveral(const std::wstring& buffer, size_t nameOffset);

    Properties properties_;
    std::vector<std::wstring> paths_; // of the last Dialog
    LONG errorCode_ = 0;
};

} // namespace quill
