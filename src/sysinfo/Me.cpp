#include "sysinfo/Me.h"

#include <tlhelp32.h>

#include <vector>

#include "core/Apartment.h"
#include "core/Catalogue.h"
#include "core/Paths.h"

namespace quill {

namespace {

// The version resource of the server's own program.
class VersionResource {
public:
    VersionResource()
    {
        const auto sizeOf = FindSystemFunction<decltype(GetFileVersionInfoSizeW)>(
            L"version.dll", "GetFileVersionInfoSizeW");
        const auto read = FindSystemFunction<decltype(GetFileVersionInfoW)>(L"version.dll",
                                                                            "GetFileVersionInfoW");
        query_ = FindSystemFunction<decltype(VerQueryValueW)>(L"version.dll", "VerQueryValueW");
        if (!sizeOf || !read || !query_) return;
        const wchar_t* program = ThisApartment().programPath.c_str();
        block_.resize(sizeOf(program, nullptr));
        if (!read(program, 0, static_cast<DWORD>(block_.size()), block_.data())) block_.clear();
    }

    std::wstring Text(const std::wstring& name) const
    {
        UINT length = 0;
        const auto* text =
            static_cast<const wchar_t*>(Find(L"\\StringFileInfo\\040904B0\\" + name, length));
        return text ? text : L"";
    }
    VS_FIXEDFILEINFO Numbers() const
    {
        UINT size = 0;
        const auto* numbers = static_cast<const VS_FIXEDFILEINFO*>(Find(L"\\", size));
        return numbers && size >= sizeof *numbers ? *numbers : VS_FIXEDFILEINFO{};
    }

private:
    const void* Find(const std::wstring& path, UINT& size) const
    {
        void* found = nullptr;
        if (block_.empty() || !query_(block_.data(), path.c_str(), &found, &size)) return nullptr;
        return found;
    }

    decltype(VerQueryValueW)* query_ = nullptr;
    std::vector<BYTE> block_;
};

// Of the thread that runs main, which initialises this; objects live on others.
const DWORD kMainThread = GetCurrentThreadId();

} // namespace

CREATABLE(Me)

std::wstring Me::About()
{
    const VersionResource version;
    return version.Text(L"FileDescription") + L" by " + version.Text(L"CompanyName") + L' ' +
           version.Text(L"LegalCopyright");
}

LONG Me::hInstance()
{
    return static_cast<LONG>(reinterpret_cast<LONG_PTR>(GetModuleHandleW(nullptr)));
}

std::wstring Me::Path()
{
    return FolderOf(ThisApartment().programPath);
}

std::wstring Me::Version()
{
    const DWORD version = VersionResource().Numbers().dwFileVersionMS;
    return std::to_wstring(HIWORD(version)) + L'.' + std::to_wstring(LOWORD(version));
}

std::wstring Me::FullVersion()
{
    const VS_FIXEDFILEINFO numbers = VersionResource().Numbers();
    return std::to_wstring(HIWORD(numbers.dwFileVersionMS)) + L'.' +
           std::to_wstring(LOWORD(numbers.dwFileVersionMS)) + L'.' +
           std::to_wstring(HIWORD(numbers.dwFileVersionLS));
}

// A service and a task without a user have a window station that nobody sees.
bool Me::Interactive()
{
    USEROBJECTFLAGS station{};
    return GetUserObjectInformationW(Seam<StationFunctions>().current(), UOI_FLAGS, &station,
                                     sizeof station, nullptr) &&
           (station.dwFlags & WSF_VISIBLE);
}

LONG Me::ThreadID()
{
    return static_cast<LONG>(kMainThread);
}

LONG Me::ParentProcessID()
{
    const OwnedOrInvalid<CloseHandle> taken(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    const HANDLE snapshot = taken.get();
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    const DWORD self = GetCurrentProcessId();
    BOOL more = snapshot && Process32FirstW(snapshot, &entry);
    while (more && entry.th32ProcessID != self)
        more = Process32NextW(snapshot, &entry);
    return more ? static_cast<LONG>(entry.th32ParentProcessID) : 0;
}

LONG Me::CallerTID()
{
    DWORD thread = 0;
    // S_FALSE: the caller is in another process.
    return SUCCEEDED(Seam<CallerFunctions>().getThread(&thread)) ? static_cast<LONG>(thread) : 0;
}

} // namespace quill
