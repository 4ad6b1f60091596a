#include "sysinfo/System.h"

#include "core/Apartment.h"
#include "core/Catalogue.h"
#include "core/Paths.h"
#include "core/quillfn.h"

namespace quill {

namespace {

// Buffer sizes, in UTF-16 units.
constexpr DWORD kUserNameSize = 257;
constexpr DWORD kVolumeNameSize = 4096;
constexpr DWORD kFileSystemSize = 128;
constexpr DWORD kVolumeGuidSize = 128;
constexpr DWORD kFirmwareSize = 1024;

struct Network {
    LONG type = 0;
    std::wstring name;
};

Network QueryNetwork()
{
    const MachineFunctions& machine = Seam<MachineFunctions>();
    if (!machine.getJoinInformation || !machine.freeBuffer) return {};
    wchar_t* name = nullptr;
    NETSETUP_JOIN_STATUS type = NetSetupUnknownStatus;
    if (machine.getJoinInformation(nullptr, &name, &type) != NERR_Success) return {};
    const std::unique_ptr<wchar_t, decltype(machine.freeBuffer)> owned(name, machine.freeBuffer);
    return {static_cast<LONG>(type), name ? name : L""};
}

struct Volume {
    DWORD serial = 0;
    std::wstring name;
    std::wstring fileSystem;
};

// An empty drive is the one of the current directory.
Volume QueryVolume(const std::wstring& drive)
{
    const std::wstring root = WithTrailingBackslash(drive);
    std::wstring name(kVolumeNameSize, L'\0');
    std::wstring fileSystem(kFileSystemSize, L'\0');
    DWORD serial = 0;
    DWORD longestName = 0;
    DWORD flags = 0;
    if (!GetVolumeInformationW(root.empty() ? nullptr : root.c_str(), name.data(), kVolumeNameSize,
                               &serial, &longestName, &flags, fileSystem.data(), kFileSystemSize))
        return {};
    return {serial, name.c_str(), fileSystem.c_str()};
}

// The current drive's root; other things for a current directory on the network.
std::wstring CurrentRoot()
{
    return CurrentFolder().substr(0, 3);
}

} // namespace

CREATABLE(System)

std::wstring System::UserName()
{
    std::wstring name(kUserNameSize, L'\0');
    DWORD size = kUserNameSize;
    if (!GetUserNameW(name.data(), &size) || size == 0) return {};
    name.resize(size - 1);
    return name;
}

std::wstring System::ComputerName(LONG format)
{
    const auto kind = static_cast<COMPUTER_NAME_FORMAT>(format);
    DWORD size = 0;
    GetComputerNameExW(kind, nullptr, &size);
    if (size == 0) return {};
    std::wstring name(size, L'\0');
    if (!GetComputerNameExW(kind, name.data(), &size)) return {};
    name.resize(size);
    return name;
}

std::wstring System::NetworkName()
{
    return QueryNetwork().name;
}

LONG System::NetworkType()
{
    return QueryNetwork().type;
}

LONG System::VolumeGetSN(const std::wstring& drive)
{
    return static_cast<LONG>(QueryVolume(drive).serial);
}

std::wstring System::VolumeGetName(const std::wstring& drive)
{
    return QueryVolume(drive).name;
}

std::wstring System::VolumeGetFileSys(const std::wstring& drive)
{
    return QueryVolume(drive).fileSystem;
}

std::wstring System::VolumeGetGUID(const std::wstring& drive)
{
    const std::wstring mountPoint = drive.empty() ? CurrentRoot() : WithTrailingBackslash(drive);
    std::wstring guid(kVolumeGuidSize, L'\0');
    if (!GetVolumeNameForVolumeMountPointW(mountPoint.c_str(), guid.data(), kVolumeGuidSize))
        return {};
    return guid.c_str();
}

SHORT System::BiosMode(SHORT alternative)
{
    const MachineFunctions& machine = Seam<MachineFunctions>();
    if (alternative == 0) {
        FIRMWARE_TYPE type = FirmwareTypeUnknown;
        if (!machine.getFirmwareType || !machine.getFirmwareType(&type)) return 0;
        return static_cast<SHORT>(type);
    }
    if (!machine.getFirmwareVariable) return 0;
    // There is no such variable; the reason of the failure shows what the system was started by.
    wchar_t value[kFirmwareSize];
    SetLastError(ERROR_SUCCESS);
    machine.getFirmwareVariable(L"", L"{00000000-0000-0000-0000-000000000000}", value,
                                sizeof value);
    return GetLastError() == ERROR_INVALID_FUNCTION ? 1 : 2;
}

} // namespace quill
