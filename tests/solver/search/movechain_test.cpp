// The chain moves on models whose balance can be checked exactly: an
// assignment (every boolean in one row and one column equality) and a
// knapsack (one capacity, one value sum).

#include "api/kernelexception.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"
#include "solver/move/autonomousfixedfields.h"
#include "solver/move/autonomousstructure.h"
#include "solver/move/movekcycle.h"
#include "solver/move/moveklforkcycle.h"
#include "solver/move/moveklforkpath.h"
#include "solver/move/movekpath.h"
#include "searchmodels.h"

#include <gtest/gtest.h>

#include <memory>

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

// Applies the move n times (committing every third evaluated one so that
// the search wanders) and hands each built change to `check` as the counts
// of booleans raised and lowered; returns how many were built.
template <class Check>
unsigned int exercise(Dag& dag, Move& move, unsigned int n, Check check) {
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
        move.update(!feasible ? MoveInfeasible : i % 3 == 0 ? MoveAccepted : MoveRejected);
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
            MoveKCycle cycle(*a.dag, rand, *a.structure, k, 1, targeting);
            unsigned int built = exercise(*a.dag, cycle, 600, [](unsigned int raised, unsigned int lowered, bool ok) {
                EXPECT_EQ(raised, lowered);
                EXPECT_GE(raised, 2u);
                EXPECT_TRUE(ok);
            });
            // Rows and columns alternate, so no cycle closes under four flips.
            if (k == 2) EXPECT_EQ(built, 0u);
            else EXPECT_GT(built, 5u);
        }
    }
    // The accepted cycles left a permutation other than the identity.
    unsigned int offDiagonal = 0;
    for (unsigned int i = 0; i < a.n; ++i) offDiagonal += a.dag->currentValue(a.x[i * a.n + i]) == 0;
    EXPECT_GT(offDiagonal, 0u);
}

TEST(MoveChainTest, KnapsackPathsTradeItemsOneForOneAndForksOneForSeveral) {
    StalledKnapsack s;
    Quickrand rand(3);
    // A path alternates: one item in, one out, through the capacity and
    // back through the value; an odd walk is ended by one more opposite.
    for (unsigned int k = 2; k <= 5; ++k) {
        SCOPED_TRACE("path k " + std::to_string(k));
        MoveKPath path(*s.dag, rand, *s.structure, k, 1, 50);
        unsigned int flips = 2 * ((k + 1) / 2);
        unsigned int built = exercise(*s.dag, path, 300, [&](unsigned int raised, unsigned int lowered, bool) {
            EXPECT_EQ(raised, lowered);
            EXPECT_EQ(raised + lowered, flips);
        });
        EXPECT_GT(built, 30u);
    }
    // Cycles close on the capacity with as many items in as out.
    for (unsigned int k = 2; k <= 5; ++k) {
        SCOPED_TRACE("cycle k " + std::to_string(k));
        MoveKCycle cycle(*s.dag, rand, *s.structure, k, 1, 50);
        unsigned int built = exercise(*s.dag, cycle, 300, [&](unsigned int raised, unsigned int lowered, bool) {
            EXPECT_EQ(raised, lowered);
            EXPECT_LE(raised + lowered, k + 1);
        });
        EXPECT_GT(built, 30u);
    }
    // A fork trades one item against l: 1 + l flips, one way once.
    for (unsigned int l = 2; l <= 3; ++l) {
        SCOPED_TRACE("forks l " + std::to_string(l));
        MoveKLForkPath forkPath(*s.dag, rand, *s.structure, l, 3, 1, 50);
        MoveKLForkCycle forkCycle(*s.dag, rand, *s.structure, l, 3, 1, 50);
        EXPECT_EQ(forkPath.getName(), "3-ForkPath");
        EXPECT_EQ(forkCycle.getName(), "3-ForkCycle");
        for (Move* fork : {static_cast<Move*>(&forkPath), static_cast<Move*>(&forkCycle)}) {
            unsigned int built = exercise(*s.dag, *fork, 300, [&](unsigned int raised, unsigned int lowered, bool) {
                EXPECT_EQ(raised + lowered, 1 + l);
                EXPECT_EQ(std::min(raised, lowered), 1u);
            });
            EXPECT_GT(built, 10u);
        }
    }
}

TEST(MoveChainTest, ValidSizesAndRefusals) {
    StalledKnapsack s;
    const AutonomousFixedFields& fields = *s.autonomous;
    EXPECT_FALSE(MoveKPath::isValidK(1, fields));
    EXPECT_TRUE(MoveKPath::isValidK(2, fields));
    EXPECT_TRUE(MoveKCycle::isValidK(2, fields));
    EXPECT_FALSE(MoveKLForkPath::isValidK(2, fields));
    EXPECT_TRUE(MoveKLForkCycle::isValidK(3, fields));
    Quickrand rand(1);
    EXPECT_EQ(MoveKCycle(*s.dag, rand, *s.structure, 4, 1, 0).getName(), "4-Cycle");
    EXPECT_EQ(MoveKPath(*s.dag, rand, *s.structure, 2, 1, 0).getName(), "2-Path");
    EXPECT_THROW(MoveKLForkPath(*s.dag, rand, *s.structure, 0, 3, 1, 0), KernelException);
    EXPECT_THROW(MoveKCycle(*s.dag, rand, *s.structure, 2, 1, 101), KernelException);

    // A capacity constraint alone: no free sum, so no path of any size,
    // while cycles still have root sums to start from.
    TestGraph g;
    std::vector<unsigned int> items;
    for (int i = 0; i < 4; ++i) items.push_back(g.boolean());
    unsigned int weight = g.add(ScalarSum, items, {3, 4, 5, 6});
    g.constraint(g.add(Leq, {weight, g.constant(9)}));
    g.objective(g.add(Max, {items[0], items[1]}), Maximize);
    AutonomousFixedFields constrainedOnly(g.close());
    EXPECT_FALSE(MoveKPath::isValidK(2, constrainedOnly));
    EXPECT_FALSE(MoveKLForkPath::isValidK(3, constrainedOnly));
    EXPECT_TRUE(MoveKCycle::isValidK(2, constrainedOnly));
}
