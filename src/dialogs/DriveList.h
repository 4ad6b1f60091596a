// Quill.DriveList: lets the user choose a drive.
#pragma once

#include "dialogs/Dialog.h"

namespace quill {

// Raises no errors of its own. While a dialog of an object is open, its Selection returns "".
class DriveList final : public WithFonts<Dialog<_DriveList, 128>> {
public:
    STORED_PROPERTY(VARIANT_BOOL, Crop, crop_)
    METHOD(BSTR, Selection, (BSTR Default, BSTR Title), Default, Title)

private:
    std::wstring Selection(const std::wstring& preselected, const std::wstring& title);

    bool crop_ = false;
    bool open_ = false;
};

} // namespace quill
