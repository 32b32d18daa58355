#include "builder/expressiontools.h"
#include "modeler/value/tint.h"
#include "solver/kernel/wraparith.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {
constexpr int64_t MIN = std::numeric_limits<int64_t>::min();
constexpr int64_t MAX = std::numeric_limits<int64_t>::max();
}  // namespace

TEST(WrapArith, WrapsAtTheEndsAndTruncatesTowardZero) {
    EXPECT_EQ(WrapArith::add(MAX, 1), MIN);
    EXPECT_EQ(WrapArith::sub(MIN, 1), MAX);
    EXPECT_EQ(WrapArith::mul(MAX, 2), -2);
    EXPECT_EQ(WrapArith::neg(MIN), MIN);
    EXPECT_EQ(WrapArith::abs(MIN), MIN);
    EXPECT_EQ(WrapArith::abs(-5), 5);
    EXPECT_EQ(WrapArith::divide(MIN, -1), MIN);
    EXPECT_EQ(WrapArith::divide(-7, 2), -3);
    EXPECT_EQ(WrapArith::divide(7, -2), -3);
    EXPECT_EQ(WrapArith::modulo(MIN, -1), 0);
    EXPECT_EQ(WrapArith::modulo(-7, 2), -1);
    EXPECT_EQ(WrapArith::modulo(7, -2), 1);
}

// The language computes plain integers and the model folds constants with
// the same rules, so a program and its model agree at the extremes.
TEST(WrapArith, LanguageAndModelAgreeOnDivisionAndRemainder) {
    const int64_t values[] = {MIN, MIN + 1, -7, -2, -1, 1, 2, 7, MAX - 1, MAX};
    for (int64_t a : values)
        for (int64_t b : values) {
            EXPECT_EQ(TInt::checkedDiv(a, b), ExpressionTools::divideEval({a, b})) << a << " / " << b;
            EXPECT_EQ(TInt::checkedMod(a, b), ExpressionTools::moduloEval({a, b})) << a << " % " << b;
        }
    EXPECT_EQ(ExpressionTools::productEval({MAX, MAX, 3}), WrapArith::mul(WrapArith::mul(MAX, MAX), 3));
    EXPECT_EQ(ExpressionTools::sumEval({MAX, 1, MAX}), WrapArith::add(WrapArith::add(MAX, 1), MAX));
    EXPECT_EQ(ExpressionTools::distanceEval({MIN, 0}), MIN);
}
