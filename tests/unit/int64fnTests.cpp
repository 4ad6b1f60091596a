#include "services/int64fn.h"

#include <gtest/gtest.h>

#include "core/AutomationError.h"

namespace quill::test {
namespace {

constexpr std::int64_t kLargest = 922'337'203'685'477; // the largest count in a Currency

CURRENCY Amount(std::int64_t units)
{
    CURRENCY amount;
    amount.int64 = units;
    return amount;
}

TEST(Int64, CountsTravelAsCurrency)
{
    for (const std::int64_t count : {std::int64_t{0}, std::int64_t{1}, std::int64_t{-1},
                                     std::int64_t{4'294'967'296}, kLargest, -kLargest}) {
        EXPECT_EQ(CountToCurrency(count).int64, count * 10'000);
        EXPECT_EQ(CurrencyToCount(Amount(count * 10'000)), count);
    }
    for (const std::int64_t count : {kLargest + 1, -kLargest - 1, INT64_MAX, INT64_MIN}) {
        try {
            CountToCurrency(count);
            ADD_FAILURE() << count << " was taken";
        } catch (const AutomationError& error) {
            EXPECT_EQ(error.number, ErrorNumber(0x800A0006));
        }
    }
}

TEST(Int64, FractionsAreDroppedTowardZero)
{
    EXPECT_EQ(CurrencyToCount(Amount(19'999)), 1);
    EXPECT_EQ(CurrencyToCount(Amount(-19'999)), -1);
    EXPECT_EQ(CurrencyToCount(Amount(9'999)), 0);
    EXPECT_EQ(CurrencyToCount(Amount(INT64_MAX)), kLargest);
}

TEST(Int64, RangeOfCounts)
{
    const struct {
        std::int64_t value;
        bool asCount, asAmount;
    } cases[] = {
        {0, true, true},
        {-1, false, false},
        {kLargest, true, true},
        {kLargest + 1, false, true},
        {0x7FFF'FFFF'FFFF'E950, false, true}, // 922337203685477.0000
        {0x7FFF'FFFF'FFFF'E951, false, false},
    };
    for (const auto& [value, asCount, asAmount] : cases) {
        EXPECT_EQ(IsCountInRange(value), asCount) << value;
        EXPECT_EQ(IsCountInRange(Amount(value)), asAmount) << value;
    }
}

TEST(Int64, Hexadecimal)
{
    const struct {
        std::uint32_t low, high;
        const wchar_t* expected;
    } cases[] = {
        {0, 0, L"0"},
        {0xFFFFFFFF, 0, L"FFFFFFFF"},
        {0xABC, 0xDEF, L"DEF00000ABC"},
        {0xFFFFFFFF, 0xFFFFFFFF, L"FFFFFFFFFFFFFFFF"},
    };
    for (const auto& [low, high, expected] : cases)
        EXPECT_EQ(Hex64(low, high), expected);
}

} // namespace
} // namespace quill::test
