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

    STDMETHODIMP get_UserName(BSTR* value) noexcept override
    {
        return Call(value, &System::NameOfUser);
    }
    STDMETHODIMP ComputerName(ComputerNameFormat f, BSTR* result) noexcept override
    {
        return Call(result, &System::NameOfComputer, f);
    }
    STDMETHODIMP get_NetworkName(BSTR* value) noexcept override
    {
        return Call(value, &System::NameOfNetwork);
    }
    STDMETHODIMP get_NetworkType(LONG* value) noexcept override
    {
        return Call(value, &System::TypeOfNetwork);
    }
    STDMETHODIMP get_ProcessorArchitecture(LONG* value) noexcept override
    {
        return Get(value, LONG{static_cast<SHORT>(processor_.wProcessorArchitecture)});
    }
    STDMETHODIMP get_ProcessorInfo(LONG* value) noexcept override
    {
        return Get(value, static_cast<LONG>(processor_.dwProcessorType));
    }
    STDMETHODIMP GetMetrics(LONG n, LONG* result) noexcept override
    {
        return Get(result, static_cast<LONG>(GetSystemMetrics(n)));
    }
    STDMETHODIMP VolumeGetSN(BSTR drv, LONG* result) noexcept override
    {
        return Call(result, &System::SerialOfVolume, drv);
    }
    STDMETHODIMP VolumeGetName(BSTR drv, BSTR* result) noexcept override
    {
        return Call(result, &System::NameOfVolume, drv);
    }
    STDMETHODIMP VolumeGetFileSys(BSTR drv, BSTR* result) noexcept override
    {
        return Call(result, &System::FileSystemOfVolume, drv);
    }
    STDMETHODIMP VolumeGetGUID(BSTR drv, BSTR* result) noexcept override
    {
        return Call(result, &System::GuidOfVolume, drv);
    }
    STDMETHODIMP get_CurrentCodePage(LONG* value) noexcept override
    {
        return Get(value, static_cast<LONG>(GetACP()));
    }
    STDMETHODIMP BiosMode(SHORT fAlt, SHORT* result) noexcept override
    {
        return Call(result, &System::ModeOfBios, fAlt);
    }

private:
    static std::wstring NameOfUser();
    static std::wstring NameOfComputer(LONG format);
    static std::wstring NameOfNetwork();
    static LONG TypeOfNetwork();
    static LONG SerialOfVolume(const std::wstring& drive);
    static std::wstring NameOfVolume(const std::wstring& drive);
    static std::wstring FileSystemOfVolume(const std::wstring& drive);
    static std::wstring GuidOfVolume(const std::wstring& drive);
    static SHORT ModeOfBios(SHORT alternative);

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
