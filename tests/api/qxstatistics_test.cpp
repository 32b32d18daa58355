#include "apitesting.h"

#include "api/qxphase.h"
#include "api/qxstatistics.h"

// Fills the counters that only a search would fill, and reads the progress
// text that only a started search may show.
class QXStatisticsTestAccess {
public:
    static void set(QXStatistics& s, int time, int64_t iterations, int64_t moves,
                    int64_t accepted, int64_t improving, int64_t infeasible) {
        s.runningTime = time;
        s.nbIterations = iterations;
        s.nbMoves = moves;
        s.nbAccepted = accepted;
        s.nbImprovements = improving;
        s.nbInfeasibles = infeasible;
    }
    static std::string info(const QXStatistics& s) { return s.infoText(); }
};

using Access = QXStatisticsTestAccess;

TEST(QXStatistics, CountersAndPercentages) {
    ClosedSolver c;
    QXStatistics* s = c.solver.getStatistics();
    Access::set(*s, 3, 100, 400, 100, 10, 2);
    EXPECT_EQ(s->getRunningTime(), 3);
    EXPECT_EQ(s->getNbIterations(), 100);
    EXPECT_EQ(s->getNbMoves(), 400);
    EXPECT_EQ(s->getNbAcceptedMoves(), 100);
    EXPECT_EQ(s->getNbImprovingMoves(), 10);
    EXPECT_EQ(s->getNbInfeasibleMoves(), 2);
    EXPECT_EQ(s->getNbRejectedMoves(), 300);
    EXPECT_DOUBLE_EQ(s->getPercentAcceptedMoves(), 25.0);
    EXPECT_DOUBLE_EQ(s->getPercentImprovingMoves(), 2.5);
    EXPECT_DOUBLE_EQ(s->getPercentInfeasibleMoves(), 0.5);
    EXPECT_DOUBLE_EQ(s->getPercentRejectedMoves(), 75.0);
    EXPECT_EQ(s->toString(),
              "running time = 3 sec, nb iterations = 100, nb moves = 400\n"
              "accepted = 100 (25%), improving = 10 (2.5%)\n"
              "rejected = 300 (75%), infeasible = 2 (0.5%)");
    EXPECT_EQ(Access::info(*s), "mov = 400, inf = 0.5%, acc = 25%, imp = 10");
}

TEST(QXStatistics, SmallPercentagesShowAsBelowATenth) {
    ClosedSolver c;
    QXStatistics* s = c.solver.getStatistics();
    EXPECT_DOUBLE_EQ(s->getPercentAcceptedMoves(), 0.0);
    EXPECT_DOUBLE_EQ(s->getPercentRejectedMoves(), 0.0);
    EXPECT_EQ(Access::info(*s), "mov = 0, inf < 0.1%, acc < 0.1%, imp = 0");
    // 0.1% exactly and anything that rounds up to it stay below.
    Access::set(*s, 0, 0, 1000, 1, 0, 1);
    EXPECT_EQ(Access::info(*s), "mov = 1000, inf < 0.1%, acc < 0.1%, imp = 0");
    // 0.101% rounds up to 0.2%.
    Access::set(*s, 0, 0, 100000, 101, 0, 150);
    EXPECT_EQ(Access::info(*s), "mov = 100000, inf = 0.2%, acc = 0.2%, imp = 0");
    Access::set(*s, 0, 0, 3, 1, 0, 0);
    EXPECT_EQ(Access::info(*s), "mov = 3, inf < 0.1%, acc = 33.4%, imp = 0");
}

TEST(QXStatistics, UpdateWithoutThreadsAndGlobalSums) {
    ClosedSolver c;
    QXPhase* first = c.solver.createPhase();
    QXPhase* second = c.solver.createPhase();
    QXStatistics* global = c.solver.getStatistics();
    Access::set(*first->getStatistics(), 4, 10, 20, 5, 1, 2);
    Access::set(*second->getStatistics(), 6, 30, 60, 15, 3, 4);
    global->update();
    EXPECT_EQ(global->getRunningTime(), 10);
    EXPECT_EQ(global->getNbIterations(), 40);
    EXPECT_EQ(global->getNbMoves(), 80);
    EXPECT_EQ(global->getNbAcceptedMoves(), 20);
    EXPECT_EQ(global->getNbImprovingMoves(), 4);
    EXPECT_EQ(global->getNbInfeasibleMoves(), 6);

    // No thread: the smallest time and iteration count of none, sums of none.
    first->getStatistics()->update();
    EXPECT_EQ(first->getStatistics()->getRunningTime(), 2147483647);
    EXPECT_EQ(first->getStatistics()->getNbIterations(), INT64_MAX);
    EXPECT_EQ(first->getStatistics()->getNbMoves(), 0);
    EXPECT_EQ(first->getStatistics()->getNbAcceptedMoves(), 0);
    global->update();  // sums saturate instead of overflowing
    EXPECT_EQ(global->getRunningTime(), 2147483647);
    EXPECT_EQ(global->getNbIterations(), INT64_MAX);
    EXPECT_EQ(global->getNbMoves(), 60);
}

TEST(QXStatistics, StateGuards) {
    ClosedSolver c;
    QXStatistics* s = c.solver.getStatistics();
    QuarrixTestAccess::setState(c.solver, QXState::Running);
    const std::string unit = "src/api/qxstatistics";
    EXPECT_TRUE(raises([&] { s->getRunningTime(); }, PausedOrStoppedOnly, unit,
                       "getRunningTime"));
    EXPECT_TRUE(allRaise({
        [&] { s->getNbMoves(); }, [&] { s->getNbRejectedMoves(); },
        [&] { s->getPercentAcceptedMoves(); }
    }, PausedOrStoppedOnly));
    EXPECT_TRUE(raises([&] { s->toString(); }, PausedOrStoppedOnly, unit, "toString"));
    EXPECT_TRUE(raises([&] { s->getInfo(); }, PausedOrStoppedOnly, unit, "getInfo"));
    QuarrixTestAccess::setState(c.solver, QXState::Stopped);
}
