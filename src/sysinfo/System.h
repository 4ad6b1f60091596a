// Quill.System: the computer, as the platform describes it.
#pragma once

#include "core/Automation.h"

#include <lm.h>

namespace quill {

// Each member is one question to the platform. Raises no errors: without an answer, a member is 0
// or an empty string.
class System final : public Automation<_System> {
public:
    System() noexcept { GetNativeSystemInfo(&processor_); }

    COMPUTED_PROPERTY(BSTR, UserName)
    METHOD(BSTR, ComputerName, (ComputerNameFormat f), f)
    COMPUTED_PROPERTY(BSTR, NetworkName)
    COMPUTED_PROPERTY(LONG, NetworkType)
    READ_ONLY_PROPERTY(LONG, ProcessorArchitecture,
                       LONG{static_cast<SHORT>(processor_.wProcessorArchitecture)})
    READ_ONLY_PROPERTY(LONG, ProcessorInfo, static_cast<LONG>(processor_.dwProcessorType))
    STDMETHODIMP GetMetrics(LONG n, LONG* result) noexcept override
    {
        return Get(result, static_cast<LONG>(GetSystemMetrics(n)));
    }
    METHOD(LONG, VolumeGetSN, (BSTR drv), drv)
    METHOD(BSTR, VolumeGetName, (BSTR drv), drv)
    METHOD(BSTR, VolumeGetFileSys, (BSTR drv), drv)
    METHOD(BSTR, VolumeGetGUID, (BSTR drv), drv)
    READ_ONLY_PROPERTY(LONG, CurrentCodePage, static_cast<LONG>(GetACP()))
    METHOD(SHORT, BiosMode, (SHORT fAlt), fAlt)

private:
    static std::wstring UserName();
    static std::wstring ComputerName(LONG format);
    static std::wstring NetworkName();
    static LONG NetworkType();
    static LONG VolumeGetSN(const std::wstring& drive);
    static std::wstring VolumeGetName(const std::wstring& drive);
    static std::wstring VolumeGetFileSys(const std::wstring& drive);
    static std::wstring VolumeGetGUID(const std::wstring& drive);
    static SHORT BiosMode(SHORT alternative);

    SYSTEM_INFO processor_{};
};

// A seam: what not every Windows has, or not every computer answers; null where it is missing.
struct MachineFunctions {
    decltype(&NetGetJoinInformation) getJoinInformation =
        FindSystemFunction<decltype(NetGetJoinInformation)>(L"netapi32.dll",
                                                            "NetGetJoinInformation");
    decltype(&NetApiBufferFree) freeBuffer =
        FindSystemFunction<decltype(NetApiBufferFree)>(L"netapi32.dll", "NetApiBufferFree");
    decltype(&GetFirmwareType) getFirmwareType =
        FindSystemFunction<decltype(GetFirmwareType)>(L"kernel32.dll", "GetFirmwareType");
    decltype(&GetFirmwareEnvironmentVariableW) getFirmwareVariable =
        GetFirmwareEnvironmentVariableW;
};

} // namespace quill
