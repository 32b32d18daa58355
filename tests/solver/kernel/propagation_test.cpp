#include "solver/kernel/propagation.h"

#include "api/kernelexception.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/daglistener.h"
#include "testgraph.h"

#include <gtest/gtest.h>

#include <functional>

namespace {
// Constraint c = (x + y <= 1) over booleans x, y; objective o = not(z) that
// no constraint reaches; d = or(x, z) feeds the objective only.
struct SmallModel {
    SmallModel(std::vector<long long> values) {
        x = g.boolean();
        y = g.boolean();
        z = g.boolean();
        one = g.constant(1);
        sum = g.add(Sum, {x, y});
        c = g.add(Leq, {sum, one});
        d = g.add(Or, {x, z});
        o = g.add(Not, {d});
        g.constraint(c);
        g.objective(o);
        g.close();
        dag = g.makeDag(values);
    }
    Propagation& p() { return dag->getPropagation(); }

    TestGraph g;
    unsigned int x, y, z, one, sum, c, d, o;
    std::unique_ptr<Dag> dag;
};

struct CountingListener : DagListener {
    void notifyCommit() override { ++commits; }
    int commits = 0;
};

}  // namespace

TEST(PropagationTest, PrioritiesSeparateConstraintsFromObjectives) {
    SmallModel m({0, 0, 0});
    EXPECT_EQ(m.p().getPriority(m.c), 1u);
    EXPECT_EQ(m.p().getPriority(m.sum), 2u);
    EXPECT_EQ(m.p().getPriority(m.x), 2u);
    EXPECT_EQ(m.p().getPriority(m.one), 2u);
    EXPECT_EQ(m.p().getPriority(m.d), 3u);
    EXPECT_EQ(m.p().getPriority(m.z), 3u);
}

TEST(PropagationTest, EmptyGraphEvaluatesToTrue) {
    TestGraph g;
    g.close();
    Dag dag(g.fixed);
    dag.getPropagation().init(dag);
    EXPECT_TRUE(dag.getPropagation().eval(dag));
    dag.getPropagation().commit(dag);
    EXPECT_EQ(dag.getPropagation().getNbViolatedConstraints(), 0u);
}

TEST(PropagationTest, AVariableChangesOncePerMove) {
    SmallModel m({0, 0, 0});
    m.p().modifyVariable(*m.dag, m.x, 0);  // committed value: ignored
    EXPECT_TRUE(m.p().getModifiedVariables().empty());
    EXPECT_FALSE(m.dag->isModified(m.x));
    m.p().modifyVariable(*m.dag, m.z, 1);
    m.p().modifyVariable(*m.dag, m.z, 0);  // second change: ignored
    EXPECT_EQ(m.p().getModifiedVariables(), std::vector<unsigned int>{m.z});
    ASSERT_TRUE(m.p().eval(*m.dag));
    EXPECT_EQ(m.dag->newValue(m.o), 0);
    m.p().commit(*m.dag);
    EXPECT_EQ(m.dag->currentValue(m.z), 1);
    EXPECT_EQ(m.dag->currentValue(m.o), 0);
}

TEST(PropagationTest, BrokenActiveConstraintStopsBeforeTheObjectivePass) {
    SmallModel m({1, 0, 0});
    ASSERT_TRUE(m.p().isConstraintActive(*m.dag, m.c));  // feasible start: all hard
    m.p().modifyVariable(*m.dag, m.y, 1);
    m.p().modifyVariable(*m.dag, m.x, 0);
    m.p().modifyVariable(*m.dag, m.x, 1);
    ASSERT_TRUE(m.p().eval(*m.dag));
    m.p().rollback(*m.dag);

    m.p().modifyVariable(*m.dag, m.y, 1);  // x + y = 2 > 1
    m.p().modifyVariable(*m.dag, m.z, 1);
    EXPECT_FALSE(m.p().eval(*m.dag));
    // z, feeding the objective only, was scheduled but never evaluated, so
    // nothing above it was reached.
    EXPECT_TRUE(m.dag->isModified(m.z));
    EXPECT_FALSE(m.dag->isModified(m.d));
    EXPECT_EQ(m.dag->newValue(m.d), 1);
    EXPECT_EQ(m.dag->newValue(m.c), 0);
    m.p().rollback(*m.dag);
    for (unsigned int n = 0; n < m.g.fixed.nbNodes(); ++n) {
        EXPECT_EQ(m.dag->newValue(n), m.dag->currentValue(n));
        EXPECT_FALSE(m.dag->isModified(n));
    }
    EXPECT_NO_THROW(m.dag->check());
}

TEST(PropagationTest, InfeasibleStartIsSoftUntilTheFirstFeasibleCommit) {
    SmallModel m({1, 1, 0});
    EXPECT_FALSE(m.p().isConstraintActive(*m.dag, m.c));
    EXPECT_EQ(m.p().getViolatedConstraintsCost(), 1);
    EXPECT_EQ(m.p().getNbViolatedConstraints(), 1u);
    EXPECT_EQ(kernelErrorOf([&] { m.p().activateAllConstraints(); }),
              "One or more active constraints are violated.");
    EXPECT_EQ(kernelErrorOf([&] { m.p().activateConstraint(*m.dag, m.c); }),
              "One or more active constraints are violated.");
    EXPECT_EQ(kernelErrorOf([&] { m.p().activateConstraint(*m.dag, m.sum); }), "Incorrect operator type.");

    m.p().modifyVariable(*m.dag, m.x, 0);
    ASSERT_TRUE(m.p().eval(*m.dag));
    EXPECT_EQ(m.p().getTViolatedConstraintsCost(), 0);
    EXPECT_TRUE(m.p().getEvalViolatedConstraints().isOut(0));
    m.p().commit(*m.dag);
    EXPECT_TRUE(m.p().isConstraintActive(*m.dag, m.c));
    EXPECT_EQ(m.p().getViolatedConstraints().sizeIn(), 0u);
    // The count is the one eval read before this commit's update.
    EXPECT_EQ(m.p().getNbViolatedConstraints(), 1u);
    EXPECT_NO_THROW(m.p().check(*m.dag));

    m.p().modifyVariable(*m.dag, m.x, 1);
    EXPECT_FALSE(m.p().eval(*m.dag));
    m.p().rollback(*m.dag);
    EXPECT_EQ(m.dag->currentValue(m.x), 0);
}

TEST(PropagationTest, ActivationByHand) {
    SmallModel m({0, 0, 0});
    std::vector<unsigned int> active;
    m.p().desactivateAllConstraints();
    m.p().extractActiveConstraints(active);
    EXPECT_TRUE(active.empty());
    EXPECT_FALSE(m.p().isConstraintActive(*m.dag, m.sum));
    m.p().activateAllSatisfiedConstraints(*m.dag);
    m.p().extractActiveConstraints(active);
    EXPECT_EQ(active, std::vector<unsigned int>{0});
    m.p().desactivateConstraint(*m.dag, m.c);
    EXPECT_FALSE(m.p().isConstraintActive(*m.dag, m.c));
    EXPECT_EQ(kernelErrorOf([&] { m.p().desactivateConstraint(*m.dag, m.x); }), "Incorrect operator type.");
}

TEST(PropagationTest, ListenersHearCommitsOnly) {
    SmallModel m({0, 0, 0});
    CountingListener listener;
    m.p().connectListener(&listener);
    m.p().modifyVariable(*m.dag, m.z, 1);
    ASSERT_TRUE(m.p().eval(*m.dag));
    m.p().rollback(*m.dag);
    EXPECT_EQ(listener.commits, 0);
    ASSERT_TRUE(m.p().eval(*m.dag));
    m.p().commit(*m.dag);
    EXPECT_EQ(listener.commits, 1);
    m.p().disconnectListener(&listener);
    m.p().commit(*m.dag);
    EXPECT_EQ(listener.commits, 1);
}

// Three soft constraints x <= 0, y <= 0, z <= 0 from the start x = 1: a move
// repairing the first and breaking the other two degrades the plain cost
// whatever the weights, and lowers the weighted cost once the violated
// constraint weighs more than the two it breaks.
TEST(PropagationTest, ViolationWeightsJudgeTheMoveNotTheCost) {
    TestGraph g;
    unsigned int x = g.boolean(), y = g.boolean(), z = g.boolean(), zero = g.constant(0);
    unsigned int cx = g.add(Leq, {x, zero}), cy = g.add(Leq, {y, zero}), cz = g.add(Leq, {z, zero});
    for (unsigned int c : {cx, cy, cz}) g.constraint(c);
    g.objective(g.add(Sum, {x, y, z}));
    g.close();
    std::unique_ptr<Dag> dag = g.makeDag({1, 0, 0});
    Propagation& p = dag->getPropagation();
    ASSERT_EQ(p.getActiveConstraints().sizeIn(), 0u);
    auto tryTrade = [&] {
        p.modifyVariable(*dag, x, 0);
        p.modifyVariable(*dag, y, 1);
        p.modifyVariable(*dag, z, 1);
        EXPECT_TRUE(p.eval(*dag));
        EXPECT_EQ(p.getTViolatedConstraintsCost() - p.getViolatedConstraintsCost(), 1);
        int change = p.getWeightedCostChange();
        p.rollback(*dag);
        EXPECT_EQ(p.getWeightedCostChange(), 0);
        return change;
    };
    EXPECT_EQ(tryTrade(), 1);
    p.raiseViolatedWeights();
    EXPECT_EQ(p.getViolationWeight(0), 2);
    EXPECT_EQ(p.getViolationWeight(1), 1);  // satisfied: unchanged
    EXPECT_EQ(tryTrade(), 0);
    p.raiseViolatedWeights();
    EXPECT_EQ(tryTrade(), -1);
    // Committed, the trade leaves y and z violated: they weigh more next.
    p.modifyVariable(*dag, x, 0);
    p.modifyVariable(*dag, y, 1);
    p.modifyVariable(*dag, z, 1);
    ASSERT_TRUE(p.eval(*dag));
    p.commit(*dag);
    p.raiseViolatedWeights();
    EXPECT_EQ(p.getViolationWeight(0), 3);
    EXPECT_EQ(p.getViolationWeight(1), 2);
    EXPECT_EQ(p.getViolationWeight(2), 2);
    // A new start weighs every constraint 1 again.
    p.desactivateAllConstraints();
    for (unsigned int position = 0; position < 3; ++position) EXPECT_EQ(p.getViolationWeight(position), 1);
}
