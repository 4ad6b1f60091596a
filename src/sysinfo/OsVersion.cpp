#include "sysinfo/OsVersion.h"

#include "core/Apartment.h"
#include "core/Catalogue.h"

namespace quill {

namespace {

// True for a 32-bit process on a 64-bit system.
bool RunsUnderWow64() noexcept
{
    const auto isWow64Process =
        FindSystemFunction<decltype(IsWow64Process)>(L"kernel32.dll", "IsWow64Process");
    BOOL wow64 = FALSE;
    return isWow64Process && isWow64Process(GetCurrentProcess(), &wow64) && wow64;
}

} // namespace

CREATABLE(OsVersion)

OsVersion::OsVersion() noexcept
{
    OSVERSIONINFOEXW version;
    if (!ReadOsVersion(version) || version.dwPlatformId != VER_PLATFORM_WIN32_NT) return;
    version_ = version;
    bitness_ = RunsUnderWow64() ? 1 : 0;
    DWORD edition = 0;
    if (version.dwMajorVersion >= 6 &&
        GetProductInfo(version.dwMajorVersion, version.dwMinorVersion, version.wServicePackMajor,
                       version.wServicePackMinor, &edition))
        edition_ = static_cast<LONG>(edition);
}

SHORT OsVersion::Number()
{
    const int known = ThisApartment().osVersion;
    return static_cast<SHORT>(known != 0 ? known : QueryOsVersion());
}

} // namespace quill
