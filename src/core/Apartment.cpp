#include "core/Apartment.h"

#include <vector>

#include "core/AutomationError.h"

namespace quill {

namespace {

thread_local ApartmentRecord* recordOfThread = nullptr;

// Retries an event for a while if its client is too busy for it, with a modal dialog or a cell that
// is being edited; without the filter it would be lost at once. Incoming calls are always served.
class RetryFilter final : public IMessageFilter {
public:
    STDMETHODIMP QueryInterface(REFIID id, void** object) noexcept override
    {
        if (!object) return E_POINTER;
        const bool known = id == IID_IUnknown || id == IID_IMessageFilter;
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return 2; } // belongs to its record
    STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }

    STDMETHODIMP_(DWORD) HandleInComingCall(DWORD, HTASK, DWORD, LPINTERFACEINFO) noexcept override
    {
        return SERVERCALL_ISHANDLED;
    }
    // Returns after how many milliseconds to try again; -1 gives up.
    STDMETHODIMP_(DWORD) RetryRejectedCall(HTASK, DWORD waited, DWORD) noexcept override
    {
        return waited < kRetryForMilliseconds ? kRetryAfterMilliseconds : static_cast<DWORD>(-1);
    }
    STDMETHODIMP_(DWORD) MessagePending(HTASK, DWORD, DWORD) noexcept override
    {
        return PENDINGMSG_WAITDEFPROCESS;
    }

private:
    static constexpr DWORD kRetryForMilliseconds = 3'000;
    static constexpr DWORD kRetryAfterMilliseconds =
        100; // the platform retries lower values at once
};

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
    if (model == COINIT_APARTMENTTHREADED) CoRegisterMessageFilter(&Part<RetryFilter>(), nullptr);
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
