#include "solver/kernel/quickrand.h"

#include <gtest/gtest.h>

#include <algorithm>

TEST(QuickrandTest, FirstDrawFromZeroStateFollowsTheCongruence) {
    Quickrand rand;
    unsigned int n = 1000;
    unsigned int expected =
        static_cast<unsigned int>((1013904223ull * n) >> 32);
    EXPECT_EQ(rand.nextInt(n), expected);
    EXPECT_EQ(rand.getState(), 1013904223u);
    // Second step: 1013904223 * 1664525 + 1013904223 mod 2^32.
    unsigned int second = 1013904223u * 1664525u + 1013904223u;
    rand.nextInt(7);
    EXPECT_EQ(rand.getState(), second);
}

TEST(QuickrandTest, DegenerateDrawsDoNotAdvance) {
    Quickrand a(42), b(42);
    EXPECT_EQ(a.nextInt(0u), 0u);
    EXPECT_EQ(a.nextInt(1u), 0u);
    EXPECT_EQ(a.getState(), 42u);
    EXPECT_EQ(a.nextInt(100u), b.nextInt(100u));
}

TEST(QuickrandTest, DrawsStayInRange) {
    Quickrand rand(7);
    for (int i = 0; i < 10000; ++i) {
        unsigned int n = 1 + rand.nextInt(50);
        EXPECT_LT(rand.nextInt(n), n);
        float f = rand.nextFloat();
        EXPECT_GE(f, 0.0f);
        EXPECT_LT(f, 1.0f);
    }
}

TEST(QuickrandTest, ExcludedValueIsNeverDrawn) {
    Quickrand rand(3);
    // Small n: deterministic successor, no advance.
    EXPECT_EQ(rand.nextInt(1u, 0u), 0u);
    EXPECT_EQ(rand.nextInt(2u, 0u), 1u);
    EXPECT_EQ(rand.nextInt(2u, 1u), 0u);
    EXPECT_EQ(rand.getState(), 3u);
    for (unsigned int n = 3; n < 40; ++n) {
        for (unsigned int excluded = 0; excluded < n; ++excluded) {
            unsigned int v = rand.nextInt(n, excluded);
            EXPECT_LT(v, n);
            EXPECT_NE(v, excluded);
        }
    }
}

TEST(QuickrandTest, KIntsAreDistinctAndBothVariantsAgree) {
    for (unsigned int seed = 0; seed < 20; ++seed) {
        for (unsigned int n : {1u, 2u, 5u, 37u}) {
            for (unsigned int k = 0; k <= n; ++k) {
                Quickrand a(seed), b(seed);
                std::vector<unsigned int> outA(k), outB(k);
                a.nextKInt(n, k, outA);
                b.nextKInt_LinearInN(n, k, outB);
                EXPECT_EQ(outA, outB);
                EXPECT_EQ(a.getState(), b.getState());
                std::vector<unsigned int> sorted = outA;
                std::sort(sorted.begin(), sorted.end());
                EXPECT_TRUE(std::adjacent_find(sorted.begin(), sorted.end()) == sorted.end());
                for (unsigned int v : outA) EXPECT_LT(v, n);
                if (k == n) {
                    for (unsigned int i = 0; i < n; ++i) EXPECT_EQ(sorted[i], i);
                }
            }
        }
    }
}

TEST(QuickrandTest, FindReportsFirstPositionOrCount) {
    std::vector<unsigned int> values = {4, 9, 4, 1, 7};
    EXPECT_EQ(Quickrand::find(4, values, 5), 0u);
    EXPECT_EQ(Quickrand::find(7, values, 5), 4u);
    EXPECT_EQ(Quickrand::find(7, values, 4), 4u);  // beyond count: absent
    unsigned int pa, pb;
    Quickrand::find(1, 9, values, 5, pa, pb);
    EXPECT_EQ(pa, 3u);
    EXPECT_EQ(pb, 1u);
    Quickrand::find(8, 4, values, 3, pa, pb);
    EXPECT_EQ(pa, 3u);
    EXPECT_EQ(pb, 0u);
}
