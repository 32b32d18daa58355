#include "solver/kernel/dag.h"
#include "solver/kernel/move.h"
#include "solver/kernel/quickrand.h"
#include "solver/move/autonomousfixedfields.h"
#include "solver/move/autonomousstructure.h"
#include "solver/move/movekbalance.h"
#include "solver/move/movekflip.h"
#include "solver/move/movekswap.h"
#include "solver/move/movesimplekflip.h"
#include "searchmodels.h"

#include <gtest/gtest.h>

#include <set>

namespace {
// Ten booleans whose count must stay exactly 5, a weighted objective over
// them, and two booleans that the objective sees through a maximum (in no
// sum: free).
struct Exactly5 {
    Exactly5() {
        for (int i = 0; i < 10; ++i) picks.push_back(g.boolean());
        a = g.boolean();
        b = g.boolean();
        count = g.add(BooleanSum, picks);
        g.constraint(g.add(Eq, {count, g.constant(5)}));
        value = g.add(ScalarSum, picks, {5, 3, 8, 1, 9, 2, 7, 4, 6, 10});
        g.objective(g.add(Sum, {value, g.add(Max, {a, b})}), Maximize);
        g.close();
        dag = g.makeDag({1, 1, 1, 1, 1, 0, 0, 0, 0, 0});
        autonomous = std::make_unique<AutonomousFixedFields>(g.fixed);
        structure = std::make_unique<AutonomousStructure>(*dag, *autonomous);
    }
    // Applies the move `n` times, committing every other accepted one; the
    // committed count must stay 5 and every flipped variable must satisfy
    // `allowed`. Returns how many moves broke the count (two drawn pairs
    // sharing a boolean flip one boolean too few) and were refused.
    template <class Allowed>
    unsigned int exercise(Move& move, unsigned int n, Allowed allowed, unsigned int& nbFlipped) {
        Propagation& p = dag->getPropagation();
        unsigned int refused = 0;
        for (unsigned int i = 0; i < n; ++i) {
            EXPECT_TRUE(move.modify());
            for (unsigned int v : p.getModifiedVariables()) EXPECT_TRUE(allowed(v)) << "variable " << v;
            nbFlipped += static_cast<unsigned int>(p.getModifiedVariables().size());
            if (move.eval()) {
                move.update(i % 2 ? MoveAccepted : MoveRejected);
            } else {
                ++refused;
                move.update(MoveInfeasible);
            }
            EXPECT_EQ(dag->currentValue(count), 5);
        }
        return refused;
    }

    TestGraph g;
    std::vector<unsigned int> picks;
    unsigned int a, b, count, value;
    std::unique_ptr<Dag> dag;
    std::unique_ptr<AutonomousFixedFields> autonomous;
    std::unique_ptr<AutonomousStructure> structure;
    Quickrand rand{11};
};
}  // namespace

TEST(AutonomousFixedFieldsTest, ClassifiesSumsAndBooleans) {
    // x0..x3 in a constrained weight sum and the free value sum; y in two
    // constrained sums; z only in the objective; w in no sum.
    TestGraph g;
    std::vector<unsigned int> x;
    for (int i = 0; i < 4; ++i) x.push_back(g.boolean());
    unsigned int y = g.boolean(), z = g.boolean(), w = g.boolean();
    unsigned int weight = g.add(ScalarSum, {x[0], x[1], x[2], x[3], y}, {2, 3, 4, 5, 1});
    unsigned int other = g.add(Sum, {y, g.scalar(-2, x[0]), g.scalar(0, x[1])});
    unsigned int value = g.add(Sum, {x[0], x[1], x[2], x[3], z, z});
    g.constraint(g.add(Leq, {weight, g.constant(7)}));
    g.constraint(g.add(Geq, {other, g.constant(0)}));
    g.objective(g.add(Sum, {value, w}), Maximize);
    const DagFixedFields& fixed = g.close();
    AutonomousFixedFields a(fixed);

    ASSERT_EQ(a.getNbRootSums(), 3u);
    EXPECT_EQ(a.getNbFreeRootSums(), 1u);
    EXPECT_EQ(a.getRootSums()[0].node, value);  // free sums first
    EXPECT_EQ(a.rootSumIndex(weight), 1u);
    EXPECT_EQ(a.rootSumIndex(other), 2u);
    EXPECT_EQ(a.getBalanceNodes(), (std::vector<unsigned int>{weight, other}));
    // z met twice counts once with coefficient 2; the scalar factors carry.
    const RootSum& v = a.getRootSums()[0];
    EXPECT_EQ(v.booleans, (std::vector<unsigned int>{x[0], x[1], x[2], x[3], z}));
    EXPECT_EQ(v.coefficients.back(), 2);
    // The zero-factor scalar is no root bool: other holds y and x0 (-2).
    EXPECT_EQ(a.getRootSums()[2].booleans, (std::vector<unsigned int>{y, x[0]}));
    EXPECT_EQ(a.getRootSums()[2].coefficients, (std::vector<long long>{1, -2}));

    auto rootBool = [&](unsigned int node) { return a.getRootBool(fixed.variableIndex(node)); };
    EXPECT_FALSE(rootBool(x[1]).isFree());
    EXPECT_TRUE(rootBool(x[1]).isMonoConstrained());
    EXPECT_FALSE(rootBool(x[0]).isMonoConstrained());  // weight and other
    EXPECT_FALSE(rootBool(y).isMonoConstrained());
    EXPECT_TRUE(rootBool(z).isFree());
    EXPECT_TRUE(rootBool(w).isFree());
    EXPECT_FALSE(rootBool(w).isMonoConstrained());  // no sum at all
    EXPECT_EQ(a.getFreeBooleans(), (std::vector<unsigned int>{z, w}));
    EXPECT_EQ(a.getMonoConstrainedBooleans(), (std::vector<unsigned int>{x[1], x[2], x[3], z}));
    EXPECT_TRUE(MoveKFlip::isValidK(2, a));
    EXPECT_FALSE(MoveKFlip::isValidK(3, a));
    EXPECT_TRUE(MoveKSwap::isValidK(2, a));
    EXPECT_FALSE(MoveKSwap::isValidK(3, a));
    EXPECT_TRUE(MoveKBalance::isValidK(2, a));
    EXPECT_FALSE(MoveKBalance::isValidK(3, a));
}

// Each boolean's block has a header naming it, then one entry per sum it
// is in, carrying its position there and its coefficient; unit sums keep no
// coefficient list.
TEST(AutonomousFixedFieldsTest, BlocksOfASumLeadToItsBooleans) {
    TestGraph g;
    std::vector<unsigned int> x;
    for (int i = 0; i < 4; ++i) x.push_back(g.boolean());
    unsigned int unit = g.add(Sum, {x[0], x[1], x[2]});
    unsigned int weighted = g.add(ScalarSum, {x[3], x[1], x[0]}, {5, -1, 1});
    g.constraint(g.add(Eq, {unit, g.constant(1)}));
    g.constraint(g.add(Leq, {weighted, g.constant(4)}));
    g.objective(g.add(Sum, {x[2], x[3]}), Maximize);
    const DagFixedFields& fixed = g.close();
    AutonomousFixedFields a(fixed);
    ASSERT_EQ(a.getNbRootSums(), 3u);
    const RootSum& units = a.getRootSums()[a.rootSumIndex(unit)];
    EXPECT_TRUE(units.hasUnitCoefficients());
    EXPECT_EQ(units.coefficientAt(2), 1);
    EXPECT_FALSE(a.getRootSums()[a.rootSumIndex(weighted)].hasUnitCoefficients());
    for (unsigned int s = 0; s < a.getNbRootSums(); ++s) {
        const RootSum& sum = a.getRootSums()[s];
        for (unsigned int j = 0; j < sum.booleans.size(); ++j) {
            const unsigned int rank = fixed.variableIndex(sum.booleans[j]);
            const RootBool rootBool = a.rootBoolAt(a.blockOf(rank));
            EXPECT_EQ(rootBool.getNode(), sum.booleans[j]);
            EXPECT_TRUE(rootBool.isSame(a.getRootBool(rank)));
            unsigned int found = 0;
            for (const RootBool::Entry& entry : rootBool.getEntries()) {
                if (entry.sum != s) continue;
                ++found;
                EXPECT_EQ(entry.position, j);
                EXPECT_EQ(entry.coefficient, sum.coefficientAt(j));
            }
            EXPECT_EQ(found, 1u) << "sum " << s << " position " << j;
        }
    }
    // x1 is in the two constrained sums only, x2 in the objective too.
    const RootBool x1 = a.getRootBool(fixed.variableIndex(x[1]));
    EXPECT_EQ(x1.getNbRootSums(), 2u);
    EXPECT_EQ(x1.getNbFreeRootSums(), 0u);
    const RootBool x2 = a.getRootBool(fixed.variableIndex(x[2]));
    EXPECT_EQ(x2.getNbFreeRootSums(), 1u);
    EXPECT_EQ(x2.freeEntries()[0].sum, 0u);  // the free sum has the lowest index
    EXPECT_EQ(x2.constrainedEntries()[0].sum, a.rootSumIndex(unit));
}

// On a board, rows, columns and the two directions of diagonals each share
// no square among themselves: a few families (at least four, as a square
// lies on four lines), no two sums of one family meeting. Where every pair
// of sums meets (the rows of a knapsack), each sum is a family of its own;
// a model needing more than the limit has none.
TEST(AutonomousFixedFieldsTest, FamiliesGroupSumsThatShareNoBoolean) {
    const unsigned int n = 5;
    TestGraph g;
    std::vector<unsigned int> q;
    for (unsigned int i = 0; i < n * n; ++i) q.push_back(g.boolean());
    const unsigned int one = g.constant(1);
    std::vector<std::vector<unsigned int>> lines;
    for (unsigned int i = 0; i < n; ++i) {
        std::vector<unsigned int> row, column;
        for (unsigned int j = 0; j < n; ++j) {
            row.push_back(q[i * n + j]);
            column.push_back(q[j * n + i]);
        }
        lines.push_back(row);
        lines.push_back(column);
    }
    for (unsigned int d = 1; d + 2 < 2 * n; ++d) {
        std::vector<unsigned int> down, up;
        for (unsigned int r = 0; r < n; ++r) {
            const int c = static_cast<int>(r) - static_cast<int>(d) + static_cast<int>(n) - 1;
            if (c >= 0 && c < static_cast<int>(n)) down.push_back(q[r * n + static_cast<unsigned int>(c)]);
            if (d >= r && d - r < n) up.push_back(q[r * n + d - r]);
        }
        lines.push_back(down);
        lines.push_back(up);
    }
    for (const std::vector<unsigned int>& line : lines) g.constraint(g.add(Leq, {g.add(Sum, line), one}));
    g.objective(g.add(Sum, {q[0], q[1]}), Maximize);
    const DagFixedFields& fixed = g.close();
    AutonomousFixedFields a(fixed);
    EXPECT_GE(a.getNbFamilies(), 4u);
    const std::vector<RootSum>& sums = a.getRootSums();
    for (unsigned int s = a.getNbFreeRootSums(); s < sums.size(); ++s) {
        ASSERT_NE(a.familyOf(s), AutonomousFixedFields::NO_FAMILY) << "sum " << s;
        for (unsigned int t = s + 1; t < sums.size(); ++t) {
            bool meet = false;
            for (unsigned int b : sums[s].booleans)
                meet = meet || std::find(sums[t].booleans.begin(), sums[t].booleans.end(), b) != sums[t].booleans.end();
            if (meet) {
                EXPECT_NE(a.familyOf(s), a.familyOf(t)) << "sums " << s << " and " << t;
            }
        }
    }
    EXPECT_EQ(a.familyOf(0), AutonomousFixedFields::NO_FAMILY);  // the free objective sum

    // Every pair of rows meets: as many families as rows, up to the limit.
    for (unsigned int rows : {3u, AutonomousFixedFields::MAX_FAMILIES + 1}) {
        TestGraph k;
        std::vector<unsigned int> x;
        for (unsigned int i = 0; i < 4; ++i) x.push_back(k.boolean());
        for (unsigned int r = 0; r < rows; ++r)
            k.constraint(k.add(Leq, {k.add(ScalarSum, x, {1, 2, 3, static_cast<long long>(r) + 1}), k.constant(5)}));
        k.objective(k.add(Sum, x), Maximize);
        AutonomousFixedFields b(k.close());
        EXPECT_EQ(b.getNbFamilies(), rows == 3 ? 3u : 0u) << rows << " rows";
        EXPECT_EQ(b.familyOf(1) == AutonomousFixedFields::NO_FAMILY, rows != 3) << rows << " rows";
    }
}

TEST(MoveTest, SwapsAndBalancesKeepAnEqualitySumLevel) {
    Exactly5 m;
    ASSERT_EQ(m.dag->getPropagation().getActiveConstraints().sizeOut(), 0u);
    auto inPicks = [&](unsigned int v) { return v < 10; };
    for (unsigned int k = 1; k <= 2; ++k) {
        for (unsigned int targeting : {0u, 50u, 100u}) {
            SCOPED_TRACE("k " + std::to_string(k) + " targeting " + std::to_string(targeting));
            MoveKSwap swap(*m.dag, m.rand, *m.structure, k, 1, targeting);
            unsigned int flipped = 0;
            const unsigned int refused = m.exercise(swap, 300, inPicks, flipped);
            // With no targeting a 1-swap picks k - 1 = 0 booleans: nothing.
            if (k == 1 && targeting == 0) EXPECT_EQ(flipped, 0u);
            else EXPECT_GT(flipped, 100u);
            // Pairs drawn in one move may share a boolean (a 1-swap draws
            // two when its target is node 0): rarely, and never committed.
            EXPECT_LT(refused, k == 1 ? 30u : 150u);
            // Kept whole, pairs always keep the count.
            MoveKSwap whole(*m.dag, m.rand, *m.structure, k, 1, targeting);
            whole.setWholePairs(true);
            unsigned int wholeFlipped = 0;
            EXPECT_EQ(m.exercise(whole, 300, inPicks, wholeFlipped), 0u);
            EXPECT_EQ(wholeFlipped % 2, 0u);
        }
        MoveKBalance balance(*m.dag, m.rand, *m.structure, 1, 1);
        unsigned int flipped = 0;
        EXPECT_EQ(m.exercise(balance, 300, inPicks, flipped), 0u);
        EXPECT_EQ(flipped, 600u);  // one pair each time
    }
    // A plain flip of a constrained boolean is refused by the hard equality.
    MoveSimpleKFlip simple(*m.dag, m.rand, 1, 1);
    unsigned int refused = 0;
    for (int i = 0; i < 50; ++i) {
        ASSERT_TRUE(simple.modify());
        bool evaluated = simple.eval();
        refused += !evaluated;
        simple.update(evaluated ? MoveRejected : MoveInfeasible);
    }
    EXPECT_GT(refused, 20u);
    EXPECT_EQ(simple.getNbInfeasibles(), refused);
    EXPECT_EQ(simple.getNbAttempted(), 50u);
}

TEST(MoveTest, FlipsTouchOnlyFreeBooleansAndTargetingFollowsTheObjective) {
    Exactly5 m;
    auto isFree = [&](unsigned int v) { return v == m.a || v == m.b; };
    unsigned int flipped = 0;
    MoveKFlip flip2(*m.dag, m.rand, *m.structure, 2, 1, 0);
    m.exercise(flip2, 40, isFree, flipped);
    EXPECT_EQ(flipped, 80u);
    // Always targeted: the objective asks for a boolean that raises it, and
    // a free one is flipped on top of k - 1 random ones.
    MoveKFlip targeted(*m.dag, m.rand, *m.structure, 1, 1, 100);
    unsigned int raised = 0;
    for (int i = 0; i < 40; ++i) {
        ASSERT_TRUE(targeted.modify());
        for (unsigned int v : m.dag->getPropagation().getModifiedVariables()) {
            ASSERT_TRUE(isFree(v));
            raised += m.dag->currentValue(v) == 0;
        }
        ASSERT_TRUE(targeted.eval());
        targeted.update(MoveRejected);
    }
    EXPECT_GT(raised, 0u);
    MoveKFlip tooMany(*m.dag, m.rand, *m.structure, 3, 1, 0);
    EXPECT_FALSE(tooMany.modify());
}

TEST(MoveTest, CountersNamesAndRefusals) {
    Exactly5 m;
    MoveSimpleKFlip simple(*m.dag, m.rand, 13, 2);
    EXPECT_EQ(simple.getName(), "13-SimpleFlip");
    EXPECT_FALSE(simple.modify());  // 12 booleans only
    EXPECT_FLOAT_EQ(simple.getAcceptedRatio(), 1.0f);
    MoveKSwap swap(*m.dag, m.rand, *m.structure, 3, 1, 0);
    EXPECT_EQ(swap.getName(), "3-Swap");
    EXPECT_EQ(kernelErrorOf([&] { MoveKFlip(*m.dag, m.rand, *m.structure, 1, 1, 101); }), "Bad argument value.");

    MoveKBalance balance(*m.dag, m.rand, *m.structure, 1, 4);
    for (MoveExitCode code : {MoveRejected, MoveInfeasible, MoveAccepted, MoveImproved, MoveImproved}) {
        ASSERT_TRUE(balance.modify());
        ASSERT_TRUE(balance.eval());
        long long before = m.dag->currentValue(m.value);
        long long tentative = m.dag->newValue(m.value);
        balance.update(code);
        bool kept = code == MoveAccepted || code == MoveImproved;
        EXPECT_EQ(m.dag->currentValue(m.value), kept ? tentative : before);
    }
    EXPECT_EQ(balance.getNbAttempted(), 5u);
    EXPECT_EQ(balance.getNbRejected(), 1u);
    EXPECT_EQ(balance.getNbInfeasibles(), 1u);
    EXPECT_EQ(balance.getNbAccepted(), 3u);
    EXPECT_EQ(balance.getNbImprovements(), 2u);
    EXPECT_FLOAT_EQ(balance.getAcceptedRatio(), 0.6f);
    EXPECT_FLOAT_EQ(balance.getImprovementRatio(), 0.4f);
    balance.clearStats();
    EXPECT_EQ(balance.getNbAttempted(), 0u);
    EXPECT_EQ(balance.getUtilRate(), 4u);
}
