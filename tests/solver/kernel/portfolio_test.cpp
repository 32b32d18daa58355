// The rules that the ranks of a multi-process search apply alike.

#include "solver/kernel/portfolio.h"

#include <gtest/gtest.h>

#include <set>

TEST(Portfolio, RankZeroKeepsTheSeedAndTheOthersGetDistinctSeedsInRange) {
    for (unsigned int seed : {0u, 1u, 12345u, 2147483646u}) {
        EXPECT_EQ(Portfolio::rankSeed(seed, 0), seed);
        std::set<unsigned int> seen{seed};
        for (int rank = 1; rank < 512; ++rank) {
            const unsigned int derived = Portfolio::rankSeed(seed, rank);
            EXPECT_LT(derived, 2147483647u);
            EXPECT_EQ(derived, Portfolio::rankSeed(seed, rank));
            seen.insert(derived);
        }
        EXPECT_EQ(seen.size(), 512u) << "seed " << seed;
    }
    // The seed matters too: seeds 0 and 1 do not share rank 1's generator.
    EXPECT_NE(Portfolio::rankSeed(0, 1), Portfolio::rankSeed(1, 1));
    EXPECT_NE(Portfolio::rankSeed(0, 2), Portfolio::rankSeed(1, 1));
}

TEST(Portfolio, StandingsCompareFeasibilityFirstThenObjectivesInOrder) {
    const std::vector<ObjectiveDirection> maxThenMin{Maximize, Minimize};
    // Feasible beats infeasible, whatever the objectives; fewer violations
    // beat more.
    EXPECT_EQ(Portfolio::compareStandings(0, {1, 100}, 1, {50, 0}, maxThenMin), 1);
    EXPECT_EQ(Portfolio::compareStandings(3, {50, 0}, 2, {1, 100}, maxThenMin), -1);
    // The first objective decides before the second, each in its direction.
    EXPECT_EQ(Portfolio::compareStandings(0, {10, 100}, 0, {9, 0}, maxThenMin), 1);
    EXPECT_EQ(Portfolio::compareStandings(0, {10, 5}, 0, {10, 6}, maxThenMin), 1);
    EXPECT_EQ(Portfolio::compareStandings(0, {10, 7}, 0, {10, 6}, maxThenMin), -1);
    EXPECT_EQ(Portfolio::compareStandings(2, {10, 6}, 2, {10, 6}, maxThenMin), 0);
    const std::vector<ObjectiveDirection> minimize{Minimize};
    EXPECT_EQ(Portfolio::compareStandings(0, {-5}, 0, {3}, minimize), 1);
    EXPECT_EQ(Portfolio::compareStandings(0, {3}, 0, {-5}, minimize), -1);
}

TEST(Portfolio, RestartersAreAShareOfTheOtherRanksTakenInTurnNeverRankZero) {
    auto count = [](const std::vector<bool>& chosen) {
        int n = 0;
        for (bool c : chosen) n += c;
        return n;
    };
    // Alone, or with a share of 0: nobody restarts.
    EXPECT_EQ(count(Portfolio::restarters(1, 0, 100, 0)), 0);
    EXPECT_EQ(count(Portfolio::restarters(8, 3, 0, 5)), 0);
    // All the others but rank 0, never the best rank itself.
    EXPECT_EQ(Portfolio::restarters(5, 2, 100, 7), std::vector<bool>({false, true, false, true, true}));
    EXPECT_EQ(Portfolio::restarters(5, 0, 100, 7), std::vector<bool>({false, true, true, true, true}));
    // Two ranks: rank 1 restarts when rank 0 is the best, else nobody.
    EXPECT_EQ(Portfolio::restarters(2, 0, 50, 0), std::vector<bool>({false, true}));
    EXPECT_EQ(count(Portfolio::restarters(2, 1, 100, 0)), 0);
    // Rounded to the nearest, a half up: a tenth of 4 candidates is 0, half
    // of 4 is 2, a third of 14 is 5.
    EXPECT_EQ(count(Portfolio::restarters(5, 0, 10, 0)), 0);
    EXPECT_EQ(count(Portfolio::restarters(5, 0, 50, 0)), 2);
    EXPECT_EQ(count(Portfolio::restarters(16, 9, 33, 0)), 5);
    // Round 0 takes the candidates right after the best rank, skipping 0;
    // the rounds go on around them, so each gets its turn equally often.
    EXPECT_EQ(Portfolio::restarters(5, 3, 50, 0), std::vector<bool>({false, true, false, false, true}));
    std::vector<int> turns(7, 0);
    for (unsigned long long round = 0; round < 5; ++round) {
        std::vector<bool> chosen = Portfolio::restarters(7, 4, 40, round);
        EXPECT_EQ(count(chosen), 2);
        for (int r = 0; r < 7; ++r) turns[r] += chosen[r];
    }
    EXPECT_EQ(turns, std::vector<int>({0, 2, 2, 2, 0, 2, 2}));
}

TEST(Portfolio, IterationPeriodIsTheParameterOrATenthOfTheLimit) {
    EXPECT_EQ(Portfolio::iterationPeriod(5000, 1000000), 5000u);
    EXPECT_EQ(Portfolio::iterationPeriod(0, 1000000), 100000u);
    EXPECT_EQ(Portfolio::iterationPeriod(0, 25), 2u);
    EXPECT_EQ(Portfolio::iterationPeriod(0, 7), 1u);
}
