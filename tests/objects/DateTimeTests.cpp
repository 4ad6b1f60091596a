#include "sysinfo/DateTime.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/ScriptObject.h"

namespace quill::test {
namespace {

DATE DateOf(const char* text)
{
    SYSTEMTIME parts{};
    DATE date = 0;
    if (std::sscanf(text, "%4hu-%2hu-%2hu %2hu:%2hu:%2hu", &parts.wYear, &parts.wMonth, &parts.wDay,
                    &parts.wHour, &parts.wMinute, &parts.wSecond) != 6 ||
        !SystemTimeToVariantTime(&parts, &date))
        throw std::logic_error(text);
    return date;
}

DATE DateOf(const Value& value)
{
    EXPECT_EQ(V_VT(&value), VT_DATE);
    return V_DATE(&value);
}

// Dates are equal to the second.
std::string TextOf(DATE date)
{
    SYSTEMTIME parts{};
    VariantTimeToSystemTime(date, &parts);
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", parts.wYear, parts.wMonth,
                  parts.wDay, parts.wHour, parts.wMinute, parts.wSecond);
    return text;
}

struct Instant {
    const char* utc;
    const char* local;
    bool both; // the local time comes once only
};

struct Zone {
    const wchar_t* name; // as the environment of the test names it
    long bias;
    std::vector<Instant> instants;
};

// Made with Python's zoneinfo. The rules of today hold for all years: what is before 1900 was taken
// from 400 years later, where the calendar is the same.
const Zone kZones[] = {
    {L"Europe/Berlin",
     -60,
     {{"2026-03-29 00:59:59", "2026-03-29 01:59:59", true},
      {"2026-03-29 01:00:00", "2026-03-29 03:00:00", true},
      {"2026-10-25 00:59:59", "2026-10-25 02:59:59", false},
      {"2026-10-25 01:00:00", "2026-10-25 02:00:00", false},
      {"2151-10-31 00:59:59", "2151-10-31 02:59:59", false},
      {"2151-10-31 02:00:00", "2151-10-31 03:00:00", true},
      {"1850-07-01 12:00:00", "1850-07-01 14:00:00", true},
      {"1895-02-28 23:30:00", "1895-03-01 00:30:00", true},
      {"1899-12-29 23:00:00", "1899-12-30 00:00:00", true}}},
    {L"America/New_York",
     300,
     {{"2026-03-08 07:00:00", "2026-03-08 03:00:00", true},
      {"2026-11-01 05:59:59", "2026-11-01 01:59:59", false},
      {"2026-11-01 06:00:00", "2026-11-01 01:00:00", false},
      {"1895-02-28 23:30:00", "1895-02-28 18:30:00", true}}},
    {L"Australia/Sydney",
     -600,
     {{"2026-04-04 15:59:59", "2026-04-05 02:59:59", false},
      {"2026-04-04 16:00:00", "2026-04-05 02:00:00", false},
      {"2026-10-03 16:00:00", "2026-10-04 03:00:00", true},
      {"1895-02-28 23:30:00", "1895-03-01 10:30:00", true}}},
    {L"Asia/Kolkata",
     -330,
     {{"2026-06-30 23:59:59", "2026-07-01 05:29:59", true},
      {"2150-07-01 12:00:00", "2150-07-01 17:30:00", true},
      {"1895-02-28 23:30:00", "1895-03-01 05:00:00", true}}},
};

// Runs once for each zone of the table, in a process of its own.
TEST(DateTimeInZone, ConvertsAsTheTableSays)
{
    wchar_t name[40]{};
    GetEnvironmentVariableW(L"TZ", name, 40);
    const auto* zone = std::find_if(std::begin(kZones), std::end(kZones),
                                    [&](const Zone& each) { return wcscmp(each.name, name) == 0; });
    if (zone == std::end(kZones)) GTEST_SKIP() << "no zone of the table";
    ScriptObject dateTime = ScriptObject::Make(L"DateTime");
    EXPECT_EQ(dateTime.Get(L"TimeBias"), zone->bias);
    const auto convert = [&](const char* text, bool fromUtc) {
        return TextOf(DateOf(dateTime.Call(L"ConvertTime", DateOf(text), fromUtc)));
    };
    for (const auto& [utc, local, both] : zone->instants) {
        EXPECT_EQ(convert(utc, true), local);
        if (both) {
            EXPECT_EQ(convert(local, false), utc);
        }
    }
    // Beyond the last date, on the other side of the zone's meridian.
    EXPECT_EQ(DateOf(dateTime.Call(L"ConvertTime", DateOf("9999-12-31 23:00:00"), zone->bias < 0)),
              0);
}

TEST(DateTimeTest, NameAndBiasesFollowTheKind)
{
    TimeZone zone;
    zone.settings = {-60, L"Winter", {}, 5, L"Summer", {}, -60};
    const struct {
        LONG kind;
        const wchar_t* name;
        LONG standard;
        LONG daylight;
    } cases[] = {{-1, L"", 0, 0},
                 {0, L"Summer", -55, -120},
                 {1, L"Winter", -55, -120},
                 {2, L"Summer", -55, -120}};
    for (const auto& [kind, name, standard, daylight] : cases) {
        zone.kind = kind;
        EXPECT_EQ(zone.Name(), name);
        EXPECT_EQ(zone.StandardBias(), standard);
        EXPECT_EQ(zone.DaylightBias(), daylight);
    }
    zone.settings.DaylightName[0] = L'\0';
    EXPECT_EQ(zone.Name(), L"Winter");
    std::fill(std::begin(zone.settings.StandardName), std::end(zone.settings.StandardName), L'n');
    EXPECT_EQ(zone.Name(), std::wstring(32, L'n')); // no NUL at its end
}

} // namespace
} // namespace quill::test
