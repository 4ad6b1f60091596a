// 64-bit numbers in automation values. Not every script language has a 64-bit integer, so sizes,
// positions and counts travel as Currency: a count n as the amount n, four decimals at 0.
#pragma once

#include <cstdint>
#include <string>

#include "core/Platform.h"

namespace quill {

// The largest count that a Currency can carry is 922337203685477.

// Raises overflow beyond that.
CURRENCY CountToCurrency(std::int64_t count);

// Drops a fraction, toward zero.
std::int64_t CurrencyToCount(CURRENCY amount) noexcept;

// True for what CountToCurrency takes, negative counts excepted.
bool IsCountInRange(std::int64_t count) noexcept;

// The same for an amount that a script sets: neither negative nor above the largest count.
bool IsCountInRange(CURRENCY amount) noexcept;

// Upper-case hexadecimal digits without leading zeros; negative values in two's complement.
std::wstring Hex64(std::uint32_t low, std::uint32_t high);

} // namespace quill
