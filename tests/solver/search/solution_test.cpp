#include "solver/kernel/solution.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/greedysolution.h"
#include "solver/kernel/quickrand.h"
#include "searchmodels.h"

#include <gtest/gtest.h>

namespace {
void flipAndCommit(Dag& dag, unsigned int node) {
    dag.getPropagation().modifyVariable(dag, node, 1 - dag.currentValue(node));
    ASSERT_TRUE(dag.getPropagation().eval(dag));
    dag.getPropagation().commit(dag);
}
}  // namespace

TEST(SolutionTest, IncrementalSaveFollowsCommittedMovesOnly) {
    SearchModels::Knapsack m({3, 4, 5, 6}, {1, 2, 3, 4}, 100);
    auto dag = m.g.makeDag();
    Solution saved;
    dag->addSolutionToNotify(saved);
    dag->saveSolutionIncrementally(saved);
    EXPECT_EQ(saved.getModifications().sizeIn(), 0u);
    EXPECT_EQ(saved.getObjectiveValues(), std::vector<long long>{0});

    flipAndCommit(*dag, m.items[1]);
    flipAndCommit(*dag, m.items[2]);
    flipAndCommit(*dag, m.items[2]);  // back to the stored value
    // A rolled-back move is not a change.
    dag->getPropagation().modifyVariable(*dag, m.items[3], 1);
    ASSERT_TRUE(dag->getPropagation().eval(*dag));
    dag->getPropagation().rollback(*dag);
    EXPECT_EQ(saved.getModifications().sizeIn(), 1u);
    EXPECT_TRUE(saved.getModifications().isIn(dag->getFixedFields().variableIndex(m.items[1])));

    dag->saveSolutionIncrementally(saved);
    EXPECT_EQ(saved.getVariableValues(), (std::vector<long long>{0, 1, 0, 0}));
    EXPECT_EQ(saved.getObjectiveValues(), std::vector<long long>{2});
    EXPECT_EQ(saved.getModifications().sizeIn(), 0u);

    // The incremental save equals a full one after a long random walk.
    Quickrand rand(5);
    for (int i = 0; i < 200; ++i) flipAndCommit(*dag, m.items[rand.nextInt(4)]);
    dag->saveSolutionIncrementally(saved);
    Solution full;
    dag->saveSolution(full);
    EXPECT_EQ(saved.getVariableValues(), full.getVariableValues());
    EXPECT_EQ(saved.getObjectiveValues(), full.getObjectiveValues());
    dag->removeSolutionToNotify(saved);
}

TEST(SolutionTest, CompareRanksViolationsThenObjectivesInOrder) {
    TestGraph g;
    unsigned int a = g.boolean(), b = g.boolean(), c = g.boolean();
    g.constraint(g.add(Not, {c}));
    g.objective(g.add(Sum, {a, b}), Maximize);
    g.objective(g.add(Sum, {b, c}), Minimize);
    g.close();
    auto dag = g.makeDag();
    auto stateOf = [&](std::vector<long long> values) {
        Solution s;
        for (long long v : values) s.variables().push_back(v);
        dag->loadSolution(s);
        dag->saveSolution(s);
        return s;
    };
    Solution good = stateOf({1, 0, 0});      // feasible, obj (1, 0)
    Solution better = stateOf({1, 1, 0});    // feasible, obj (2, 1)
    Solution violating = stateOf({1, 1, 1});  // infeasible, obj (2, 2)
    EXPECT_EQ(good.getNbViolatedConstraints(), 0u);
    EXPECT_EQ(violating.getNbViolatedConstraints(), 1u);
    EXPECT_EQ(better.compare(*dag, good), 1);  // the first objective decides
    EXPECT_EQ(good.compare(*dag, better), -1);
    EXPECT_EQ(good.compare(*dag, violating), 1);  // feasibility before objectives
    EXPECT_EQ(violating.compare(*dag, good), -1);
    EXPECT_EQ(good.compare(*dag, good), 0);
    Solution secondOnly = stateOf({0, 1, 0});  // obj (1, 1): worse on the minimised second
    EXPECT_EQ(good.compare(*dag, secondOnly), 1);
    EXPECT_EQ(kernelErrorOf([&] { good.compare(*dag, Solution()); }), "Solutions have not the same structure.");
}

TEST(SolutionTest, LoadBringsTheGraphToTheStoredStateAndHardensSatisfiedConstraints) {
    SearchModels::Knapsack m({3, 4, 5, 6}, {1, 2, 3, 4}, 9);
    auto dag = m.g.makeDag();
    Solution s;
    s.variables() = {1, 0, 0, 1};
    dag->loadSolution(s);
    EXPECT_EQ(dag->currentValue(m.value), 5);
    EXPECT_EQ(dag->currentValue(m.weight), 9);
    EXPECT_EQ(dag->getPropagation().getActiveConstraints().sizeOut(), 0u);
    EXPECT_NO_THROW(dag->check());
    // Over capacity: the constraint stays soft and costed.
    s.variables() = {1, 1, 1, 0};
    dag->loadSolution(s);
    EXPECT_EQ(dag->getPropagation().getActiveConstraints().sizeIn(), 0u);
    EXPECT_EQ(dag->getPropagation().getViolatedConstraintsCost(), 3);
    EXPECT_NO_THROW(dag->getPropagation().check(*dag));
    Solution wrongSize;
    EXPECT_EQ(kernelErrorOf([&] { dag->loadSolution(wrongSize); }), "Solutions have not the same structure.");
}

TEST(GreedySolutionTest, CoversEveryRowFromScratchAndKeepsFeasibleStarts) {
    // 12 rows over 8 columns, each row with 2 or 3 columns.
    std::vector<std::vector<unsigned int>> rows;
    for (unsigned int r = 0; r < 12; ++r) rows.push_back({r % 8, (r * 3 + 1) % 8, (r * 5 + 2) % 8});
    SearchModels::SetCover m(rows, 8);
    Quickrand rand(3);
    GreedySolution greedy(&rand);
    auto dag = m.g.makeDag();
    EXPECT_TRUE(greedy.computeSolution(dag.get()));
    for (unsigned int c : dag->getFixedFields().constraints()) EXPECT_EQ(dag->currentValue(c), 1);
    EXPECT_EQ(dag->getPropagation().getActiveConstraints().sizeOut(), 0u);

    // A feasible start is kept as it is unless the greedy pass is forced.
    std::vector<long long> all(8, 1);
    all[0] = 0;
    auto feasible = m.g.makeDag(all);
    unsigned int stateBefore = rand.getState();
    EXPECT_TRUE(greedy.computeSolution(feasible.get()));
    EXPECT_EQ(feasible->currentValue(m.columns[0]), 0);
    EXPECT_EQ(rand.getState(), stateBefore);
    greedy.setSolutionForced(true);
    EXPECT_TRUE(greedy.computeSolution(feasible.get()));
    EXPECT_EQ(feasible->currentValue(m.columns[0]), 1);  // raising never hurts a cover
}

TEST(GreedySolutionTest, ReportsFailureWhenRaisingCannotHelp) {
    // x + y <= 0 violated at the start by x = 1: raising never repairs it.
    TestGraph g;
    unsigned int x = g.boolean(), y = g.boolean();
    g.constraint(g.add(Leq, {g.add(Sum, {x, y}), g.constant(0)}));
    g.objective(g.add(Sum, {x, y}), Maximize);
    g.close();
    auto dag = g.makeDag({1, 0});
    Quickrand rand(1);
    GreedySolution greedy(&rand);
    EXPECT_FALSE(greedy.computeSolution(dag.get()));
    // The rule counts violated constraints, not their cost: raising y leaves
    // one violated constraint, so it is kept although the excess grows.
    EXPECT_EQ(dag->currentValue(y), 1);
    EXPECT_EQ(dag->getPropagation().getViolatedConstraintsCost(), 2);
    Dag uninitialised(g.fixed);
    EXPECT_EQ(kernelErrorOf([&] { greedy.computeSolution(&uninitialised); }), "The dag must be initialized.");
}
