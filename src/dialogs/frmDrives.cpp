#include "dialogs/frmDrives.h"

#include <algorithm>
#include <mutex>

#include "core/Apartment.h"
#include "core/Paths.h"
#include "core/RunAside.h"
#include "core/quillfn.h"
#include "gui/windowfn.h"

namespace quill {

namespace {

constexpr TwipSize kDesignSize{3180, 2940};
constexpr float kClosedUpHeight = 2100; // without an info text
constexpr float kInfoWidth = 2535;
constexpr float kButtonsLeft = 240;
constexpr float kButtonsRight = 2640;

constexpr wchar_t kCaseBit = L'a' - L'A'; // by which the two cases of a letter differ

} // namespace

std::wstring NameOfDrive(const std::wstring& drive)
{
    const std::wstring root = drive + L"\\";
    if (GetDriveTypeW(root.c_str()) == DRIVE_REMOTE) {
        using GetConnection = DWORD WINAPI(LPCWSTR, LPWSTR, LPDWORD);
        wchar_t share[1024] = L"";
        DWORD size = 1024;
        const auto getConnection =
            FindSystemFunction<GetConnection>(L"mpr.dll", "WNetGetConnectionW");
        if (getConnection && getConnection(drive.c_str(), share, &size) == NO_ERROR) return share;
    }
    wchar_t label[MAX_PATH + 1] = L"";
    GetVolumeInformationW(root.c_str(), label, MAX_PATH + 1, nullptr, nullptr, nullptr, nullptr, 0);
    return label;
}

// Where the threads that ask the drives leave what they learn. They may outlive the form: a drive
// that does not answer holds up nobody.
struct frmDrives::Names {
    std::mutex mutex;
    HWND form; // null once the form is gone
    std::vector<std::wstring> names;
};

frmDrives::frmDrives(DialogRequest request)
    : DialogForm({L"QUILL DriveList", kDesignSize, kDialogStyle, kInfoWidth}, std::move(request))
{
}

frmDrives::~frmDrives()
{
    if (!names_) return;
    const std::lock_guard lock(names_->mutex);
    names_->form = nullptr;
}

std::wstring frmDrives::List(const std::wstring& drive, const std::wstring& title)
{
    const DWORD drives = GetLogicalDrives();
    const std::wstring current = CurrentFolder();
    int selected = -1;
    for (int letter = 0; letter < 26; ++letter) {
        if (!(drives & 1U << letter)) continue;
        const auto name = static_cast<wchar_t>(L'A' + letter);
        const auto begins = [name](const std::wstring& path) {
            return (path[0] | kCaseBit) == (name | kCaseBit); // an empty one begins with a NUL
        };
        if (begins(drive) || (selected < 0 && begins(current)))
            selected = static_cast<int>(entries_.size());
        entries_.push_back({name, L':'});
        lstDrives.Add(entries_.back());
    }
    lstDrives.Select(selected);
    AskForNames();
    Prepare(title);
    const bool closedUp = InfoHeight() == 0;
    if (closedUp) lstDrives.SetAccessibleName(WindowText(Window()));
    PlaceAtCentre({kDesignSize.width + Widening(),
                   closedUp ? kClosedUpHeight : kDesignSize.height + InfoSurplus()});
    Ask();
    return std::move(result_);
}

// Asks each drive on a thread of its own, so that slow ones do not hold up the others. When too
// many threads hang already, a drive stays without its name.
void frmDrives::AskForNames()
{
    names_ = std::make_shared<Names>();
    names_->form = Window();
    names_->names.resize(entries_.size());
    for (size_t index = 0; index < entries_.size(); ++index) {
        RunAside([nameOf = Seam<DriveFunctions>().nameOf, names = names_, drive = entries_[index],
                  index] {
            const std::wstring name = nameOf(drive);
            const std::lock_guard lock(names->mutex);
            names->names[index] = name;
            if (names->form && !name.empty()) PostTo(names->form, index);
        });
    }
}

void frmDrives::OnPosted(WPARAM index)
{
    if (index >= entries_.size()) return;
    {
        const std::lock_guard lock(names_->mutex);
        entries_[index].resize(2);
        entries_[index] += L" [" + names_->names[index] + L"]";
    }
    lstDrives.Replace(static_cast<int>(index), entries_[index]);
}

bool frmDrives::OnAccept()
{
    const int selected = lstDrives.Selected();
    if (selected >= 0) result_ = entries_[static_cast<size_t>(selected)];
    return true;
}

void frmDrives::OnActivate()
{
    OKButton.Focus();
}

// Esc closes an open list first.
bool frmDrives::OnPreview(const MSG& message)
{
    return !lstDrives.DroppedDown() && DialogForm::OnPreview(message);
}

float frmDrives::Widening() const
{
    return WidthSurplus(kButtonsRight - kButtonsLeft);
}

void frmDrives::OnResize(TwipSize)
{
    const bool closedUp = InfoHeight() == 0;
    const float wider = Widening();
    lblText.Move({240, 120, kInfoWidth + wider, InfoHeight()});
    lstDrives.Move(
        {240, closedUp ? 315 : 1160 + InfoSurplus(), 2600 + wider, lstDrives.Place().height});
    PlaceButtons({kButtonsRight + wider - ButtonWidth(), closedUp ? 1080 : 1920 + InfoSurplus(),
                  ButtonWidth(), kButtonHeight});
}

} // namespace quill
