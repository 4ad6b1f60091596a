#include "dialogs/DriveList.h"

#include "core/Catalogue.h"
#include "core/Paths.h"
#include "core/Text.h"
#include "dialogs/frmDrives.h"

namespace quill {

namespace {

// A letter and a colon.
constexpr size_t kDriveLength = 2;

// The drive of a path; where that does not exist, the one of the current directory.
std::wstring DriveOf(const std::wstring& path)
{
    if (!path.empty()) {
        std::wstring drive = path.substr(0, 1) + L":";
        if (GetDriveTypeA(ToAnsi(drive).c_str()) != DRIVE_NO_ROOT_DIR) return drive;
    }
    return CurrentFolder().substr(0, kDriveLength);
}

} // namespace

CREATABLE(DriveList)

std::wstring DriveList::Selection(const std::wstring& preselected, const std::wstring& title)
{
    Showing showing(*this);
    if (open_) return {};
    const FlagScope open(open_);
    std::wstring chosen = frmDrives(showing.Request()).List(DriveOf(preselected), title);
    if (crop_ && chosen.size() > kDriveLength) chosen.resize(kDriveLength);
    return chosen;
}

} // namespace quill
