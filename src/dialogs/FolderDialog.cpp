#include "dialogs/FolderDialog.h"

#include <shobjidl.h>

#include "core/AutomationError.h"

namespace quill {

namespace {

constexpr DWORD kOptions = FOS_PICKFOLDERS | FOS_FORCEFILESYSTEM | FOS_PATHMUSTEXIST |
                           FOS_NOCHANGEDIR | FOS_DONTADDTORECENT;

constexpr size_t kRootUnits = 3; // of a drive, as in C:\ (with its backslash)

ComPtr<IShellItem> FolderAt(const std::wstring& path)
{
    ComPtr<IShellItem> folder;
    if (!path.empty())
        SHCreateItemFromParsingName(path.c_str(), nullptr, IID_IShellItem,
                                    reinterpret_cast<void**>(folder.GetAddressOf()));
    return folder;
}

} // namespace

std::wstring ShowFolderDialog(const FolderRequest& request)
{
    ComPtr<IFileOpenDialog> dialog;
    Check(CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER, IID_IFileOpenDialog,
                           reinterpret_cast<void**>(dialog.GetAddressOf())));
    Check(dialog->SetOptions(kOptions));
    if (!request.title.empty()) Check(dialog->SetTitle(request.title.c_str()));
    if (const ComPtr<IShellItem> start = FolderAt(request.start)) dialog->SetFolder(start.Get());

    const HRESULT shown = dialog->Show(request.owner);
    if (shown == HRESULT_FROM_WIN32(ERROR_CANCELLED)) return {};
    Check(shown);
    ComPtr<IShellItem> chosen;
    Check(dialog->GetResult(chosen.GetAddressOf()));
    wchar_t* name = nullptr;
    Check(chosen->GetDisplayName(SIGDN_FILESYSPATH, &name));
    const TaskMemory<wchar_t> owned(name);
    std::wstring path = name;
    if (path.size() > kRootUnits && path.back() == L'\\') path.pop_back();
    return path;
}

} // namespace quill
