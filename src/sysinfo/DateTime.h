// Quill.DateTime: the time in UTC, its conversion from and to local time, and the time zone.
#pragma once

#include "core/Automation.h"

namespace quill {

// The settings of the system's time zone at one moment.
struct TimeZone {
    LONG kind = -1; // TIME_ZONE_ID_...; -1: the platform did not tell
    TIME_ZONE_INFORMATION settings{};

    static TimeZone Current() noexcept;

    // The name of daylight saving time wherever there is one, unless standard time is in force.
    std::wstring Name() const;
    // UTC minus local time, in minutes.
    LONG StandardBias() const noexcept;
    LONG DaylightBias() const noexcept;
};

// The time zone is read when the object is made, and by TimeInfoRefresh. Raises no errors.
class DateTime final : public Automation<_DateTime> {
public:
    STDMETHODIMP ConvertTime(DATE dt, VARIANT_BOOL IsUTC, DATE* result) noexcept override
    {
        return Call(result, &DateTime::Convert, dt, IsUTC);
    }
    STDMETHODIMP TimeInfoRefresh() noexcept override { return Call(&DateTime::Refresh); }
    STDMETHODIMP get_TimeZoneType(LONG* value) noexcept override { return Get(value, zone_.kind); }
    STDMETHODIMP get_TimeZoneName(BSTR* value) noexcept override
    {
        return Call(value, &DateTime::ZoneName);
    }
    STDMETHODIMP get_TimeBias(LONG* value) noexcept override
    {
        return Get(value, zone_.StandardBias());
    }
    STDMETHODIMP get_TimeBiasDST(LONG* value) noexcept override
    {
        return Get(value, zone_.DaylightBias());
    }
    STDMETHODIMP get_SysDate(DATE* value) noexcept override { return Call(value, &DateTime::Date); }
    STDMETHODIMP get_SysTime(DATE* value) noexcept override { return Call(value, &DateTime::Time); }
    STDMETHODIMP get_SysNow(DATE* value) noexcept override { return Call(value, &DateTime::Now); }

private:
    static DATE Convert(DATE date, bool fromUtc);
    void Refresh() noexcept { zone_ = TimeZone::Current(); }
    std::wstring ZoneName() const { return zone_.Name(); }
    static DATE Date();
    static DATE Time();
    static DATE Now();

    TimeZone zone_ = TimeZone::Current();
};

} // namespace quill
