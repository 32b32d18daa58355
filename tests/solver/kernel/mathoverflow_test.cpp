#include "solver/kernel/mathoverflow.h"

#include <gtest/gtest.h>

#include <limits>

namespace {
constexpr long long MAX = std::numeric_limits<long long>::max();
constexpr long long MIN = std::numeric_limits<long long>::min();
}  // namespace

TEST(MathOverflowTest, SumAndOppositeSaturate) {
    EXPECT_EQ(MathOverflow::sum(MAX, 1), MAX);
    EXPECT_EQ(MathOverflow::sum(MIN, -1), MIN);
    EXPECT_EQ(MathOverflow::sum(MAX, MIN), -1);
    EXPECT_EQ(MathOverflow::opposite(MIN), MAX);
    EXPECT_EQ(MathOverflow::abs(MIN), MAX);
    EXPECT_EQ(MathOverflow::abs(-7), 7);
}

TEST(MathOverflowTest, ProductSaturatesConservatively) {
    EXPECT_EQ(MathOverflow::product(3, 4), 12);
    EXPECT_EQ(MathOverflow::product(-3, 4), -12);
    EXPECT_EQ(MathOverflow::product(2147483648LL, 2147483648LL), MAX);  // fits, but 64 bits
    EXPECT_EQ(MathOverflow::product(-2147483648LL, 2147483648LL), MIN);
    EXPECT_EQ(MathOverflow::product(0, 4611686018427387904LL), MIN);
    EXPECT_EQ(MathOverflow::logBit(0), 0u);
    EXPECT_EQ(MathOverflow::logBit(-8), 4u);
    EXPECT_EQ(MathOverflow::logBit(MIN), 63u);
}

TEST(MathOverflowTest, RangesKeepZeroAndTheMinimum) {
    long long low, high;
    // A zero end times a 63-bit end is 0, not the saturated product.
    MathOverflow::multiplyRanges(0, 1, MIN, MAX, low, high);
    EXPECT_EQ(low, MIN);
    EXPECT_EQ(high, MAX);
    MathOverflow::multiplyRanges(0, 0, MIN, MAX, low, high);
    EXPECT_EQ(low, 0);
    EXPECT_EQ(high, 0);
    MathOverflow::scaleRange(-2, -3, 5, low, high);
    EXPECT_EQ(low, -10);
    EXPECT_EQ(high, 6);
    MathOverflow::absRange(-4, 3, low, high);
    EXPECT_EQ(low, 0);
    EXPECT_EQ(high, 4);
    MathOverflow::absRange(MIN, 3, low, high);
    EXPECT_EQ(low, MIN);  // |MIN| wraps to MIN
    // Ranges of wrapping values: exact when they fit, else everything (MAX -
    // MIN wraps to -1, below a saturated lower end).
    MathOverflow::differenceRange(0, MAX, MIN, 0, low, high);
    EXPECT_EQ(low, MIN);
    EXPECT_EQ(high, MAX);
    MathOverflow::differenceRange(-5, MAX, 0, 3, low, high);
    EXPECT_EQ(low, -8);
    EXPECT_EQ(high, MAX);
    MathOverflow::scaleRange(4, 0, MAX / 4 + 1, low, high);
    EXPECT_EQ(low, MIN);
    EXPECT_EQ(high, MAX);
    MathOverflow::addRanges(MAX - 1, MAX - 1, 0, 1, low, high);
    EXPECT_EQ(low, MAX - 1);
    EXPECT_EQ(high, MAX);
    MathOverflow::addRanges(MAX - 1, MAX - 1, 0, 2, low, high);
    EXPECT_EQ(low, MIN);
    EXPECT_EQ(high, MAX);
}
