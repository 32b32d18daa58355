#include "apitesting.h"

#include "api/qxparam.h"
#include "api/qxphase.h"
#include "api/qxstatistics.h"

using Op = QXOperator;
using Dir = QXObjectiveDirection;

namespace {
const std::string ParamUnit = "src/api/qxparam";
const std::string PhaseUnit = "src/api/qxphase";
}  // namespace

TEST(QXParam, DefaultsAndAcceptedRanges) {
    ClosedSolver c;
    QXParam* p = c.solver.getParam();
    EXPECT_EQ(p->getSeed(), 0);
    EXPECT_EQ(p->getNbThreads(), 2);
    EXPECT_EQ(p->getAnnealingLevel(), 1);
    EXPECT_EQ(p->getVerbosity(), 1);
    EXPECT_EQ(p->getTimeBetweenDisplays(), 1);
    EXPECT_EQ(p->getTotalTimeLimit(), 2147483647);
    EXPECT_EQ(p->getTotalIterationLimit(), INT64_MAX);
    p->setSeed(0);
    p->setNbThreads(1024);
    p->setAnnealingLevel(0);
    p->setAnnealingLevel(9);
    p->setVerbosity(0);
    p->setTimeBetweenDisplays(65535);
    EXPECT_EQ(p->getNbThreads(), 1024);
    EXPECT_EQ(p->getAnnealingLevel(), 9);
    EXPECT_EQ(p->getVerbosity(), 0);
    EXPECT_EQ(p->getTimeBetweenDisplays(), 65535);
}

TEST(QXParam, RefusedSettingsKeepTheOldValue) {
    ClosedSolver c;
    QXParam* p = c.solver.getParam();
    EXPECT_TRUE(raises([&] { p->setSeed(-1); }, "Argument seed must be a positive number.",
                       ParamUnit, "setSeed"));
    EXPECT_TRUE(raises([&] { p->setNbThreads(0); },
                       "Argument nbThreads must be a strictly positive number.", ParamUnit,
                       "setNbThreads"));
    EXPECT_TRUE(raises([&] { p->setNbThreads(1025); }, "The number of threads cannot exceed 1024."));
    const std::string level = "The annealing level size must be an integer between 0 and 9.";
    EXPECT_TRUE(raises([&] { p->setAnnealingLevel(-1); }, level));
    EXPECT_TRUE(raises([&] { p->setAnnealingLevel(10); }, level));
    EXPECT_TRUE(raises([&] { p->setVerbosity(-2); },
                       "Argument verbosity must be a positive number."));
    EXPECT_TRUE(raises([&] { p->setTimeBetweenDisplays(0); },
                       "Argument timeBetweenDisplays must be a strictly positive number."));
    EXPECT_TRUE(raises([&] { p->setTimeBetweenDisplays(65536); },
                       "The time between displays cannot exceed 65535."));
    EXPECT_EQ(p->getSeed(), 0);
    EXPECT_EQ(p->getNbThreads(), 2);
    EXPECT_EQ(p->getAnnealingLevel(), 1);
    EXPECT_EQ(p->getVerbosity(), 1);
    EXPECT_EQ(p->getTimeBetweenDisplays(), 1);
}

TEST(QXParam, StateGuards) {
    Quarrix solver;
    QXParam* p = solver.getParam();
    EXPECT_TRUE(raises([&] { p->setSeed(3); }, StoppedOnly, ParamUnit, "setSeed"));
    EXPECT_TRUE(allRaise({
        [&] { p->setNbThreads(3); }, [&] { p->setAnnealingLevel(3); },
        [&] { p->setVerbosity(3); }, [&] { p->setTimeBetweenDisplays(3); },
        [&] { p->setObjectiveBound(0, 3); }, [&] { p->setAdvancedParam("kFlipEnabled", 0); }
    }, StoppedOnly));
    EXPECT_TRUE(raises([&] { p->getSeed(); }, PausedOrStoppedOnly, ParamUnit, "getSeed"));
    EXPECT_TRUE(allRaise({
        [&] { p->getVerbosity(); }, [&] { p->getTotalTimeLimit(); },
        [&] { p->getAdvancedParam("x", 1); }
    }, PausedOrStoppedOnly));
    QXModel* m = solver.getModel();
    m->addObjective(m->createExpression(Op::Bool), Dir::Minimize);
    m->close();
    QuarrixTestAccess::setState(solver, QXState::Paused);
    EXPECT_EQ(p->getSeed(), 0);  // readable, not writable, while paused
    EXPECT_TRUE(raises([&] { p->setSeed(3); }, StoppedOnly));
    QuarrixTestAccess::setState(solver, QXState::Stopped);
}

TEST(QXParam, AdvancedParameters) {
    ClosedSolver c;
    QXParam* p = c.solver.getParam();
    EXPECT_TRUE(raises([&] { p->getAdvancedParam("targetingLevel"); },
                       "Advanced parameter 'targetingLevel' does not exist.", ParamUnit,
                       "getAdvancedParam"));
    EXPECT_EQ(p->getAdvancedParam("targetingLevel", 5), 5);
    p->setAdvancedParam("targetingLevel", 2);
    p->setAdvancedParam("targetingLevel", 3);  // replaces
    p->setAdvancedParam("kSwapEnabled", 0);
    EXPECT_EQ(p->getAdvancedParam("targetingLevel"), 3);
    EXPECT_EQ(p->getAdvancedParam("targetingLevel", 5), 3);
    EXPECT_EQ(p->getAdvancedParam("kSwapEnabled", 1), 0);
}

TEST(QXParam, ObjectiveBoundsAreSizedAtClosing) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* x = m->createExpression(Op::Bool);
    m->addObjective(x, Dir::Minimize);
    m->addObjective(x, Dir::Maximize);
    m->addObjective(m->createConstant(42), Dir::Minimize);
    m->close();
    QXParam* p = solver.getParam();
    EXPECT_EQ(p->getObjectiveBound(0), INT64_MIN);
    EXPECT_EQ(p->getObjectiveBound(1), INT64_MAX);
    EXPECT_EQ(p->getObjectiveBound(2), 42);  // a constant objective is its own bound
    p->setObjectiveBound(0, -7);
    EXPECT_EQ(p->getObjectiveBound(0), -7);
    p->resizeObjectiveArrays(3);  // existing entries are kept
    EXPECT_EQ(p->getObjectiveBound(0), -7);
    const std::string index3 = "The objective with index 3 does not exist.\n"
                               "Only indices from 0 to 2 are currently allowed.";
    EXPECT_TRUE(raises([&] { p->getObjectiveBound(3); }, index3, ParamUnit, "getObjectiveBound"));
    EXPECT_TRUE(raises([&] { p->setObjectiveBound(3, 1); }, index3, ParamUnit,
                       "setObjectiveBound"));
    EXPECT_EQ(p->toString(),
              "Param: \n  no time limit, no iteration limit\n"
              "  seed = 0, nb threads = 2, annealing level = 1\n\n"
              "Objectives:\n"
              "  Obj 0: minimize, bound = -7\n"
              "  Obj 1: maximize, no bound\n"
              "  Obj 2: minimize, bound = 42");
}

TEST(QXParam, TotalsAddThePhasesAndSaturate) {
    ClosedSolver c;
    QXParam* p = c.solver.getParam();
    int seconds = 10;
    for (int i = 0; i < 3; ++i) {
        QXPhase* phase = c.solver.createPhase();
        phase->setTimeLimit(seconds);
        phase->setIterationLimit(1000 * seconds);
        seconds += 10;
    }
    EXPECT_EQ(p->getTotalTimeLimit(), 60);
    EXPECT_EQ(p->getTotalIterationLimit(), 60000);
    EXPECT_EQ(p->toString().substr(0, 61),
              "Param: \n  time limit = 60 sec, iteration limit = 60000\n  seed");
    c.solver.createPhase()->setTimeLimit(2147483600);
    EXPECT_EQ(p->getTotalTimeLimit(), 2147483647);
    EXPECT_EQ(p->getTotalIterationLimit(), INT64_MAX);  // the new phase has no limit
    c.solver.getPhase(3)->setIterationLimit(INT64_MAX - 59999);
    EXPECT_EQ(p->getTotalIterationLimit(), INT64_MAX);
    c.solver.getPhase(3)->setIterationLimit(INT64_MAX - 60000);
    EXPECT_EQ(p->getTotalIterationLimit(), INT64_MAX);  // reaching the maximum is no limit too
    c.solver.getPhase(3)->setIterationLimit(INT64_MAX - 60001);
    EXPECT_EQ(p->getTotalIterationLimit(), INT64_MAX - 1);
}

TEST(QXPhase, DefaultsChecksAndText) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* x = m->createExpression(Op::Bool);
    m->addObjective(x, Dir::Minimize);
    m->addObjective(x, Dir::Maximize);
    m->close();
    QXPhase* phase = solver.createPhase();
    EXPECT_EQ(phase->getTimeLimit(), 2147483647);
    EXPECT_EQ(phase->getIterationLimit(), INT64_MAX);
    EXPECT_EQ(phase->getOptimizedObjective(), 1);  // the last objective
    EXPECT_NE(phase->getStatistics(), nullptr);
    EXPECT_NE(phase->getStatistics(), solver.getStatistics());
    EXPECT_EQ(phase->toString(), "no time limit, no iteration limit, optimized objective = 1");

    EXPECT_TRUE(raises([&] { phase->setTimeLimit(-1); },
                       "Argument timeLimit must be a positive number.", PhaseUnit,
                       "setTimeLimit"));
    EXPECT_TRUE(raises([&] { phase->setIterationLimit(-1); },
                       "Argument iterationLimit must be a positive number."));
    EXPECT_TRUE(raises([&] { phase->setOptimizedObjective(2); },
                       "The objective with index 2 does not exist.\n"
                       "Only indices from 0 to 1 are currently allowed.",
                       PhaseUnit, "setOptimizedObjective"));
    EXPECT_TRUE(raises([&] { phase->setOptimizedObjective(-1); },
                       "The objective with index -1 does not exist.\n"
                       "Only indices from 0 to 1 are currently allowed."));
    EXPECT_EQ(phase->getTimeLimit(), 2147483647);
    EXPECT_EQ(phase->getIterationLimit(), INT64_MAX);
    EXPECT_EQ(phase->getOptimizedObjective(), 1);

    phase->setTimeLimit(0);
    phase->setIterationLimit(250);
    phase->setOptimizedObjective(0);
    EXPECT_EQ(phase->toString(),
              "time limit = 0 sec, iteration limit = 250, optimized objective = 0");

    QuarrixTestAccess::setState(solver, QXState::Paused);
    EXPECT_EQ(phase->getTimeLimit(), 0);
    EXPECT_TRUE(raises([&] { phase->setTimeLimit(5); }, StoppedOnly, PhaseUnit, "setTimeLimit"));
    EXPECT_TRUE(raises([&] { phase->setIterationLimit(5); }, StoppedOnly));
    EXPECT_TRUE(raises([&] { phase->setOptimizedObjective(1); }, StoppedOnly));
    QuarrixTestAccess::setState(solver, QXState::Running);
    EXPECT_TRUE(raises([&] { phase->getTimeLimit(); }, PausedOrStoppedOnly));
    EXPECT_TRUE(raises([&] { phase->getStatistics(); }, PausedOrStoppedOnly));
    EXPECT_TRUE(raises([&] { phase->toString(); }, RunningRefused));
    QuarrixTestAccess::setState(solver, QXState::Stopped);
}
