#include "sysinfo/DateTime.h"

#include "core/Catalogue.h"
#include "core/Dates.h"

namespace quill {

namespace {

SYSTEMTIME UtcNow() noexcept
{
    SYSTEMTIME now;
    GetSystemTime(&now);
    return now;
}

} // namespace

CREATABLE(DateTime)

TimeZone TimeZone::Current() noexcept
{
    TimeZone zone;
    zone.kind = static_cast<LONG>(GetTimeZoneInformation(&zone.settings));
    return zone;
}

std::wstring TimeZone::Name() const
{
    if (kind == -1) return {};
    const bool standard = kind == TIME_ZONE_ID_STANDARD || settings.DaylightName[0] == L'\0';
    const auto& name = standard ? settings.StandardName : settings.DaylightName;
    return {name, wcsnlen(name, std::size(name))};
}

LONG TimeZone::StandardBias() const noexcept
{
    return kind == -1 ? 0 : settings.Bias + settings.StandardBias;
}

LONG TimeZone::DaylightBias() const noexcept
{
    return kind == -1 ? 0 : settings.Bias + settings.DaylightBias;
}

DATE DateTime::ConvertTime(DATE date, bool fromUtc)
{
    const std::optional<SYSTEMTIME> given = PartsOf(date);
    if (!given) return 0;
    SYSTEMTIME converted{};
    const BOOL done = fromUtc ? SystemTimeToTzSpecificLocalTime(nullptr, &*given, &converted)
                              : TzSpecificLocalTimeToSystemTime(nullptr, &*given, &converted);
    return done ? DateOf(converted) : 0;
}

DATE DateTime::SysDate()
{
    SYSTEMTIME now = UtcNow();
    now.wHour = now.wMinute = now.wSecond = 0;
    return DateOf(now);
}

DATE DateTime::SysTime()
{
    SYSTEMTIME now = UtcNow();
    now.wYear = 1899; // the day that counts as none
    now.wMonth = 12;
    now.wDay = 30;
    return DateOf(now);
}

DATE DateTime::SysNow()
{
    // Kept as published: the clock is read twice, the time first.
    const DATE time = SysTime();
    return time + SysDate();
}

} // namespace quill
