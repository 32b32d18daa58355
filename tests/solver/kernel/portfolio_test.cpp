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

namespace {
// Feasible standings of one maximised objective.
std::vector<Portfolio::Standing> cuts(const std::vector<long long>& values) {
    std::vector<Portfolio::Standing> standings;
    for (long long v : values) standings.push_back({0, {v}});
    return standings;
}
const std::vector<ObjectiveDirection> MAXIMIZE{Maximize};
}  // namespace

TEST(Portfolio, TheBestRankIsTheBestStandingTheLowestRankOnTies) {
    EXPECT_EQ(Portfolio::bestRank(cuts({5, 9, 7, 9}), MAXIMIZE), 1);
    EXPECT_EQ(Portfolio::bestRank(cuts({9, 9}), MAXIMIZE), 0);
    EXPECT_EQ(Portfolio::bestRank(cuts({4}), MAXIMIZE), 0);
    // An infeasible rank loses to any feasible one.
    std::vector<Portfolio::Standing> mixed{{1, {100}}, {0, {1}}, {2, {200}}};
    EXPECT_EQ(Portfolio::bestRank(mixed, MAXIMIZE), 1);
}

TEST(Portfolio, RestartersAreTheWorstShareOfTheOtherRanksNeverRankZero) {
    using Ranks = std::vector<bool>;
    // Alone, or with a share of 0: nobody restarts.
    EXPECT_EQ(Portfolio::restarters(cuts({3}), 0, 100, MAXIMIZE), Ranks({false}));
    EXPECT_EQ(Portfolio::restarters(cuts({9, 1, 2}), 0, 0, MAXIMIZE), Ranks({false, false, false}));
    // All of them but rank 0 and the best one.
    EXPECT_EQ(Portfolio::restarters(cuts({1, 2, 9, 3, 4}), 2, 100, MAXIMIZE),
              Ranks({false, true, false, true, true}));
    // Two ranks: rank 1 restarts when rank 0 is the better, else nobody.
    EXPECT_EQ(Portfolio::restarters(cuts({9, 1}), 0, 50, MAXIMIZE), Ranks({false, true}));
    EXPECT_EQ(Portfolio::restarters(cuts({1, 9}), 1, 100, MAXIMIZE), Ranks({false, false}));
    // The worst first: half of the 4 candidates (ranks 1 to 4) are the two
    // lowest cuts; ties go to the lower rank.
    EXPECT_EQ(Portfolio::restarters(cuts({0, 6, 2, 5, 9}), 4, 50, MAXIMIZE),
              Ranks({false, false, true, true, false}));
    EXPECT_EQ(Portfolio::restarters(cuts({9, 3, 3, 3, 8}), 0, 50, MAXIMIZE),
              Ranks({false, true, true, false, false}));
    // Rounded to the nearest, a half up: a tenth of 4 is 0, a third of 14
    // is 5.
    EXPECT_EQ(Portfolio::restarters(cuts({9, 1, 2, 3, 4}), 0, 10, MAXIMIZE), Ranks(5, false));
    std::vector<long long> sixteen(16);
    for (int r = 0; r < 16; ++r) sixteen[r] = r;
    Ranks third = Portfolio::restarters(cuts(sixteen), 15, 33, MAXIMIZE);
    EXPECT_EQ(third, Ranks({false, true, true, true, true, true, false, false, false, false, false, false, false,
                            false, false, false}));
    // A rank as good as the best one stays where it is.
    EXPECT_EQ(Portfolio::restarters(cuts({1, 9, 9}), 1, 100, MAXIMIZE), Ranks({false, false, false}));
    // Infeasible ranks are the worst.
    std::vector<Portfolio::Standing> mixed{{0, {5}}, {0, {2}}, {3, {50}}, {0, {9}}};
    EXPECT_EQ(Portfolio::restarters(mixed, 3, 34, MAXIMIZE), Ranks({false, false, true, false}));
}

TEST(Portfolio, IterationPeriodIsTheParameterOrATenthOfTheLimit) {
    EXPECT_EQ(Portfolio::iterationPeriod(5000, 1000000), 5000u);
    EXPECT_EQ(Portfolio::iterationPeriod(0, 1000000), 100000u);
    EXPECT_EQ(Portfolio::iterationPeriod(0, 25), 2u);
    EXPECT_EQ(Portfolio::iterationPeriod(0, 7), 1u);
}
