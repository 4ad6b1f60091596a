// The platform's headers, the compiled interface, and owners for what the platform hands out.
#pragma once

#include <windows.h>

// Two published names are taken by the platform: one by a macro, one by a function, which is looked
// up by name where it is used.
#undef MessageBox
#define TaskDialog PlatformTaskDialog
#include <commctrl.h>
#undef TaskDialog

#include <ocidl.h>
#include <olectl.h>
#include <shellapi.h>
#include <shlwapi.h>
#include <wrl/client.h>

#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "quill.h"

namespace quill {

using Microsoft::WRL::ComPtr;

// A handle that is closed by one platform function: an alias of unique_ptr, where null is "none".
template <auto Close>
struct Closer {
    template <class T>
    void operator()(T* handle) const noexcept
    {
        Close(handle);
    }
};
template <class Handle, auto Close>
using Owned = std::unique_ptr<std::remove_pointer_t<Handle>, Closer<Close>>;

using Bstr = Owned<BSTR, SysFreeString>;
using Event = Owned<HANDLE, CloseHandle>;
using FileHandle = Owned<HANDLE, CloseHandle>;
using Font = Owned<HFONT, DeleteObject>;
using RegistryKey = Owned<HKEY, RegCloseKey>;

// Memory that an automation call returned and CoTaskMemFree releases.
template <class T>
using TaskMemory = std::unique_ptr<T, Closer<CoTaskMemFree>>;

// A platform function looked up by name in a system library; null where this Windows lacks it.
// The library is loaded from the system folder and stays loaded.
template <class Function>
Function* FindSystemFunction(const wchar_t* library, const char* name) noexcept
{
    HMODULE module = GetModuleHandleW(library);
    if (!module) {
        wchar_t path[MAX_PATH];
        const UINT length = GetSystemDirectoryW(path, MAX_PATH);
        if (length == 0 || length + 1 + wcslen(library) >= MAX_PATH) return nullptr;
        module = LoadLibraryW(std::wstring(path, length).append(L"\\").append(library).c_str());
    }
    if (!module) return nullptr;
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

// Sets a flag for as long as it lives.
class FlagScope {
public:
    explicit FlagScope(bool& flag) noexcept : flag_(flag) { flag_ = true; }
    ~FlagScope() { flag_ = false; }
    FlagScope(const FlagScope&) = delete;
    FlagScope& operator=(const FlagScope&) = delete;

private:
    bool& flag_;
};

} // namespace quill
