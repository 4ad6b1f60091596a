#include "dialogs/FileDialog.h"

#include "core/Apartment.h"
#include "core/Paths.h"

namespace quill {

namespace {

constexpr DWORD kCommonFlags = OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_PATHMUSTEXIST |
                               OFN_NODEREFERENCELINKS | OFN_DONTADDTORECENT;

constexpr DWORD FlagsOf(FileMode mode)
{
    constexpr DWORD flags[] = {
        kCommonFlags | OFN_FILEMUSTEXIST,
        kCommonFlags | OFN_OVERWRITEPROMPT | OFN_NOREADONLYRETURN,
        kCommonFlags | OFN_FILEMUSTEXIST | OFN_ALLOWMULTISELECT | OFN_EXPLORER,
    };
    return flags[mode];
}
static_assert(FlagsOf(kOpen) == 0x0210180C && FlagsOf(kSave) == 0x0210880E &&
              FlagsOf(kOpenSeveral) == 0x02181A0C);

// The server's current directory. It belongs to the process, and the platform's dialogs to open
// change it; nothing else does, so what the first dialog of the process finds is right for all,
// however many are open at once.
const std::wstring& HomeFolder()
{
    static const std::wstring folder = CurrentFolder();
    return folder;
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

BOOL FileDialogs::Show(OPENFILENAMEW* dialog, bool save)
{
    return CommonDialog<decltype(GetOpenFileNameW)>(save ? "GetSaveFileNameW"
                                                         : "GetOpenFileNameW")(dialog);
}

bool ShowFileDialog(OPENFILENAMEW& dialog, FileMode mode)
{
    dialog.lStructSize = sizeof dialog;
    static_assert(sizeof dialog == 88);
    dialog.Flags = FlagsOf(mode);
    const std::wstring& home = HomeFolder(); // before the dialog changes it
    const BOOL chosen = Seam<FileDialogs>().show(&dialog, mode == kSave);
    SetCurrentDirectoryW(home.c_str());
    return chosen != FALSE;
}

LONG FileDialogError()
{
    return static_cast<LONG>(
        CommonDialog<decltype(CommDlgExtendedError)>("CommDlgExtendedError")());
}

bool IsDevice(const std::wstring& path)
{
    wchar_t full[MAX_PATH] = L"";
    GetFullPathNameW(path.c_str(), MAX_PATH, full, nullptr);
    return std::wstring_view(full).starts_with(L"\\\\.\\");
}

} // namespace quill
