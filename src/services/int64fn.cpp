#include "services/int64fn.h"

#include "core/AutomationError.h"

namespace quill {

namespace {

constexpr std::int64_t kUnitsPerWhole = 10'000; // of a Currency's 64 bits
constexpr std::int64_t kLargestCount = 922'337'203'685'477;

} // namespace

CURRENCY CountToCurrency(std::int64_t count)
{
    CURRENCY amount;
    if (__builtin_mul_overflow(count, kUnitsPerWhole, &amount.int64))
        RaiseRuntimeError(RuntimeError::Overflow);
    return amount;
}

std::int64_t CurrencyToCount(CURRENCY amount) noexcept
{
    return amount.int64 / kUnitsPerWhole;
}

bool IsCountInRange(std::int64_t count) noexcept
{
    return count >= 0 && count <= kLargestCount;
}

bool IsCountInRange(CURRENCY amount) noexcept
{
    return amount.int64 >= 0 && amount.int64 <= kLargestCount * kUnitsPerWhole;
}

std::wstring Hex64(std::uint32_t low, std::uint32_t high)
{
    wchar_t digits[17];
    if (high == 0)
        swprintf(digits, std::size(digits), L"%lX", static_cast<unsigned long>(low));
    else
        swprintf(digits, std::size(digits), L"%lX%08lX", static_cast<unsigned long>(high),
                 static_cast<unsigned long>(low));
    return digits;
}

} // namespace quill
