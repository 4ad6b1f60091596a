#include "dialogs/FileSelection.h"

#include <cderr.h>

#include <algorithm>

#include "core/Catalogue.h"
#include "core/Paths.h"
#include "core/Text.h"
#include "core/quillfn.h"
#include "dialogs/FileDialog.h"
#include "gui/DialogWatch.h"

namespace quill {

namespace {

constexpr PublishedError kInvalidDialogMode{ErrorNumber(0x80040353),
                                            L"Mode parameter: Invalid argument."};

constexpr size_t kPathUnits = 260; // room for one path, in UTF-16 units
// Spare room behind what the dialog knows of: not every implementation keeps to that.
constexpr size_t kSpareUnits = 65536;
constexpr LONG kCancelled = -1; // ErrorCode when the user chose nothing

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
    if (!InRange(mode, kOpen, kOpenSeveral)) {
        Refuse(kInvalidDialogMode);
        return 0;
    }
    const size_t units = BufferUnits(mode);
    if (properties_.fileName.size() > units) RaiseRuntimeError(RuntimeError::InvalidCall);
    std::wstring path = properties_.fileName;
    path.resize(units + kSpareUnits); // a name that fills its room still has an end
    std::wstring nameTitle(kPathUnits, L'\0');
    Properties shown = properties_;
    shown.filter.append(2, L'\0'); // ends a filter that was not ended
    if (IsDevice(shown.directory)) shown.directory.clear();
    // One that is longer than a path fits no name, and Wine's dialog overruns its buffer with it.
    if (shown.fileExtension.size() >= kPathUnits) shown.fileExtension.clear();
    const auto orNull = [](const std::wstring& text) {
        return text.empty() ? nullptr : text.c_str();
    };

    OPENFILENAMEW dialog{};
    dialog.lpstrFilter = properties_.filter.empty() ? nullptr : shown.filter.c_str();
    dialog.lpstrFile = path.data();
    dialog.nMaxFile = static_cast<DWORD>(units);
    dialog.lpstrFileTitle = nameTitle.data();
    dialog.nMaxFileTitle = kPathUnits;
    dialog.lpstrInitialDir = shown.directory.c_str();
    dialog.lpstrTitle = orNull(shown.dlgTitle);
    dialog.lpstrDefExt = orNull(shown.fileExtension);

    const DialogWatch watch(timeout_, [this] { return ClientsGone(); });
    const bool chosen = ShowFileDialog(dialog, static_cast<FileMode>(mode));
    outcome.ending = watch.EndingOr(chosen ? Ending::Accepted : Ending::Cancelled);
    if (outcome.ending == Ending::TimeOver) {
        errorCode_ = kCancelled;
        return 0;
    }
    if (!chosen) {
        const LONG code = FileDialogError();
        errorCode_ = code == 0 ? kCancelled : code;
        // The user has chosen, but more than there is room for.
        if (code == FNERR_BUFFERTOOSMALL) outcome.ending = watch.EndingOr(Ending::Accepted);
        if (code != 0 && code != FNERR_BUFFERTOOSMALL) outcome.ending = Ending::NotShown;
        return 0;
    }
    errorCode_ = 0;
    path.resize(units);
    const size_t offset = dialog.nFileOffset;
    if (mode == kOpenSeveral && offset > 0 && path[offset - 1] == L'\0')
        return TakeSeveral(path, offset);
    return TakeOne(path.c_str(), offset);
}

LONG FileSelection::TakeOne(const std::wstring& path, size_t nameOffset)
{
    properties_.directory = WithTrailingBackslash(path.substr(0, nameOffset));
    properties_.fileName = path.substr(std::min(nameOffset, path.size()));
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
    const auto count = std::count(properties_.fileName.begin(), properties_.fileName.end(), L'\0');
    if (properties_.convert) properties_.fileName = NulsToLineBreaks(properties_.fileName);
    return static_cast<LONG>(count);
}

} // namespace quill
