#include "dialogs/FileSelection.h"

#include <cderr.h>

#include "core/Apartment.h"
#include "core/Catalogue.h"
#include "core/Text.h"
#include "core/quillfn.h"
#include "gui/DialogWatch.h"

namespace quill {

namespace {

constexpr PublishedError kInvalidDialogMode{ErrorNumber(0x80040353),
                                            L"Mode parameter: Invalid argument."};

constexpr size_t kPathUnits = 260; // room for one path, in UTF-16 units
// Behind the room that the dialog is told of: not every implementation keeps to it.
constexpr size_t kSpareUnits = 65536;
constexpr LONG kCancelled = -1; // ErrorCode when the user chose nothing

constexpr DWORD kCommonFlags = OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_PATHMUSTEXIST |
                               OFN_NODEREFERENCELINKS | OFN_DONTADDTORECENT;

constexpr DWORD FlagsOf(SHORT mode)
{
    constexpr DWORD flags[] = {
        kCommonFlags | OFN_FILEMUSTEXIST,
        kCommonFlags | OFN_OVERWRITEPROMPT | OFN_NOREADONLYRETURN,
        kCommonFlags | OFN_FILEMUSTEXIST | OFN_ALLOWMULTISELECT | OFN_EXPLORER,
    };
    return flags[mode];
}
static_assert(FlagsOf(0) == 0x0210180C && FlagsOf(1) == 0x0210880E && FlagsOf(2) == 0x02181A0C);

// The server's current directory. It belongs to the process, and the platform's dialogs to open
// change it; nothing else does, so what the first dialog of the process finds is right for all,
// however many are open at once.
const std::wstring& HomeFolder()
{
    static const std::wstring folder = CurrentFolder();
    return folder;
}

// True for what the platform takes for a device wherever it stands, such as "CON". Not every
// implementation of the dialogs survives one as its folder.
bool IsDevice(const std::wstring& path)
{
    wchar_t full[kPathUnits] = L"";
    GetFullPathNameW(path.c_str(), kPathUnits, full, nullptr);
    return std::wstring_view(full).starts_with(L"\\\\.\\");
}

// A function of the common dialogs. Their library is large, and most scripts do without it.
template <class Function>
Function* CommonDialog(const char* name)
{
    Function* function = FindSystemFunction<Function>(L"comdlg32.dll", name);
    if (!function) RaiseRuntimeError(RuntimeError::EntryPointNotFound);
    return function;
}

} // namespace

CREATABLE(FileSelection)

BOOL ShowFileDialog(OPENFILENAMEW* dialog, bool save)
{
    return CommonDialog<decltype(GetOpenFileNameW)>(save ? "GetSaveFileNameW"
                                                         : "GetOpenFileNameW")(dialog);
}

void FileSelection::SetFilterText(const std::wstring& text)
{
    filter_ = convert_ ? LineBreaksToNuls(text) + L'\0' : text;
}

void FileSelection::SetFilter(VARIANT& filter)
{
    const SAFEARRAY* array = ArrayOf(filter);
    if (array && SafeArrayGetDim(const_cast<SAFEARRAY*>(array)) == 1 &&
        array->rgsabound[0].cElements > 0) {
        std::wstring list;
        for (const Variant& element : ElementsOf(*array, SIZE_MAX))
            list.append(ToText(element)).push_back(L'\0');
        filter_ = list + L'\0';
        return;
    }
    const Variant text = Variant::Dereferenced(filter);
    if (V_VT(&text) == VT_BSTR) SetFilterText(ToText(text));
}

// Room for what can be chosen.
size_t FileSelection::BufferUnits(SHORT mode) const
{
    if (mode != kOpenSeveral) return kPathUnits;
    const LONG names = fileNumber_ < 2 ? 20 : std::min(fileNumber_, 128L);
    return static_cast<size_t>(names) * kPathUnits;
}

LONG FileSelection::Dialog(SHORT mode)
{
    if (!InRange(mode, kOpen, kOpenSeveral)) {
        RaiseUnlessQuiet(kInvalidDialogMode);
        return 0;
    }
    const size_t units = BufferUnits(mode);
    if (fileName_.size() > units) RaiseRuntimeError(RuntimeError::InvalidCall);
    std::wstring path = fileName_;
    path.resize(units + kSpareUnits); // a name that fills its room still has an end
    std::wstring nameTitle(kPathUnits, L'\0');
    // Calls that come in while the dialog is open may change the properties. A filter that was not
    // ended is ended here.
    const std::wstring filter = filter_ + std::wstring(2, L'\0');
    const std::wstring directory = IsDevice(directory_) ? L"" : directory_;
    // One that is longer than a path fits no name, and Wine's dialog overruns its buffer with it.
    const std::wstring extension = fileExtension_.size() < kPathUnits ? fileExtension_ : L"";
    const std::wstring title = dlgTitle_;

    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    static_assert(sizeof dialog == 88);
    dialog.lpstrFilter = filter_.empty() ? nullptr : filter.c_str();
    dialog.lpstrFile = path.data();
    dialog.nMaxFile = static_cast<DWORD>(units);
    dialog.lpstrFileTitle = nameTitle.data();
    dialog.nMaxFileTitle = kPathUnits;
    dialog.lpstrInitialDir = directory.c_str();
    dialog.lpstrTitle = title.empty() ? nullptr : title.c_str();
    dialog.Flags = FlagsOf(mode);
    dialog.lpstrDefExt = extension.empty() ? nullptr : extension.c_str();

    const DialogWatch company([this] { return ClientsGone(); });
    const std::wstring& home = HomeFolder(); // before the dialog changes it
    const BOOL chosen = Seam<FileDialogs>().show(&dialog, mode == kSave);
    SetCurrentDirectoryW(home.c_str());
    if (!chosen) {
        const auto code = static_cast<LONG>(
            CommonDialog<decltype(CommDlgExtendedError)>("CommDlgExtendedError")());
        errorCode_ = code == 0 ? kCancelled : code;
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
    directory_ = WithTrailingBackslash(path.substr(0, nameOffset));
    fileName_ = path.substr(std::min(nameOffset, path.size()));
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
    directory_ = WithTrailingBackslash(buffer.substr(0, nameOffset - 1));
    fileName_ = buffer.substr(nameOffset, end + 1 - nameOffset);
    const auto count = std::count(fileName_.begin(), fileName_.end(), L'\0');
    if (convert_) fileName_ = NulsToLineBreaks(fileName_);
    return static_cast<LONG>(count);
}

} // namespace quill
