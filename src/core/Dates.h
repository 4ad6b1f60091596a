// Dates of automation as the platform's calendar times.
#pragma once

#include <optional>

#include "core/Platform.h"

namespace quill {

// A Date's parts to the second (VariantTimeToSystemTime). Nothing for a value outside the years 100
// to 9999, or one that is not a number: the platform does not check for these.
std::optional<SYSTEMTIME> PartsOf(DATE date) noexcept;

// The Date to the second (SystemTimeToVariantTime); 0 for parts that are not a time.
DATE DateOf(SYSTEMTIME parts) noexcept;

} // namespace quill
