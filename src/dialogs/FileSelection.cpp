#include "dialogs/FileSelection.h"

#include <cderr.h>

#include <algorithm>

#include "core/Apartment.h"
#include "core/Catalogue.h"
#include "core/Paths.h"
#include "core/Text.h"
#include "core/quillfn.h"
#include "dialogs/FileDialog.h"
#include "dialogs/FolderDialog.h"
#include "gui/DialogWatch.h"

namespace quill {

namespace {

constexpr PublishedError kInvalidDialogMode{ErrorNumber(0x80040353),
                                            L"Mode parameter: Invalid argument."};

constexpr size_t kPathUnits = 260; // room for one path, in UTF-16 units
// Spare room behind what the dialog knows of: not every implementation keeps to that.
constexpr size_t kSpareUnits = 65536;
constexpr LONG kCancelled = -1; // ErrorCode when the user chose nothing

// How many filters a list has, of which each is two texts that end with NUL; at least 1. One that
// is beyond the last makes the dialog show no file.
LONG FiltersIn(const std::wstring& list)
{
    const size_t end = std::min(list.find(std::wstring(2, L'\0')), list.size());
    const auto texts =
        std::count(list.begin(), list.begin() + static_cast<ptrdiff_t>(end), L'\0') + 1;
    return std::max<LONG>(1, static_cast<LONG>(texts / 2));
}

} // namespace

CREATABLE(FileSelection)

void FileSelection::SetFilterText(const std::wstring& text)
{
    properties_.filter = properties_.convert ? LineBreaksToNuls(text) + L'\0' : text;
}

void FileSelection::SetFilter(VARIANT& filter)
{
    const SAFEARRAY* array = ArrayOf(filter);
    if (array && SafeArrayGetDim(const_cast<SAFEARRAY*>(array)) == 1 &&
        array->rgsabound[0].cElements > 0) {
        std::wstring list;
        for (const Variant& element : ElementsOf(*array, SIZE_MAX))
            list.append(ToText(element)).push_back(L'\0');
        properties_.filter = list + L'\0';
        return;
    }
    const Variant text = Variant::Dereferenced(filter);
    if (V_VT(&text) == VT_BSTR) SetFilterText(ToText(text));
}

// Room for what can be chosen.
size_t FileSelection::BufferUnits(SHORT mode) const
{
    if (mode != kOpenSeveral) return kPathUnits;
    const LONG names = properties_.fileNumber < 2 ? 20 : std::min(properties_.fileNumber, 128L);
    return static_cast<size_t>(names) * kPathUnits;
}

LONG FileSelection::Dialog(SHORT mode)
{
    OutcomeScope outcome(ending_);
    paths_.clear();
    if (!InRange(mode, kOpen, kOpenSeveral)) {
        Refuse(kInvalidDialogMode);
        return 0;
    }
    const size_t units = BufferUnits(mode);
    if (properties_.fileName.size() > units) RaiseRuntimeError(RuntimeError::InvalidCall);
    std::wstring path = properties_.fileName;
    path.resize(units + kSpareUnits); // so that a name that fills its room is still terminated
    std::wstring nameTitle(kPathUnits, L'\0');
    Properties shown = properties_;
    shown.filter.append(2, L'\0'); // terminates a filter that was not
    if (IsDevice(shown.directory)) shown.directory.clear();
    // One that is longer than a path fits no name, and Wine's dialog overruns its buffer with it.
    if (shown.fileExtension.size() >= kPathUnits) shown.fileExtension.clear();
    const auto orNull = [](const std::wstring& text) {
        return text.empty() ? nullptr : text.c_str();
    };

    OPENFILENAMEW dialog{};
    dialog.lpstrFilter = properties_.filter.empty() ? nullptr : shown.filter.c_str();
    dialog.nFilterIndex =
        static_cast<DWORD>(std::min(shown.filterIndex, FiltersIn(properties_.filter)));
    dialog.lpstrFile = path.data();
    dialog.nMaxFile = static_cast<DWORD>(units);
    dialog.lpstrFileTitle = nameTitle.data();
    dialog.nMaxFileTitle = kPathUnits;
    dialog.lpstrInitialDir = shown.directory.c_str();
    dialog.lpstrTitle = orNull(shown.dlgTitle);
    dialog.lpstrDefExt = orNull(shown.fileExtension);

    const DialogWatch watch(timeout_, [this] { return ClientsGone(); });
    const bool chosen = ShowFileDialog(dialog, static_cast<FileMode>(mode));
    paths_.clear(); // a call that came in meanwhile may have brought some
    outcome.ending = watch.EndingOr(chosen ? Ending::Accepted : Ending::Cancelled);
    if (outcome.ending == Ending::TimeOver) {
        errorCode_ = kCancelled;
        return 0;
    }
    if (!chosen) {
        const LONG code = FileDialogError();
        errorCode_ = code == 0 ? kCancelled : code;
        // The user has chosen more than there is room for.
        if (code == FNERR_BUFFERTOOSMALL) outcome.ending = watch.EndingOr(Ending::Accepted);
        if (code != 0 && code != FNERR_BUFFERTOOSMALL) outcome.ending = Ending::NotShown;
        return 0;
    }
    errorCode_ = 0;
    if (dialog.lpstrFilter && dialog.nFilterIndex > 0)
        properties_.filterIndex = static_cast<LONG>(dialog.nFilterIndex);
    path.resize(units);
    const size_t offset = dialog.nFileOffset;
    if (mode == kOpenSeveral && offset > 0 && path[offset - 1] == L'\0')
        return TakeSeveral(path, offset);
    return TakeOne(path.c_str(), offset);
}

std::wstring FileSelection::SelectFolder(const std::wstring& title)
{
    OutcomeScope outcome(ending_);
    FolderRequest request;
    request.start = properties_.directory;
    request.title = title.empty() ? properties_.dlgTitle : title;
    const DialogWatch watch(timeout_, [this] { return ClientsGone(); });
    const std::wstring folder = Seam<FolderDialogs>().show(request);
    outcome.ending = watch.EndingOr(folder.empty() ? Ending::Cancelled : Ending::Accepted);
    const bool chosen = outcome.ending == Ending::Accepted;
    errorCode_ = chosen ? 0 : kCancelled;
    return chosen ? folder : std::wstring();
}

LONG FileSelection::TakeOne(const std::wstring& path, size_t nameOffset)
{
    properties_.directory = WithTrailingBackslash(path.substr(0, nameOffset));
    properties_.fileName = path.substr(std::min(nameOffset, path.size()));
    paths_ = {path};
    return 1;
}

// The folder, a NUL, the names with a NUL after each, and one more NUL. A list that does not end
// was cut, whatever the dialog says.
LONG FileSelection::TakeSeveral(const std::wstring& buffer, size_t nameOffset)
{
    const size_t end = buffer.find(std::wstring(2, L'\0'), nameOffset);
    if (end == std::wstring::npos) {
        errorCode_ = FNERR_BUFFERTOOSMALL;
        return 0;
    }
    properties_.directory = WithTrailingBackslash(buffer.substr(0, nameOffset - 1));
    properties_.fileName = buffer.substr(nameOffset, end + 1 - nameOffset);
    for (size_t from = nameOffset; from <= end;) {
        const std::wstring name = buffer.c_str() + from;
        paths_.push_back(CombinePath(properties_.directory, name));
        from += name.size() + 1;
    }
    if (properties_.convert) properties_.fileName = NulsToLineBreaks(properties_.fileName);
    return static_cast<LONG>(paths_.size());
}

Variant FileSelection::Paths() const
{
    return MakeStringArray(paths_, true);
}

} // namespace quill
