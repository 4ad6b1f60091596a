#include "sysinfo/DateTime.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quill::test {
namespace {

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
