#include "core/Apartment.h"

#include <vector>

#include "core/AutomationError.h"

namespace quill {

namespace {

thread_local ApartmentRecord* recordOfThread = nullptr;

} // namespace

ApartmentRecord::ApartmentRecord(DWORD model) : osVersion(QueryOsVersion())
{
    InitCommonControls();
    INITCOMMONCONTROLSEX classes{sizeof classes, ICC_STANDARD_CLASSES | 0x1FF};
    InitCommonControlsEx(&classes);

    std::vector<wchar_t> path(4096);
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    programPath.assign(path.data(), length);
    Check(CoInitializeEx(nullptr, model));
    recordOfThread = this;
}

ApartmentRecord::~ApartmentRecord()
{
    CoUninitialize(); // releases objects, which look for their thread's record
    recordOfThread = nullptr;
}

ApartmentRecord& ThisApartment() noexcept
{
    return *recordOfThread;
}

bool ReadOsVersion(OSVERSIONINFOEXW& version) noexcept
{
    using RtlGetVersionFunction = LONG WINAPI(OSVERSIONINFOEXW*);
    static const auto rtlGetVersion =
        FindSystemFunction<RtlGetVersionFunction>(L"ntdll.dll", "RtlGetVersion");
    version = {};
    version.dwOSVersionInfoSize = sizeof version;
    static_assert(sizeof version == 284);
    return rtlGetVersion && rtlGetVersion(&version) == 0;
}

int QueryOsVersion() noexcept
{
    OSVERSIONINFOEXW version;
    if (!ReadOsVersion(version)) return 0;
    return static_cast<int>(version.dwMajorVersion * 100 + version.dwMinorVersion);
}

} // namespace quill
