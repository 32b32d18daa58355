#include "apitesting.h"

#include "api/qxparam.h"
#include "api/qxphase.h"
#include "api/qxsolution.h"
#include "api/qxstatistics.h"

#include <iostream>
#include <sstream>

using Op = QXOperator;

namespace {
const std::string Unit = "src/api/quarrix";

void countCalls(void* data) { ++*static_cast<int*>(data); }
}  // namespace

TEST(Quarrix, ClosingTheModelMovesToStoppedAndMakesTheSolution) {
    Quarrix solver;
    EXPECT_EQ(solver.getState(), QXState::Modeling);
    EXPECT_TRUE(solver.isStateModeling());
    EXPECT_FALSE(solver.hasSolution());
    EXPECT_TRUE(raises([&] { solver.getSolution(); }, PausedOrStoppedOnly, Unit, "getSolution"));
    EXPECT_TRUE(allRaise({
        [&] { solver.getStatistics(); }, [&] { solver.getNbPhases(); },
        [&] { solver.getPhase(0); }
    }, PausedOrStoppedOnly));
    EXPECT_TRUE(raises([&] { solver.createPhase(); }, StoppedOnly, Unit, "createPhase"));
    EXPECT_TRUE(raises([&] { solver.solve(); }, StoppedOnly, Unit, "solve"));
    EXPECT_TRUE(raises([&] { solver.getInfo(); }, PausedOrStoppedOnly, Unit, "getInfo"));
    EXPECT_TRUE(raises([&] { solver.stop(); }, PausedOrStoppedOnly, Unit, "stop"));

    QXModel* m = solver.getModel();
    m->addObjective(m->createExpression(Op::Bool), QXObjectiveDirection::Maximize);
    m->close();
    EXPECT_TRUE(solver.isStateStopped());
    EXPECT_TRUE(solver.hasSolution());
    EXPECT_NE(solver.getSolution(), nullptr);
    EXPECT_NE(solver.getStatistics(), nullptr);
    EXPECT_EQ(solver.getNbPhases(), 0);
    EXPECT_EQ(solver.getParam()->getObjectiveBound(0), INT64_MAX);
}

TEST(Quarrix, PhasesAreKeptInCreationOrder) {
    ClosedSolver c;
    QXPhase* first = c.solver.createPhase();
    QXPhase* second = c.solver.createPhase();
    EXPECT_EQ(c.solver.getNbPhases(), 2);
    EXPECT_EQ(c.solver.getPhase(0), first);
    EXPECT_EQ(c.solver.getPhase(1), second);
    EXPECT_TRUE(raises([&] { c.solver.getPhase(2); },
                       "The phase with index 2 does not exist.\n"
                       "Only indices from 0 to 1 are currently allowed.",
                       Unit, "getPhase"));
    EXPECT_TRUE(raises([&] { c.solver.getPhase(-1); },
                       "The phase with index -1 does not exist.\n"
                       "Only indices from 0 to 1 are currently allowed."));
    QuarrixTestAccess::setState(c.solver, QXState::Paused);
    EXPECT_EQ(c.solver.getPhase(1), second);  // readable while paused
    EXPECT_TRUE(raises([&] { c.solver.createPhase(); }, StoppedOnly));
    EXPECT_TRUE(raises([&] { c.solver.solve(); }, StoppedOnly));
    EXPECT_EQ(c.solver.getNbPhases(), 2);
    QuarrixTestAccess::setState(c.solver, QXState::Stopped);
}

TEST(Quarrix, BeforeAnySolveTheProgressLineAndStopAreRefused) {
    ClosedSolver c;
    EXPECT_EQ(c.solver.getState(), QXState::Stopped);
    EXPECT_FALSE(c.solver.isStarted());
    EXPECT_TRUE(raises([&] { c.solver.getInfo(); }, NeverStarted, Unit, "getInfo"));
    EXPECT_TRUE(raises([&] { c.solver.stop(); }, NeverStarted, Unit, "stop"));
    EXPECT_TRUE(raises([&] { c.solver.getStatistics()->getInfo(); }, NeverStarted,
                       "src/api/qxstatistics", "getInfo"));
    QuarrixTestAccess::setState(c.solver, QXState::Paused);
    EXPECT_TRUE(raises([&] { c.solver.stop(); }, NeverStarted));
    QuarrixTestAccess::setState(c.solver, QXState::Running);
    EXPECT_TRUE(raises([&] { c.solver.stop(); }, PausedOrStoppedOnly));
    EXPECT_TRUE(raises([&] { c.solver.getInfo(); }, PausedOrStoppedOnly));
    QuarrixTestAccess::setState(c.solver, QXState::Stopped);
}

TEST(Quarrix, GettersAreRefusedWhileRunning) {
    ClosedSolver c;
    QuarrixTestAccess::setState(c.solver, QXState::Running);
    EXPECT_EQ(c.solver.getState(), QXState::Running);
    EXPECT_TRUE(raises([&] { c.solver.getModel(); }, RunningRefused, Unit, "getModel"));
    EXPECT_TRUE(raises([&] { c.solver.getParam(); }, RunningRefused, Unit, "getParam"));
    EXPECT_TRUE(raises([&] { c.solver.toString(); }, RunningRefused));
    EXPECT_TRUE(raises([&] { c.solver.getSolution(); }, PausedOrStoppedOnly));
    EXPECT_TRUE(raises([&] { c.solver.setDisplayCallback(nullptr, nullptr); }, RunningRefused));
    QuarrixTestAccess::setState(c.solver, QXState::Stopped);
}

TEST(Quarrix, DisplayCallbackSlot) {
    Quarrix solver;
    EXPECT_EQ(solver.getDisplayCallback(), &Quarrix::display);
    EXPECT_EQ(solver.getDisplayCallbackData(), &solver);
    int calls = 0;
    solver.setDisplayCallback(&countCalls, &calls);
    solver.getDisplayCallback()(solver.getDisplayCallbackData());
    EXPECT_EQ(calls, 1);
    solver.setDisplayCallback(nullptr, nullptr);
    EXPECT_EQ(solver.getDisplayCallback(), nullptr);
}

TEST(Quarrix, TextForm) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* x = m->createExpression(Op::Bool);
    m->addObjective(m->createExpression(Op::Sum, x, 3), QXObjectiveDirection::Minimize);
    const std::string modelText =
        "Model: \n"
        "  expressions = 3, operands = 2\n"
        "  decisions = 1, constraints = 0, objectives = 1\n";
    EXPECT_EQ(solver.toString(), modelText + "\n" +
                                     "Param: \n  no time limit, no iteration limit\n"
                                     "  seed = 0, nb threads = 2, annealing level = 1\n\n"
                                     "Objectives:\n"
                                     "Phases:\n  (no phases)\n\n");
    m->close();
    QXPhase* phase = solver.createPhase();
    phase->setTimeLimit(10);
    solver.createPhase()->setIterationLimit(500);
    EXPECT_EQ(solver.toString(),
              modelText + "\n" +
                  // Phase 0 has no iteration limit, so neither has the sum.
                  "Param: \n  no time limit, no iteration limit\n"
                  "  seed = 0, nb threads = 2, annealing level = 1\n\n"
                  "Objectives:\n  Obj 0: minimize, no bound\n"
                  "Phases:\n"
                  "  Phase 0: time limit = 10 sec, no iteration limit, optimized objective = 0\n"
                  "  Phase 1: no time limit, iteration limit = 500, optimized objective = 0\n"
                  "\n");
}

TEST(Quarrix, ClearStatsZeroesTheGlobalAndEveryPhase) {
    ClosedSolver c;
    QXPhase* phase = c.solver.createPhase();
    phase->getStatistics()->update();  // no thread: the empty-thread values
    c.solver.getStatistics()->update();
    EXPECT_EQ(phase->getStatistics()->getRunningTime(), 2147483647);
    EXPECT_EQ(c.solver.getStatistics()->getNbIterations(), INT64_MAX);
    c.solver.clearStats();
    EXPECT_EQ(phase->getStatistics()->getRunningTime(), 0);
    EXPECT_EQ(phase->getStatistics()->getNbIterations(), 0);
    EXPECT_EQ(c.solver.getStatistics()->getRunningTime(), 0);
    EXPECT_EQ(c.solver.getStatistics()->getNbIterations(), 0);
}
