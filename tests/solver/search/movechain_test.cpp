// The chain moves on models whose constraints can be checked exactly: an
// assignment (every boolean in one row and one column equality), a
// knapsack (one capacity, one value sum) and a small set cover; and the
// ranges the chains keep the constrained sums in.

#include "api/kernelexception.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"
#include "solver/move/autonomousfixedfields.h"
#include "solver/move/autonomousstructure.h"
#include "solver/kernel/threadenv.h"
#include "solver/move/movechain.h"
#include "solver/move/movekreversal.h"
#include "searchmodels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <tuple>

namespace {

// n x n booleans, each row and each column summing to exactly 1, a cost to
// minimise; starts from the identity.
struct Assignment {
    explicit Assignment(unsigned int n) : n(n) {
        for (unsigned int i = 0; i < n * n; ++i) x.push_back(g.boolean());
        unsigned int one = g.constant(1);
        std::vector<long long> costs;
        for (unsigned int i = 0; i < n; ++i) {
            std::vector<unsigned int> row, column;
            for (unsigned int j = 0; j < n; ++j) {
                row.push_back(x[i * n + j]);
                column.push_back(x[j * n + i]);
                costs.push_back((i * 7 + j * 3) % 11);
            }
            g.constraint(g.add(Eq, {g.add(BooleanSum, row), one}));
            g.constraint(g.add(Eq, {g.add(BooleanSum, column), one}));
        }
        g.objective(g.add(ScalarSum, x, costs), Minimize);
        g.close();
        std::vector<long long> start(n * n, 0);
        for (unsigned int i = 0; i < n; ++i) start[i * n + i] = 1;
        dag = g.makeDag(start);
        autonomous = std::make_unique<AutonomousFixedFields>(g.fixed);
        structure = std::make_unique<AutonomousStructure>(*dag, *autonomous);
    }
    unsigned int n;
    TestGraph g;
    std::vector<unsigned int> x;
    std::unique_ptr<Dag> dag;
    std::unique_ptr<AutonomousFixedFields> autonomous;
    std::unique_ptr<AutonomousStructure> structure;
};

// The ten-item knapsack on which plain flips and swaps stall, started from
// that stalled packing (items 0, 3 and 8: value 247).
struct StalledKnapsack {
    StalledKnapsack()
        : model({23, 31, 29, 44, 53, 38, 63, 85, 89, 82}, {92, 57, 49, 68, 60, 43, 67, 84, 87, 72}, 165) {
        dag = model.g.makeDag({1, 0, 0, 1, 0, 0, 0, 0, 1, 0});
        autonomous = std::make_unique<AutonomousFixedFields>(model.g.fixed);
        structure = std::make_unique<AutonomousStructure>(*dag, *autonomous);
    }
    SearchModels::Knapsack model;
    std::unique_ptr<Dag> dag;
    std::unique_ptr<AutonomousFixedFields> autonomous;
    std::unique_ptr<AutonomousStructure> structure;
};

// Applies the move n times (committing every third evaluated one when the
// search should wander, else none) and hands each built change to `check`
// as the counts of booleans raised and lowered; returns how many were
// built.
template <class Check>
unsigned int exercise(Dag& dag, Move& move, unsigned int n, bool wander, Check check) {
    Propagation& p = dag.getPropagation();
    unsigned int built = 0;
    for (unsigned int i = 0; i < n && !::testing::Test::HasFatalFailure(); ++i) {
        if (!move.modify()) {
            move.update(MoveInfeasible);
            continue;
        }
        ++built;
        unsigned int raised = 0, lowered = 0;
        for (unsigned int v : p.getModifiedVariables()) (dag.currentValue(v) == 0 ? raised : lowered) += 1;
        bool feasible = move.eval();
        check(raised, lowered, feasible);
        move.update(!feasible ? MoveInfeasible : wander && i % 3 == 0 ? MoveAccepted : MoveRejected);
    }
    return built;
}

}  // namespace

TEST(MoveChainTest, BuiltCyclesKeepEveryAssignmentSumLevel) {
    // With unit coefficients and two constrained sums per boolean, a cycle
    // that could be built flips as many booleans up as down and breaks no
    // row or column: the equalities are hard, so eval() says so.
    Assignment a(6);
    Quickrand rand(5);
    for (unsigned int k = 2; k <= 6; ++k) {
        for (unsigned int targeting : {0u, 100u}) {
            SCOPED_TRACE("k " + std::to_string(k) + " targeting " + std::to_string(targeting));
            MoveChain cycle(*a.dag, rand, *a.structure, MoveChain::Cycle, k, 1, targeting);
            unsigned int built = exercise(*a.dag, cycle, 600, true, [](unsigned int raised, unsigned int lowered, bool ok) {
                EXPECT_EQ(raised, lowered);
                EXPECT_GE(raised, 2u);
                EXPECT_TRUE(ok);
            });
            EXPECT_GT(built, 5u);
        }
    }
    // The accepted cycles left a permutation other than the identity.
    unsigned int offDiagonal = 0;
    for (unsigned int i = 0; i < a.n; ++i) offDiagonal += a.dag->currentValue(a.x[i * a.n + i]) == 0;
    EXPECT_GT(offDiagonal, 0u);
}

TEST(MoveChainTest, TargetedCyclesOfAnInfeasibleSolutionStartInAViolatedSum) {
    // The identity without its first queen: row 0 and column 0 hold
    // nothing, every other row and column is settled. With violation
    // targeting, a targeted cycle's first flip raises a boolean of row 0 or
    // column 0; without it, the start comes from the objective and lands
    // elsewhere too.
    Assignment a(6);
    std::vector<long long> start(a.n * a.n, 0);
    for (unsigned int i = 1; i < a.n; ++i) start[i * a.n + i] = 1;
    for (bool targetingViolations : {true, false}) {
        SCOPED_TRACE(targetingViolations ? "violation targeting" : "objective targeting");
        std::unique_ptr<Dag> dag = a.g.makeDag(start);
        Propagation& p = dag->getPropagation();
        p.desactivateAllConstraints();
        p.activateAllSatisfiedConstraints(*dag);
        ASSERT_EQ(p.getViolatedConstraints().sizeIn(), 2u);
        AutonomousStructure structure(*dag, *a.autonomous);
        Quickrand rand(11);
        MoveChain cycle(*dag, rand, structure, MoveChain::Cycle, 3, 1, 100);
        cycle.setViolationTargeting(targetingViolations);
        unsigned int built = 0, repairing = 0;
        for (unsigned int i = 0; i < 300; ++i) {
            if (!cycle.modify()) {
                cycle.update(MoveInfeasible);
                continue;
            }
            ++built;
            const unsigned int first = p.getModifiedVariables().front();
            const unsigned int position = static_cast<unsigned int>(
                std::find(a.x.begin(), a.x.end(), first) - a.x.begin());
            repairing += dag->currentValue(first) == 0 && (position / a.n == 0 || position % a.n == 0);
            cycle.update(MoveRejected);
        }
        ASSERT_GT(built, 20u);
        if (targetingViolations) EXPECT_EQ(repairing, built);
        else EXPECT_LT(repairing, built);
    }
}

TEST(MoveChainTest, KnapsackChainsStayWithinTheCapacityAndFindTheTradesFlipsMiss) {
    // From the stalled packing no single flip helps; every chain that is
    // built fits the capacity (a chain that cannot settle it is not
    // built), and each kind finds packings worth more than 247.
    for (unsigned int kind = 0; kind < 4; ++kind) {
        StalledKnapsack s;
        Quickrand rand(3 + kind);
        std::unique_ptr<Move> move;
        switch (kind) {
            case 0: move = std::make_unique<MoveChain>(*s.dag, rand, *s.structure, MoveChain::Path, 3, 1, 50); break;
            case 1: move = std::make_unique<MoveChain>(*s.dag, rand, *s.structure, MoveChain::Cycle, 4, 1, 50); break;
            case 2:
                move = std::make_unique<MoveChain>(*s.dag, rand, *s.structure, MoveChain::ForkPath, 3, 1, 50, 2);
                break;
            default:
                move = std::make_unique<MoveChain>(*s.dag, rand, *s.structure, MoveChain::ForkCycle, 4, 1, 50, 3);
                break;
        }
        SCOPED_TRACE(move->getName());
        long long best = 0;
        unsigned int built = exercise(*s.dag, *move, 400, false, [&](unsigned int raised, unsigned int lowered, bool ok) {
            EXPECT_TRUE(ok);
            EXPECT_GE(raised + lowered, 1u);
            best = std::max(best, s.dag->newValue(s.model.value));
        });
        EXPECT_GT(built, 30u);
        EXPECT_GT(best, 247);
    }
}

TEST(MoveChainTest, SetCoverPathsRepairTheRowsTheyUncoverAtLeastCost) {
    // Column 0 (cost 10) alone covers rows 0 and 1. Dropping it uncovers
    // both; columns 1 (cost 3) and 6 (cost 9) cover both, columns 2 and 3
    // (cost 4) one each. Each row has three opposites, all weighed: a path
    // dropping column 0 repairs both rows with one column, the cheaper.
    TestGraph g;
    std::vector<unsigned int> x;
    for (int j = 0; j < 7; ++j) x.push_back(g.boolean());
    unsigned int one = g.constant(1);
    const std::vector<std::vector<unsigned int>> rows = {{0, 1, 2, 6}, {0, 1, 3, 6}, {4, 5}, {4, 5}};
    for (const std::vector<unsigned int>& row : rows) {
        std::vector<unsigned int> cover;
        for (unsigned int j : row) cover.push_back(x[j]);
        g.constraint(g.add(Geq, {g.add(BooleanSum, cover), one}));
    }
    unsigned int cost = g.add(ScalarSum, x, {10, 3, 4, 4, 1, 1, 9});
    g.objective(cost, Minimize);
    AutonomousFixedFields fields(g.close());
    std::unique_ptr<Dag> dag = g.makeDag({1, 0, 0, 0, 1, 0, 0});
    AutonomousStructure structure(*dag, fields);
    Quickrand rand(11);
    MoveChain path(*dag, rand, structure, MoveChain::Path, 2, 1, 100);
    Propagation& p = dag->getPropagation();
    unsigned int dropsOfColumn0 = 0, built = 0;
    for (int i = 0; i < 200; ++i) {
        if (!path.modify()) continue;
        ++built;
        ASSERT_TRUE(path.eval());
        // The targeted start drops a chosen column: 0, or 4 which column 5
        // replaces.
        if (dag->newValue(x[0]) == 0) {
            ++dropsOfColumn0;
            EXPECT_EQ(dag->newValue(x[1]), 1);
            EXPECT_EQ(dag->newValue(x[2]) + dag->newValue(x[3]) + dag->newValue(x[6]), 0);
        } else {
            EXPECT_EQ(dag->newValue(x[5]), 1);
        }
        p.rollback(*dag);
    }
    EXPECT_GT(built, 100u);
    EXPECT_GT(dropsOfColumn0, 40u);
}

TEST(MoveChainTest, FillsPackTheItemsOfBestValuePerWeightThatTheDropsLetIn) {
    // From the stalled packing (items 0, 3, 8), each built fill gives up k
    // packed items, then packs the item of best value per weight that
    // fits, again and again, as the greedy below does from the packing the
    // drops leave. Dropping item 8 alone leads to the optimum, 309.
    const std::vector<long long> weights = {23, 31, 29, 44, 53, 38, 63, 85, 89, 82};
    const std::vector<long long> values = {92, 57, 49, 68, 60, 43, 67, 84, 87, 72};
    const long long capacity = 165;
    std::vector<unsigned int> byRatio(weights.size());
    for (unsigned int j = 0; j < byRatio.size(); ++j) byRatio[j] = j;
    std::sort(byRatio.begin(), byRatio.end(),
              [&](unsigned int a, unsigned int b) { return values[a] * weights[b] > values[b] * weights[a]; });
    for (unsigned int k : {1u, 2u}) {
        StalledKnapsack s;
        Quickrand rand(5 + k);
        MoveChain fill(*s.dag, rand, *s.structure, MoveChain::Fill, k, 1, 0);
        SCOPED_TRACE(fill.getName());
        const std::vector<unsigned int>& x = s.model.items;
        long long best = 0;
        unsigned int built = exercise(*s.dag, fill, 100, false, [&](unsigned int, unsigned int lowered, bool ok) {
            EXPECT_TRUE(ok);
            EXPECT_EQ(lowered, k);
            long long load = 0;
            std::vector<bool> dropped(x.size()), expected(x.size());
            for (unsigned int j = 0; j < x.size(); ++j) {
                dropped[j] = s.dag->currentValue(x[j]) == 1 && s.dag->newValue(x[j]) == 0;
                expected[j] = s.dag->currentValue(x[j]) == 1 && !dropped[j];
                if (expected[j]) load += weights[j];
            }
            for (unsigned int j : byRatio)
                if (!expected[j] && !dropped[j] && load + weights[j] <= capacity) {
                    expected[j] = true;
                    load += weights[j];
                }
            for (unsigned int j = 0; j < x.size(); ++j) EXPECT_EQ(s.dag->newValue(x[j]), expected[j] ? 1 : 0) << j;
            best = std::max(best, s.dag->newValue(s.model.value));
        });
        EXPECT_EQ(built, 100u);
        EXPECT_EQ(best, k == 1 ? 309 : 258);
    }
}

TEST(MoveChainTest, DeepFillsKeepTheRoundsUpToTheBestEndingOne) {
    // Knapsacks of three rows over every item, from a random packing that
    // fits; the search wanders (every third move committed). Each built
    // deep fill ran at most k rounds, each of one item given up and the room
    // filled; it kept the rounds up to the first of the best gain, which is
    // what the evaluation finds, breaks no row, and leaves no item out that
    // gains and fits, but those it gave up.
    for (unsigned int seed = 1; seed <= 6; ++seed) {
        std::mt19937 random(seed);
        const unsigned int n = 14 + seed * 3, m = 3;
        TestGraph g;
        std::vector<unsigned int> x;
        for (unsigned int j = 0; j < n; ++j) x.push_back(g.boolean());
        std::vector<std::vector<long long>> weights(m);
        std::vector<long long> capacities, values;
        for (unsigned int r = 0; r < m; ++r) {
            long long total = 0;
            for (unsigned int j = 0; j < n; ++j) total += weights[r].emplace_back(5 + random() % 40);
            capacities.push_back(total / 3);
            g.constraint(g.add(Leq, {g.add(ScalarSum, x, weights[r]), g.constant(capacities.back())}));
        }
        for (unsigned int j = 0; j < n; ++j) values.push_back(1 + random() % 60);
        const unsigned int value = g.add(ScalarSum, x, values);
        g.objective(value, Maximize);
        AutonomousFixedFields fields(g.close());
        // Items in random order, packed while they fit.
        std::vector<long long> start(n, 0), used(m, 0);
        for (unsigned int j = 0; j < n; ++j) {
            bool fits = true;
            for (unsigned int r = 0; r < m; ++r) fits = fits && used[r] + weights[r][j] <= capacities[r];
            if (!fits || random() % 2) continue;
            start[j] = 1;
            for (unsigned int r = 0; r < m; ++r) used[r] += weights[r][j];
        }
        std::unique_ptr<Dag> dag = g.makeDag(start);
        AutonomousStructure structure(*dag, fields);
        Quickrand rand(seed);
        for (unsigned int k : {2u, 5u, 8u}) {
            ASSERT_TRUE(MoveChain::isValidK(MoveChain::DeepFill, k, fields));
            MoveChain deep(*dag, rand, structure, MoveChain::DeepFill, k, 1, 0);
            SCOPED_TRACE(deep.getName() + " seed " + std::to_string(seed));
            unsigned int longer = 0;
            const unsigned int built = exercise(*dag, deep, 150, true, [&](unsigned int, unsigned int, bool ok) {
                EXPECT_TRUE(ok);
                const std::vector<MoveChain::Round>& rounds = deep.getRounds();
                ASSERT_FALSE(rounds.empty());
                ASSERT_LE(rounds.size(), k);
                std::size_t best = 0;
                for (std::size_t r = 0; r < rounds.size(); ++r) {
                    EXPECT_TRUE(rounds[r].settled);
                    EXPECT_GT(rounds[r].end, r == 0 ? 0 : rounds[r - 1].end);
                    if (rounds[r].worth > rounds[best].worth) best = r;
                }
                longer += best > 0;
                EXPECT_EQ(dag->getPropagation().getModifiedVariables().size(), rounds[best].end);
                EXPECT_EQ(dag->newValue(value) - dag->currentValue(value), rounds[best].worth);
                // The loads from the items: the rows' sums are not all
                // evaluated in the graph when the kept scores judge a move.
                std::vector<long long> load(m, 0);
                for (unsigned int r = 0; r < m; ++r) {
                    for (unsigned int j = 0; j < n; ++j) load[r] += weights[r][j] * dag->newValue(x[j]);
                    EXPECT_LE(load[r], capacities[r]);
                }
                for (unsigned int j = 0; j < n; ++j) {
                    if (dag->currentValue(x[j]) != 0 || dag->newValue(x[j]) != 0) continue;
                    bool fits = true;
                    for (unsigned int r = 0; r < m; ++r) fits = fits && load[r] + weights[r][j] <= capacities[r];
                    EXPECT_FALSE(fits) << "item " << j << " left out";
                }
            });
            EXPECT_GT(built, 100u);
            // Some kept more than their first round.
            EXPECT_GT(longer, 0u);
        }
    }
    StalledKnapsack s;
    EXPECT_FALSE(MoveChain::isValidK(MoveChain::DeepFill, 1, *s.autonomous));
    EXPECT_TRUE(MoveChain::isValidK(MoveChain::DeepFill, MoveChain::MAX_DEEP_ROUNDS, *s.autonomous));
    EXPECT_FALSE(MoveChain::isValidK(MoveChain::DeepFill, MoveChain::MAX_DEEP_ROUNDS + 1, *s.autonomous));
}

TEST(MoveChainTest, FillsBuyAColumnAndSellWhatItMakesRedundant) {
    // From a cover with no redundant column, a fill buys one column and
    // sells columns of its rows until none of them is redundant; a fill
    // that sells nothing is not built.
    const std::vector<std::vector<unsigned int>> rows = {{0, 1, 4}, {0, 2, 5}, {1, 3, 6}, {2, 3, 7}, {4, 5, 6, 7}, {0, 3}};
    const std::vector<long long> costs = {5, 3, 4, 6, 2, 7, 8, 1};
    TestGraph g;
    std::vector<unsigned int> x;
    for (unsigned int j = 0; j < costs.size(); ++j) x.push_back(g.boolean());
    unsigned int one = g.constant(1);
    for (const std::vector<unsigned int>& row : rows) {
        std::vector<unsigned int> cover;
        for (unsigned int j : row) cover.push_back(x[j]);
        g.constraint(g.add(Geq, {g.add(BooleanSum, cover), one}));
    }
    g.objective(g.add(ScalarSum, x, costs), Minimize);
    AutonomousFixedFields fields(g.close());
    std::unique_ptr<Dag> dag = g.makeDag({1, 0, 0, 1, 1, 0, 0, 0});
    AutonomousStructure structure(*dag, fields);
    Quickrand rand(4);
    MoveChain fill(*dag, rand, structure, MoveChain::Fill, 1, 1, 0);
    std::map<unsigned int, std::set<unsigned int>> sold;
    for (int i = 0; i < 200; ++i) {
        if (!fill.modify()) {
            fill.update(MoveInfeasible);
            continue;
        }
        ASSERT_TRUE(fill.eval());
        unsigned int bought = 0;
        std::set<unsigned int> gone;
        for (unsigned int j = 0; j < costs.size(); ++j) {
            if (dag->currentValue(x[j]) == 0 && dag->newValue(x[j]) == 1) bought = j;
            if (dag->currentValue(x[j]) == 1 && dag->newValue(x[j]) == 0) gone.insert(j);
        }
        sold[bought].insert(gone.begin(), gone.end());
        // No column sharing a row with the bought one is left redundant.
        for (const std::vector<unsigned int>& row : rows) {
            if (!std::count(row.begin(), row.end(), bought)) continue;
            for (unsigned int j : row) {
                if (j == bought || dag->newValue(x[j]) == 0) continue;
                bool needed = false;
                for (const std::vector<unsigned int>& other : rows) {
                    if (!std::count(other.begin(), other.end(), j)) continue;
                    long long covering = 0;
                    for (unsigned int c : other) covering += dag->newValue(x[c]);
                    needed = needed || covering == 1;
                }
                EXPECT_TRUE(needed) << "column " << j << " after buying " << bought;
            }
        }
        fill.update(MoveRejected);
    }
    // Buying column 1 makes nothing redundant; 2 and 5 free column 0 (5
    // could sell 4 instead, but 0 saves more for the room it gives up: 5
    // for three rows covered twice against 2 for two), 6 and 7 free
    // column 4.
    const std::map<unsigned int, std::set<unsigned int>> expected = {{2, {0}}, {5, {0}}, {6, {4}}, {7, {4}}};
    EXPECT_EQ(sold, expected);
}

TEST(MoveChainTest, ConstrainedSumsTakeTheRangeOfTheirConstantComparisons) {
    TestGraph g;
    std::vector<unsigned int> b;
    for (int i = 0; i < 12; ++i) b.push_back(g.boolean());
    auto sum = [&](unsigned int first) { return g.add(Sum, {b[first], b[first + 1]}); };
    unsigned int atLeast = sum(0), atMost = sum(2), exactly = sum(4), strict = sum(6), nested = sum(8),
                 mixed = sum(10);
    g.constraint(g.add(Geq, {atLeast, g.constant(1)}));
    g.constraint(g.add(Geq, {g.constant(1), atMost}));  // 1 >= sum: at most 1
    g.constraint(g.add(Eq, {exactly, g.constant(1)}));
    g.constraint(g.add(Lt, {strict, g.constant(2)}));
    g.constraint(g.add(Gt, {strict, g.constant(0)}));
    g.constraint(g.add(Leq, {g.add(Max, {nested, b[0]}), g.constant(1)}));
    g.constraint(g.add(Leq, {mixed, g.constant(1)}));
    g.objective(g.add(Sum, {mixed, nested, b[1]}), Maximize);
    AutonomousFixedFields fields(g.close());
    const long long MIN = std::numeric_limits<long long>::min(), MAX = std::numeric_limits<long long>::max();
    auto range = [&](unsigned int node) {
        const SumRange& root = fields.getRange(fields.rootSumIndex(node));
        return std::make_tuple(root.ranged, root.ranged ? root.lowest : 0, root.ranged ? root.highest : 0);
    };
    EXPECT_EQ(range(atLeast), std::make_tuple(true, 1LL, MAX));
    EXPECT_EQ(range(atMost), std::make_tuple(true, MIN, 1LL));
    EXPECT_EQ(range(exactly), std::make_tuple(true, 1LL, 1LL));
    EXPECT_EQ(range(strict), std::make_tuple(true, 1LL, 1LL));
    // Watched through a maximum: no known range, kept level.
    EXPECT_EQ(range(nested), std::make_tuple(false, 0LL, 0LL));
    // Feeding the objective as well does not take the range away.
    EXPECT_EQ(range(mixed), std::make_tuple(true, MIN, 1LL));
}

TEST(MoveChainTest, SequencesAreTheInterchangeableColumnsOfAnAssignment) {
    // Square assignment: rows and columns are both families of equal
    // equalities over the same other sums.
    Assignment a(6);
    ASSERT_EQ(a.autonomous->getSequences().size(), 2u);
    for (const SumSequence& sequence : a.autonomous->getSequences()) {
        EXPECT_EQ(sequence.columns.size(), 6u);
        EXPECT_EQ(sequence.nbRows, 6u);
        EXPECT_TRUE(std::is_sorted(sequence.columns.begin(), sequence.columns.end()));
    }
    // Booleans in many constrained sums, or sums of unequal ranges: none.
    EXPECT_TRUE(StalledKnapsack().autonomous->getSequences().empty());
    SearchModels::SetCover cover({{0, 1}, {1, 2}, {0, 2}, {2, 3}}, 4);
    EXPECT_TRUE(AutonomousFixedFields(cover.g.fixed).getSequences().empty());
    // Four jobs given to one of three agents each, the agents' loads capped:
    // counted loads make the jobs a sequence, weighted ones (sizes) do not.
    for (bool weighted : {false, true}) {
        TestGraph g;
        const unsigned int jobs = 4, agents = 3;
        std::vector<unsigned int> give;
        for (unsigned int i = 0; i < jobs * agents; ++i) give.push_back(g.boolean());
        for (unsigned int j = 0; j < jobs; ++j)
            g.constraint(g.add(Eq, {g.add(Sum, {give[j * agents], give[j * agents + 1], give[j * agents + 2]}),
                                    g.constant(1)}));
        for (unsigned int a = 0; a < agents; ++a) {
            std::vector<unsigned int> load;
            std::vector<long long> sizes;
            for (unsigned int j = 0; j < jobs; ++j) {
                load.push_back(give[j * agents + a]);
                sizes.push_back(weighted ? 2 + j : 1);
            }
            g.constraint(g.add(Leq, {g.add(ScalarSum, load, sizes), g.constant(weighted ? 7 : 2)}));
        }
        g.objective(g.add(Sum, give), Minimize);
        g.close();
        EXPECT_EQ(AutonomousFixedFields(g.fixed).getSequences().empty(), weighted) << "weighted " << weighted;
    }

    // Eight slots taking one car each of three classes made 3, 3 and 2
    // times: the slots form a sequence; the class sums differ in range, and
    // the two of equal range are too few to count.
    TestGraph g;
    const unsigned int slots = 8, classes = 3;
    std::vector<unsigned int> car;
    for (unsigned int i = 0; i < slots * classes; ++i) car.push_back(g.boolean());
    for (unsigned int s = 0; s < slots; ++s)
        g.constraint(g.add(Eq, {g.add(Sum, {car[s], car[slots + s], car[2 * slots + s]}), g.constant(1)}));
    const long long demand[] = {3, 3, 2};
    for (unsigned int c = 0; c < classes; ++c) {
        std::vector<unsigned int> made(car.begin() + c * slots, car.begin() + (c + 1) * slots);
        g.constraint(g.add(Eq, {g.add(Sum, made), g.constant(demand[c])}));
    }
    // Penalise class 0 next to class 0.
    std::vector<unsigned int> pairs;
    for (unsigned int s = 0; s + 1 < slots; ++s) pairs.push_back(g.add(And, {car[s], car[s + 1]}));
    g.objective(g.add(Sum, pairs), Minimize);
    g.close();
    const unsigned int order[] = {0, 0, 0, 1, 1, 1, 2, 2};
    std::vector<long long> start(slots * classes, 0);
    for (unsigned int s = 0; s < slots; ++s) start[order[s] * slots + s] = 1;
    std::unique_ptr<Dag> dag = g.makeDag(start);
    AutonomousFixedFields fields(g.fixed);
    ASSERT_EQ(fields.getSequences().size(), 1u);
    const SumSequence& sequence = fields.getSequences()[0];
    ASSERT_EQ(sequence.columns.size(), slots);
    AutonomousStructure structure(*dag, fields);

    // Every reversal mirrors one block of slots and keeps every slot and
    // class sum: the classes read the same outside the block and backwards
    // inside it.
    Quickrand rand(7);
    MoveKReversal reverser(*dag, rand, structure, 1, 50);
    EXPECT_EQ(reverser.getName(), "1-Reversal");
    Propagation& p = dag->getPropagation();
    unsigned int built = 0;
    std::vector<unsigned int> lengths(slots + 1, 0);
    for (int i = 0; i < 300; ++i) {
        if (!reverser.modify()) {
            EXPECT_EQ(p.getModifiedVariables().size(), 0u);
            continue;
        }
        ++built;
        unsigned int now[slots];
        for (unsigned int s = 0; s < slots; ++s) {
            unsigned int ones = 0;
            for (unsigned int c = 0; c < classes; ++c)
                if (dag->newValue(car[c * slots + s]) == 1) {
                    now[s] = c;
                    ++ones;
                }
            ASSERT_EQ(ones, 1u);
        }
        unsigned int low = 0, high = slots - 1;
        while (low < slots && now[low] == order[low]) ++low;
        while (high > low && now[high] == order[high]) --high;
        ASSERT_LT(low, high);
        for (unsigned int s = low; s <= high; ++s) EXPECT_EQ(now[s], order[low + high - s]);
        ++lengths[high - low + 1];
        EXPECT_TRUE(reverser.eval());
        reverser.update(MoveRejected);
    }
    EXPECT_GT(built, 150u);
    // Short and long blocks both come up.
    EXPECT_GT(lengths[2], 0u);
    EXPECT_GT(lengths[slots], 0u);
}

TEST(MoveChainTest, ValidSizesAndRefusals) {
    StalledKnapsack s;
    const AutonomousFixedFields& fields = *s.autonomous;
    EXPECT_FALSE(MoveChain::isValidK(MoveChain::Path, 1, fields));
    EXPECT_TRUE(MoveChain::isValidK(MoveChain::Path, 2, fields));
    EXPECT_TRUE(MoveChain::isValidK(MoveChain::Cycle, 2, fields));
    EXPECT_FALSE(MoveChain::isValidK(MoveChain::ForkPath, 2, fields));
    EXPECT_TRUE(MoveChain::isValidK(MoveChain::ForkCycle, 3, fields));
    Quickrand rand(1);
    EXPECT_EQ(MoveChain(*s.dag, rand, *s.structure, MoveChain::Cycle, 4, 1, 0).getName(), "4-Cycle");
    EXPECT_EQ(MoveChain(*s.dag, rand, *s.structure, MoveChain::Path, 2, 1, 0).getName(), "2-Path");
    EXPECT_EQ(MoveChain(*s.dag, rand, *s.structure, MoveChain::ForkCycle, 3, 1, 0, 2).getName(), "3-ForkCycle");
    EXPECT_EQ(MoveChain(*s.dag, rand, *s.structure, MoveChain::ForkPath, 3, 1, 0, 3).getName(), "3-ForkPath");
    // A fill gives up one or two booleans, where an objective sum and a
    // constrained one are.
    EXPECT_TRUE(MoveChain::isValidK(MoveChain::Fill, 1, fields));
    EXPECT_TRUE(MoveChain::isValidK(MoveChain::Fill, 2, fields));
    EXPECT_FALSE(MoveChain::isValidK(MoveChain::Fill, 3, fields));
    EXPECT_EQ(MoveChain(*s.dag, rand, *s.structure, MoveChain::Fill, 2, 1, 0).getName(), "2-Fill");
    {
        // Conflict pairs (x + y <= 1) under a sum to maximise: no fills;
        // one wide row among them brings them back.
        TestGraph g;
        std::vector<unsigned int> x;
        for (int j = 0; j < 6; ++j) x.push_back(g.boolean());
        const unsigned int one = g.constant(1);
        for (int j = 0; j < 6; j += 2) g.constraint(g.add(Leq, {g.add(BooleanSum, {x[j], x[j + 1]}), one}));
        g.objective(g.add(BooleanSum, x), Maximize);
        EXPECT_FALSE(MoveChain::isValidK(MoveChain::Fill, 1, AutonomousFixedFields(g.close())));
        TestGraph wide;
        std::vector<unsigned int> y;
        for (int j = 0; j < 6; ++j) y.push_back(wide.boolean());
        const unsigned int two = wide.constant(2);
        for (int j = 0; j < 6; j += 2) wide.constraint(wide.add(Leq, {wide.add(BooleanSum, {y[j], y[j + 1]}), two}));
        wide.constraint(wide.add(Leq, {wide.add(BooleanSum, y), wide.constant(4)}));
        wide.objective(wide.add(BooleanSum, y), Maximize);
        EXPECT_TRUE(MoveChain::isValidK(MoveChain::Fill, 1, AutonomousFixedFields(wide.close())));
    }
    // A fork needs branches, a plain chain has exactly one.
    EXPECT_THROW(MoveChain(*s.dag, rand, *s.structure, MoveChain::ForkPath, 3, 1, 0, 1), KernelException);
    EXPECT_THROW(MoveChain(*s.dag, rand, *s.structure, MoveChain::Cycle, 3, 1, 0, 2), KernelException);
    EXPECT_THROW(MoveChain(*s.dag, rand, *s.structure, MoveChain::Cycle, 2, 1, 101), KernelException);

    // A capacity constraint alone: no free sum, so no path of any size,
    // while cycles still have root sums to start from.
    TestGraph g;
    std::vector<unsigned int> items;
    for (int i = 0; i < 4; ++i) items.push_back(g.boolean());
    unsigned int weight = g.add(ScalarSum, items, {3, 4, 5, 6});
    g.constraint(g.add(Leq, {weight, g.constant(9)}));
    g.objective(g.add(Max, {items[0], items[1]}), Maximize);
    AutonomousFixedFields constrainedOnly(g.close());
    EXPECT_FALSE(MoveChain::isValidK(MoveChain::Path, 2, constrainedOnly));
    EXPECT_FALSE(MoveChain::isValidK(MoveChain::ForkPath, 3, constrainedOnly));
    EXPECT_TRUE(MoveChain::isValidK(MoveChain::Cycle, 2, constrainedOnly));
    EXPECT_FALSE(MoveKReversal::isValid(constrainedOnly));
}

TEST(MoveChainTest, ReversalsTakeHalfOfTheCyclesShareOnlyWhereSequencesExist) {
    // Where the model has sequences every weight counts double, the cycles
    // keep their single weight and the reversal weighs as much as all of
    // them: each kind keeps the share it had when half of the cycles'
    // draws were reversals. Elsewhere the weights are the table's.
    auto rates = [](Dag& dag, const AutonomousFixedFields& fields, bool cyclesOn, bool reversalOn = true) {
        SearchParams params;
        params.set(KCycleEnabled, cyclesOn ? 1 : 0);
        params.set(KReversalEnabled, reversalOn ? 1 : 0);
        ThreadEnv env(params, &dag, &fields, 1);
        std::map<std::string, unsigned int> byName;
        for (unsigned int m = 0; m < env.getHeuristic()->getNbMoves(); ++m)
            byName[env.getHeuristic()->getMove(m)->getName()] = env.getHeuristic()->getMove(m)->getUtilRate();
        return byName;
    };
    using namespace MoveWeights;
    Assignment a(6);
    std::map<std::string, unsigned int> withSequences = rates(*a.dag, *a.autonomous, true);
    unsigned int cycles = 0;
    for (unsigned int k = 2; k <= 8; ++k) {
        EXPECT_EQ(withSequences[Move::prefixName(k, "Cycle")], QX_MV_CYCLE_WEIGHTS[k]);
        EXPECT_EQ(withSequences[Move::prefixName(k, "Path")], 2 * QX_MV_PATH_WEIGHTS[k]);
        cycles += QX_MV_CYCLE_WEIGHTS[k];
    }
    EXPECT_EQ(withSequences["1-SimpleFlip"], 2u);
    EXPECT_EQ(withSequences["1-Reversal"], cycles);
    // The reversal has its own switch: without cycles it keeps its rate;
    // switched off, nothing doubles.
    std::map<std::string, unsigned int> noCycles = rates(*a.dag, *a.autonomous, false);
    EXPECT_EQ(noCycles["1-Reversal"], cycles);
    EXPECT_EQ(noCycles.count("3-Cycle"), 0u);
    EXPECT_EQ(noCycles["3-Path"], 2 * QX_MV_PATH_WEIGHTS[3]);
    std::map<std::string, unsigned int> noReversal = rates(*a.dag, *a.autonomous, true, false);
    EXPECT_EQ(noReversal.count("1-Reversal"), 0u);
    EXPECT_EQ(noReversal["3-Path"], QX_MV_PATH_WEIGHTS[3]);
    EXPECT_EQ(noReversal["3-Cycle"], QX_MV_CYCLE_WEIGHTS[3]);

    StalledKnapsack s;
    std::map<std::string, unsigned int> noSequences = rates(*s.dag, *s.autonomous, true);
    EXPECT_EQ(noSequences.count("1-Reversal"), 0u);
    EXPECT_EQ(noSequences["4-Cycle"], QX_MV_CYCLE_WEIGHTS[4]);
    EXPECT_EQ(noSequences["1-SimpleFlip"], 1u);
}
