#include "api/kernelexception.h"
#include "solver/kernel/constants.h"

#include <gtest/gtest.h>

TEST(CastToQxInt, AcceptsWholeIntegersOverTheFullRange) {
    EXPECT_EQ(castToQxInt("0"), 0);
    EXPECT_EQ(castToQxInt("-12"), -12);
    EXPECT_EQ(castToQxInt("9223372036854775807"), INT64_MAX);
    EXPECT_EQ(castToQxInt("-9223372036854775808"), INT64_MIN);
}

TEST(CastToQxInt, RefusesPartialOrOversizedTexts) {
    for (const char* text : {"-", "", "12ab", "9223372036854775808", "-9223372036854775809",
                             " 1", "1.5"}) {
        try {
            castToQxInt(text);
            FAIL() << text;
        } catch (const KernelException& e) {
            EXPECT_EQ(e.getExplanation(),
                      "Cannot cast '" + std::string(text) +
                          "' to int (Max value allowed : 9223372036854775807, min value "
                          "allowed : -9223372036854775808).");
            EXPECT_EQ(e.getFunctionName(), "castToQxInt");
            EXPECT_EQ(e.getLineNumber(), 14);
        }
    }
}
