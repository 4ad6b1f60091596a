#include "core/Dates.h"

namespace quill {

std::optional<SYSTEMTIME> PartsOf(DATE date) noexcept
{
    constexpr DATE kBefore = -657435; // 31 December 99
    constexpr DATE kAfter = 2958466;  // 1 January 10000
    SYSTEMTIME parts{};
    // Neither comparison holds for what is not a number.
    if (!(kBefore < date && date < kAfter) || !VariantTimeToSystemTime(date, &parts)) return {};
    parts.wMilliseconds = 0;
    return parts;
}

DATE DateOf(SYSTEMTIME parts) noexcept
{
    parts.wMilliseconds = 0;
    DATE date = 0;
    return SystemTimeToVariantTime(&parts, &date) ? date : 0;
}

} // namespace quill
