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

#include <cstddef>
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
template <class Pointer, auto Close>
using Owned = std::unique_ptr<std::remove_pointer_t<Pointer>, Closer<Close>>;

// The same for functions that return INVALID_HANDLE_VALUE for "none".
template <auto Close>
class OwnedOrInvalid : public Owned<HANDLE, Close> {
public:
    OwnedOrInvalid(std::nullptr_t = nullptr) noexcept {}
    explicit OwnedOrInvalid(HANDLE handle) noexcept
        : Owned<HANDLE, Close>(handle == INVALID_HANDLE_VALUE ? nullptr : handle)
    {
    }
};

// Passes an owner to a function that hands out what is to be owned: RegOpenKeyExW(..., Into(key)).
template <class Owner>
class Into {
public:
    explicit Into(Owner& owner) noexcept : owner_(owner) {}
    ~Into() { owner_.reset(received_); }
    Into(const Into&) = delete;
    Into& operator=(const Into&) = delete;

    operator typename Owner::pointer *() noexcept { return &received_; }

private:
    Owner& owner_;
    typename Owner::pointer received_{};
};

using Bstr = Owned<BSTR, SysFreeString>;
using Handle = Owned<HANDLE, CloseHandle>;
using Event = Handle;
using FileHandle = OwnedOrInvalid<CloseHandle>;
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
