#include "apitesting.h"

#include "api/qxparam.h"
#include "api/qxsolution.h"

#include <vector>

using Op = QXOperator;
using Dir = QXObjectiveDirection;
using Status = QXSolutionStatus;

namespace {
const std::string Unit = "src/api/qxsolution";

// x + 2y + (x ? 10 : 0), constrained by x or y, minimized.
struct SmallModel {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* x = m->createExpression(Op::Bool);
    QXExpression* y = m->createExpression(Op::Bool);
    QXExpression* cost =
        m->createExpression(Op::Sum, x, m->createExpression(Op::Prod, 2, y),
                            m->createExpression(Op::Iif, x, 10, 0));
    SmallModel() {
        m->addConstraint(m->createExpression(Op::Or, x, y));
        m->addObjective(cost, Dir::Minimize);
        m->close();
    }
    QXSolution* solution() { return solver.getSolution(); }
};
}  // namespace

TEST(QXSolution, ReadsBackFromDecisionValuesWithoutSolving) {
    SmallModel s;
    QXSolution* sol = s.solution();
    EXPECT_EQ(sol->getValue(s.cost), 0);
    EXPECT_EQ(sol->getStatus(), Status::Infeasible);  // x or y is 0
    sol->setValue(s.y, 1);
    EXPECT_EQ(sol->getValue(s.cost), 2);
    EXPECT_EQ(sol->getStatus(), Status::Feasible);
    sol->setValue(s.x, 1);
    EXPECT_EQ(s.cost->getValue(), 13);
    sol->setValue(s.y, 0);
    EXPECT_EQ(sol->getValue(s.cost), 11);
    EXPECT_FALSE(sol->isInfeasible());
    EXPECT_FALSE(sol->isOptimal());
}

TEST(QXSolution, ArgumentChecks) {
    SmallModel s;
    Quarrix other;
    QXExpression* foreign = other.getModel()->createExpression(Op::Bool);
    QXSolution* sol = s.solution();
    EXPECT_TRUE(raises([&] { sol->getValue(nullptr); }, "Argument expr cannot be null.", Unit,
                       "getValue"));
    EXPECT_TRUE(raises([&] { sol->getValue(foreign); },
                       "Argument Expression 0 (type = bool) does not belong to this instance "
                       "of Quarrix.",
                       Unit, "getValue"));
    EXPECT_TRUE(raises([&] { sol->setValue(nullptr, 1); }, "Argument expr cannot be null."));
    EXPECT_TRUE(raises([&] { sol->setValue(foreign, 1); },
                       "Argument Expression 0 (type = bool) does not belong to this instance "
                       "of Quarrix."));
    EXPECT_TRUE(raises([&] { sol->setValue(s.cost, 1); }, "Only decisions can be set.", Unit,
                       "setValue"));
    EXPECT_TRUE(raises([&] { sol->setValue(s.cost->getOperand(2)->getOperand(1), 1); },
                       "Only decisions can be set."));
    // A decision takes 0 or 1 only; a refused value leaves the old one.
    sol->setValue(s.x, 1);
    for (int64_t bad : {int64_t(2), int64_t(-1), INT64_MAX, INT64_MIN})
        EXPECT_TRUE(raises([&] { sol->setValue(s.x, bad); },
                           "The value of a decision must be 0 or 1 (value given: " +
                               std::to_string(bad) + ").",
                           Unit, "setValue"));
    EXPECT_EQ(sol->getValue(s.x), 1);
    sol->setValue(s.x, 0);
}

TEST(QXSolution, StateGuards) {
    SmallModel s;
    QXSolution* sol = s.solution();
    QXSolution copy(&s.solver);
    QuarrixTestAccess::setState(s.solver, QXState::Running);
    EXPECT_TRUE(raises([&] { sol->getStatus(); }, PausedOrStoppedOnly, Unit, "getStatus"));
    EXPECT_TRUE(allRaise({
        [&] { sol->getValue(s.x); }, [&] { sol->setValue(s.x, 1); },
        [&] { sol->copyTo(&copy); }, [&] { sol->compare(&copy); }
    }, PausedOrStoppedOnly));
    EXPECT_TRUE(raises([&] { sol->clear(); }, StoppedOnly, Unit, "clear"));
    QuarrixTestAccess::setState(s.solver, QXState::Paused);
    sol->setValue(s.x, 1);
    EXPECT_EQ(sol->getValue(s.cost), 11);
    EXPECT_TRUE(raises([&] { sol->clear(); }, StoppedOnly));
    EXPECT_EQ(sol->getValue(s.x), 1);
    QuarrixTestAccess::setState(s.solver, QXState::Stopped);

    Quarrix open;
    EXPECT_TRUE(raises([&] { QXSolution early(&open); }, PausedOrStoppedOnly, Unit));
}

TEST(QXSolution, StatusFollowsConstraintsAndBounds) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* x = m->createExpression(Op::Bool);
    m->addConstraint(m->createConstant(0));
    m->addObjective(x, Dir::Maximize);
    m->close();
    EXPECT_EQ(solver.getSolution()->getStatus(), Status::Infeasible);
    EXPECT_TRUE(solver.getSolution()->isInfeasible());

    SmallModel s;
    QXSolution* sol = s.solution();
    sol->setValue(s.y, 1);
    s.solver.getParam()->setObjectiveBound(0, 2);
    EXPECT_TRUE(sol->isOptimal());  // minimized and at its bound
    EXPECT_EQ(sol->getStatus(), Status::Optimal);
    s.solver.getParam()->setObjectiveBound(0, 1);
    sol->setValue(s.y, 1);  // a change makes the status recomputed
    EXPECT_EQ(sol->getStatus(), Status::Feasible);

    Quarrix constant;
    QXModel* cm = constant.getModel();
    cm->createExpression(Op::Bool);
    cm->addObjective(cm->createConstant(3), Dir::Maximize);
    cm->close();
    EXPECT_EQ(constant.getSolution()->getStatus(), Status::Optimal);
}

TEST(QXSolution, CompareUsesRawObjectiveValuesInOrder) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* x = m->createExpression(Op::Bool);
    QXExpression* y = m->createExpression(Op::Bool);
    m->addObjective(x, Dir::Minimize);
    m->addObjective(y, Dir::Maximize);
    m->close();
    QXSolution* a = solver.getSolution();
    QXSolution b(&solver);
    EXPECT_EQ(a->compare(&b), 0);
    b.setValue(y, 1);
    EXPECT_EQ(a->compare(&b), -1);  // decided by the second objective
    EXPECT_EQ(b.compare(a), 1);
    a->setValue(x, 1);
    EXPECT_EQ(a->compare(&b), 1);  // the first objective decides, whatever its direction

    Quarrix other;
    QXModel* om = other.getModel();
    om->addObjective(om->createExpression(Op::Bool), Dir::Minimize);
    om->close();
    EXPECT_TRUE(raises([&] { a->compare(nullptr); }, "Argument solution cannot be null.", Unit,
                       "compare"));
    EXPECT_TRUE(raises([&] { a->compare(other.getSolution()); },
                       "Argument solution does not belong to this instance of Quarrix."));

    SmallModel s;
    QXSolution* infeasible = s.solution();
    QXSolution feasible(&s.solver);
    feasible.setValue(s.x, 1);
    EXPECT_TRUE(raises([&] { infeasible->compare(&feasible); },
                       "The current solution is infeasible, and thus cannot be compared."));
    EXPECT_TRUE(raises([&] { feasible.compare(infeasible); },
                       "The given solution is infeasible, and thus cannot be compared."));
}

TEST(QXSolution, CopyAndClear) {
    SmallModel s;
    QXSolution* sol = s.solution();
    QXSolution copy(&s.solver);
    sol->setValue(s.x, 1);
    sol->copyTo(&copy);
    EXPECT_EQ(copy.getValue(s.cost), 11);
    EXPECT_EQ(copy.getStatus(), Status::Feasible);
    sol->setValue(s.y, 1);  // the copy is independent
    EXPECT_EQ(copy.getValue(s.cost), 11);
    EXPECT_EQ(sol->getValue(s.cost), 13);
    EXPECT_TRUE(raises([&] { sol->copyTo(nullptr); }, "Argument dest cannot be null.", Unit,
                       "copyTo"));
    ClosedSolver other;
    EXPECT_TRUE(raises([&] { sol->copyTo(other.solver.getSolution()); },
                       "Argument dest does not belong to this instance of Quarrix."));

    sol->clear();
    EXPECT_EQ(sol->getValue(s.x), 0);
    EXPECT_EQ(sol->getValue(s.y), 0);
    EXPECT_EQ(sol->getValue(s.cost), 0);
    EXPECT_EQ(sol->getStatus(), Status::Infeasible);
    sol->setValue(s.x, 1);
    EXPECT_EQ(sol->getValue(s.cost), 11);  // constants survive the clearing
}

TEST(QXSolution, OnlyWhatIsReadIsEvaluated) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* x = m->createExpression(Op::Bool);
    QXExpression* broken = m->createExpression(Op::Div, x, 0);
    QXExpression* root = m->createExpression(Op::Sqrt, m->createExpression(Op::Sum, x, -1));
    QXExpression* fine = m->createExpression(Op::Sum, x, 5);
    m->addObjective(fine, Dir::Maximize);
    m->close();
    QXSolution* sol = solver.getSolution();
    EXPECT_EQ(sol->getValue(fine), 5);
    EXPECT_EQ(sol->getStatus(), Status::Feasible);
    try {
        sol->getValue(broken);
        FAIL() << "division by zero not reported";
    } catch (const KernelException& e) {
        EXPECT_EQ(e.getExplanation(), "Division by zero.");
    }
    EXPECT_THROW(sol->getValue(root), KernelException);  // sqrt(-1)
    sol->setValue(x, 1);
    EXPECT_EQ(sol->getValue(root), 0);  // a failed reading leaves nothing behind
    EXPECT_EQ(sol->getValue(fine), 6);
    EXPECT_THROW(sol->getValue(broken), KernelException);
}

TEST(QXSolution, CyclesAreReportedNotFollowed) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* x = m->createExpression(Op::Bool);
    QXExpression* a = m->createExpression(Op::Sum, x);
    QXExpression* b = m->createExpression(Op::Sum, a);
    a->addOperand(b);
    m->addObjective(x, Dir::Maximize);
    m->close();
    EXPECT_TRUE(raises([&] { solver.getSolution()->getValue(b); },
                       "The expression graph has a cycle through Expression 2 (type = sum).",
                       Unit, "evaluateUnknown"));
    EXPECT_EQ(solver.getSolution()->getValue(x), 0);
}

// Sums nested as deep as the model, as a loop `s = s + x[i]` writes them: the
// reading must not use call stack in proportion to the depth.
TEST(QXSolution, DeepChainOfNestedSums) {
    const int n = 200000;
    Quarrix solver;
    QXModel* m = solver.getModel();
    std::vector<QXExpression*> x(n);
    for (int i = 0; i < n; ++i) x[i] = m->createExpression(Op::Bool);
    QXExpression* s = x[0];
    for (int i = 1; i < n; ++i) s = m->createExpression(Op::Sum, s, x[i]);
    m->addConstraint(m->createExpression(Op::Geq, s, 1));
    m->addObjective(s, Dir::Minimize);
    m->close();
    QXSolution* sol = solver.getSolution();
    EXPECT_EQ(sol->getValue(s), 0);
    EXPECT_EQ(sol->getStatus(), Status::Infeasible);
    for (int i = 0; i < n; i += 2) sol->setValue(x[i], 1);
    EXPECT_EQ(sol->getValue(s), n / 2);
    EXPECT_EQ(sol->getStatus(), Status::Feasible);
    EXPECT_EQ(m->getNbExpressions(), 2 * n + 1);
    EXPECT_EQ(m->getNbOperands(), 2 * (n - 1) + 2);
}

TEST(QXSolution, OneSumWithManyOperands) {
    const int n = 200000;
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* s = m->createExpression(Op::Sum);
    for (int i = 0; i < n; ++i) s->addOperand(m->createExpression(Op::Bool));
    m->addObjective(s, Dir::Maximize);
    m->close();
    QXSolution* sol = solver.getSolution();
    for (int i = 0; i < n; i += 4) sol->setValue(m->getDecision(i), 1);
    EXPECT_EQ(sol->getValue(s), n / 4);
}
