// Quill.DateTime: the time in UTC, its conversion from and to local time, and the time zone.
#pragma once

#include "core/Automation.h"

namespace quill {

// The settings of the system's time zone at one moment.
struct TimeZone {
    LONG kind = -1; // TIME_ZONE_ID_...; -1 if unavailable
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
    METHOD(DATE, ConvertTime, (DATE dt, VARIANT_BOOL IsUTC), dt, IsUTC)
    STDMETHODIMP TimeInfoRefresh() noexcept override
    {
        zone_ = TimeZone::Current();
        return S_OK;
    }
    READ_ONLY_PROPERTY(LONG, TimeZoneType, zone_.kind)
    COMPUTED_PROPERTY(BSTR, TimeZoneName)
    READ_ONLY_PROPERTY(LONG, TimeBias, zone_.StandardBias())
    READ_ONLY_PROPERTY(LONG, TimeBiasDST, zone_.DaylightBias())
    COMPUTED_PROPERTY(DATE, SysDate)
    COMPUTED_PROPERTY(DATE, SysTime)
    COMPUTED_PROPERTY(DATE, SysNow)

private:
    static DATE ConvertTime(DATE date, bool fromUtc);
    std::wstring TimeZoneName() const { return zone_.Name(); }
    static DATE SysDate();
    static DATE SysTime();
    static DATE SysNow();

    TimeZone zone_ = TimeZone::Current();
};

} // namespace quill
