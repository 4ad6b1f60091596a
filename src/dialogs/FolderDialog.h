// The system's dialog that chooses a folder.
#pragma once

#include <functional>
#include <string>

#include "core/Platform.h"

namespace quill {

struct FolderRequest {
    HWND owner = nullptr; // disabled meanwhile; null: none
    std::wstring start;   // the folder shown first; one that is not there counts as none
    std::wstring title;   // the caption; empty: the system's own
};

// Shows the dialog (IFileOpenDialog, which waits in a loop of its own: a DialogWatch around the
// call brings it to the front and ends it in time). Returns the full path without a backslash at
// its end, which only a root keeps; empty when the user cancelled. Throws AutomationError where
// the platform fails.
std::wstring ShowFolderDialog(const FolderRequest& request);

// A seam: the platform's dialog.
struct FolderDialogs {
    std::function<std::wstring(const FolderRequest&)> show = ShowFolderDialog;
};

} // namespace quill
