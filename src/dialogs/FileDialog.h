// The system's dialogs that open and save files (GetOpenFileName, GetSaveFileName).
#pragma once

#include <functional>
#include <string>

#include "core/Platform.h"

#include <commdlg.h> // needs the platform's main header before it

namespace quill {

// As FileSelection numbers them.
enum FileMode : SHORT { kOpen, kSave, kOpenSeveral };

// Shows the dialog of this mode, with its flags; all other members are the caller's. The dialog
// waits in a loop of its own: a DialogWatch around the call brings it to the front and ends it in
// time. False when nothing was chosen: FileDialogError says why. Raises an error where the
// platform has no such dialogs.
bool ShowFileDialog(OPENFILENAMEW& dialog, FileMode mode);

// 0: the user has cancelled. Otherwise an error of CommDlgExtendedError.
LONG FileDialogError();

// True for what the platform takes for a device wherever it stands, such as "CON". Not every
// implementation of the dialogs survives one as its folder.
bool IsDevice(const std::wstring& path);

// A seam: the platform's dialogs, to save one file or to open files.
struct FileDialogs {
    static BOOL Show(OPENFILENAMEW* dialog, bool save);
    std::function<BOOL(OPENFILENAMEW* dialog, bool save)> show = Show;
};

} // namespace quill
