// The solve lifecycle on a closed model: phases, limits, starting points,
// display pauses and stop.

#include "apitesting.h"

#include "api/qxexpression.h"
#include "api/qxparam.h"
#include "api/qxphase.h"
#include "api/qxsolution.h"
#include "api/qxstatistics.h"

#include <iostream>
#include <regex>
#include <sstream>

using Op = QXOperator;

namespace {

const std::vector<int64_t> WEIGHTS = {23, 31, 29, 44, 53, 38, 63, 85, 89, 82};
const std::vector<int64_t> VALUES = {92, 57, 49, 68, 60, 43, 67, 84, 87, 72};
const int64_t CAPACITY = 165;

// Knapsack with a second objective (fewest items), optionally starting from
// given decision values.
struct KnapsackSolve {
    KnapsackSolve(int nbThreads, int seed = 4) {
        QXModel* m = solver.getModel();
        for (size_t i = 0; i < WEIGHTS.size(); ++i) x.push_back(m->createExpression(Op::Bool));
        QXExpression* weight = m->createExpression(Op::Sum);
        QXExpression* value = m->createExpression(Op::Sum);
        QXExpression* count = m->createExpression(Op::Sum);
        for (size_t i = 0; i < WEIGHTS.size(); ++i) {
            weight->addOperand(m->createExpression(Op::Prod, x[i], WEIGHTS[i]));
            value->addOperand(m->createExpression(Op::Prod, x[i], VALUES[i]));
            count->addOperand(x[i]);
        }
        m->addConstraint(m->createExpression(Op::Leq, weight, CAPACITY));
        m->addObjective(value, QXObjectiveDirection::Maximize);
        m->addObjective(count, QXObjectiveDirection::Minimize);
        objective = value;
        items = count;
        m->close();
        solver.getParam()->setNbThreads(nbThreads);
        solver.getParam()->setSeed(seed);
        solver.getParam()->setVerbosity(0);
        solver.setDisplayCallback(nullptr, nullptr);
    }
    int64_t value() { return solver.getSolution()->getValue(objective); }
    std::vector<int64_t> decisions() { return solutionValues(solver, x); }

    Quarrix solver;
    std::vector<QXExpression*> x;
    QXExpression* objective;
    QXExpression* items;
};
}  // namespace

TEST(QuarrixSolve, PhasesReportTheirEffortAndTheBestSolution) {
    KnapsackSolve k(2);
    QXPhase* first = k.solver.createPhase();
    first->setOptimizedObjective(0);
    first->setIterationLimit(20000);
    QXPhase* second = k.solver.createPhase();
    second->setIterationLimit(5000);
    EXPECT_EQ(k.solver.computePhaseIterationLimit(1), 25000);
    EXPECT_EQ(k.solver.computePhaseTimeLimit(1), 2147483647);  // no limit plus anything
    EXPECT_EQ(k.solver.computePhaseTimeLimit(-1), 0);
    k.solver.solve();
    EXPECT_EQ(k.solver.getState(), QXState::Stopped);
    // The solution read back is a feasible packing and the texts describe it.
    EXPECT_EQ(k.solver.getSolution()->getStatus(), QXSolutionStatus::Feasible);
    int64_t weight = 0, value = 0, items = 0;
    std::vector<int64_t> x = k.decisions();
    for (size_t i = 0; i < x.size(); ++i) {
        weight += x[i] * WEIGHTS[i];
        value += x[i] * VALUES[i];
        items += x[i];
    }
    EXPECT_LE(weight, CAPACITY);
    EXPECT_EQ(k.value(), value);
    EXPECT_EQ(k.solver.getSolution()->getValue(k.items), items);
    EXPECT_GE(value, 200);  // any packing a search keeps after 25000 iterations
    const std::string objectives = "obj = (" + std::to_string(value) + ", " + std::to_string(items) + ")";
    EXPECT_EQ(k.solver.getObjectiveInfo(), objectives);
    // Each phase runs its own limit from the cumulative one: equal effort
    // makes both threads stop at the same count.
    EXPECT_EQ(first->getStatistics()->getNbIterations(), 20000);
    EXPECT_EQ(first->getStatistics()->getNbMoves(), 40000);
    EXPECT_EQ(second->getStatistics()->getNbIterations(), 5000);
    QXStatistics* total = k.solver.getStatistics();
    EXPECT_EQ(total->getNbIterations(), 25000);
    EXPECT_EQ(total->getNbMoves(), 50000);
    EXPECT_GT(total->getNbAcceptedMoves(), 0);
    std::string escaped = std::regex_replace(objectives, std::regex(R"([()])"), R"(\$&)");
    EXPECT_TRUE(std::regex_match(k.solver.getInfo(),
                                 std::regex(R"(\[\d+ sec, 25000 itr\]: )" + escaped + R"(, mov = 50000, .*imp = \d+\n)")));
    EXPECT_TRUE(std::regex_match(k.solver.getEndResolutionInfo(),
                                 std::regex(R"(25000 iterations, 50000 moves performed in \d+ seconds\n)"
                                            R"(Feasible solution: )" + escaped)));
    // A second solve starts again from the solution the first one left.
    k.solver.solve();
    EXPECT_GE(k.value(), value);
}

TEST(QuarrixSolve, OneThreadWithAnIterationLimitIsReproducible) {
    std::vector<std::vector<int64_t>> results;
    for (int run = 0; run < 2; ++run) {
        KnapsackSolve k(1, 11);
        k.solver.getParam()->setAnnealingLevel(0);  // stops short of the optimum: the path shows
        k.solver.createPhase()->setIterationLimit(300);
        k.solver.solve();
        std::vector<int64_t> result = k.decisions();
        result.push_back(k.solver.getStatistics()->getNbAcceptedMoves());
        results.push_back(result);
    }
    EXPECT_EQ(results[0], results[1]);
}

TEST(QuarrixSolve, TheFirstOfSeveralThreadsSearchesAsOneThreadDoes) {
    // The threads prepare side by side, each with its own generator; the
    // first one's start and moves are a one-thread run's, so with an
    // iteration limit more threads never end worse, and the same command
    // gives the same result again. A knapsack of 60 items and 3 rows, whose
    // descent ends somewhere else at every seed.
    auto solve = [](int nbThreads, int seed) {
        Quarrix solver;
        QXModel* m = solver.getModel();
        QXExpression* value = m->createExpression(Op::Sum);
        std::vector<QXExpression*> rows, x;
        for (int r = 0; r < 3; ++r) rows.push_back(m->createExpression(Op::Sum));
        uint64_t draw = 12345;
        auto next = [&draw] {
            draw = draw * 6364136223846793005ULL + 1442695040888963407ULL;
            return static_cast<int64_t>(draw >> 54);
        };
        for (int i = 0; i < 60; ++i) {
            x.push_back(m->createExpression(Op::Bool));
            value->addOperand(m->createExpression(Op::Prod, x.back(), 1 + next()));
            for (QXExpression* row : rows) row->addOperand(m->createExpression(Op::Prod, x.back(), 1 + next()));
        }
        for (QXExpression* row : rows) m->addConstraint(m->createExpression(Op::Leq, row, int64_t{7000}));
        m->addObjective(value, QXObjectiveDirection::Maximize);
        m->close();
        solver.getParam()->setNbThreads(nbThreads);
        solver.getParam()->setSeed(seed);
        solver.getParam()->setVerbosity(0);
        solver.getParam()->setAnnealingLevel(0);
        solver.setDisplayCallback(nullptr, nullptr);
        solver.createPhase()->setIterationLimit(60);
        solver.solve();
        std::vector<int64_t> result = solutionValues(solver, x);
        result.push_back(solver.getSolution()->getValue(value));
        return result;
    };
    for (int seed = 1; seed <= 6; ++seed) {
        const std::vector<int64_t> one = solve(1, seed), two = solve(2, seed), three = solve(3, seed);
        EXPECT_GE(two.back(), one.back()) << "seed " << seed;
        EXPECT_GE(three.back(), one.back()) << "seed " << seed;
        EXPECT_EQ(solve(2, seed), two) << "seed " << seed;
    }
}

TEST(QuarrixSolve, ChainMovesReachTheKnapsackOptimumWhereFlipsAndSwapsStall) {
    // Every item lies in the capacity sum: no free boolean, so no k-flip.
    // Single flips stall on items 0, 3 and 8 (value 247); the optimum
    // (0, 1, 2, 3, 5) needs one item traded against several, which the
    // chain moves, their forks and the fills (deep ones too) build. (Swaps, whose pairs may share a
    // boolean and then flip an odd count, reach it too: they are off here.)
    auto withoutPairs = [](KnapsackSolve& k) {
        k.solver.getParam()->setAdvancedParam("kSwapEnabled", 0);
        k.solver.getParam()->setAdvancedParam("kBalanceEnabled", 0);
    };
    for (int seed = 1; seed <= 5; ++seed) {
        KnapsackSolve k(1, seed);
        withoutPairs(k);
        k.solver.createPhase()->setIterationLimit(200000);
        k.solver.solve();
        EXPECT_EQ(k.value(), 309) << "seed " << seed;
        EXPECT_EQ(k.decisions(), std::vector<int64_t>({1, 1, 1, 1, 0, 1, 0, 0, 0, 0})) << "seed " << seed;
    }
    // Their enabling parameters do switch them off: the same search stalls.
    KnapsackSolve without(1, 1);
    withoutPairs(without);
    for (const char* kind : {"kPathEnabled", "kCycleEnabled", "k2ForkCycleEnabled", "k3ForkCycleEnabled",
                             "k2ForkPathEnabled", "k3ForkPathEnabled", "kFillEnabled", "kDeepFillEnabled"})
        without.solver.getParam()->setAdvancedParam(kind, 0);
    without.solver.createPhase()->setIterationLimit(200000);
    without.solver.solve();
    EXPECT_LT(without.value(), 309);
}

TEST(QuarrixSolve, ATargetingLevelOutsideItsRangeRefusesTheSolve) {
    KnapsackSolve k(1);
    QXParam* param = k.solver.getParam();
    param->setAdvancedParam("notReadBySearch", -123456);  // any name is taken, and ignored
    param->setAdvancedParam("targetingLevel", 11);
    EXPECT_TRUE(raises([&] { k.solver.solve(); },
                       "Advanced parameter 'targetingLevel' must be an integer between 0 and 10.",
                       "src/api/qxparam", "searchParams"));
    EXPECT_FALSE(k.solver.isStarted());  // refused before anything was set up
    param->setAdvancedParam("targetingLevel", 10);
    // Sizes and switches outside their ranges are read as before: -1 is on,
    // 40 is the largest neighbourhood.
    param->setAdvancedParam("kCycleEnabled", -1);
    param->setAdvancedParam("neighborhoodSize", 40);
    k.solver.createPhase()->setIterationLimit(1000);
    k.solver.solve();
    EXPECT_EQ(k.solver.getStatistics()->getNbIterations(), 1000);
}

TEST(QuarrixSolve, StartsFromTheUserValuesOrAGreedyStart) {
    // The optimal packing given with setValue: a descent can only keep it.
    KnapsackSolve given(1);
    for (int i : {0, 1, 2, 3, 5}) given.solver.getSolution()->setValue(given.x[i], 1);
    given.solver.getParam()->setAnnealingLevel(0);
    given.solver.createPhase()->setIterationLimit(1000);
    given.solver.solve();
    EXPECT_EQ(given.decisions(), std::vector<int64_t>({1, 1, 1, 1, 0, 1, 0, 0, 0, 0}));
    EXPECT_EQ(given.value(), 309);
    // Over capacity: the greedy start repairs nothing (it only raises), so
    // the search starts infeasible and works the constraint back in.
    KnapsackSolve infeasible(2);
    for (QXExpression* e : infeasible.x) infeasible.solver.getSolution()->setValue(e, 1);
    infeasible.solver.createPhase()->setIterationLimit(20000);
    infeasible.solver.solve();
    EXPECT_NE(infeasible.solver.getSolution()->getStatus(), QXSolutionStatus::Infeasible);
}

TEST(QuarrixSolve, DisplayPausesTheSearchAndStopEndsEveryPhase) {
    KnapsackSolve k(2);
    k.solver.getParam()->setVerbosity(1);
    k.solver.getParam()->setTimeBetweenDisplays(1);
    k.solver.createPhase()->setTimeLimit(30);
    k.solver.createPhase()->setTimeLimit(30);
    struct Seen {
        Quarrix* solver;
        int calls = 0;
        std::vector<QXState> states;
    } seen{&k.solver, 0, {}};
    k.solver.setDisplayCallback(
        [](void* data) {
            Seen& s = *static_cast<Seen*>(data);
            s.states.push_back(s.solver->getState());
            if (++s.calls == 2) s.solver->stop();
        },
        &seen);
    std::ostringstream out;
    std::streambuf* saved = std::cout.rdbuf(out.rdbuf());
    k.solver.solve();
    std::cout.rdbuf(saved);
    // Two displays, the second stopping: the first phase ends, with its last
    // call, and the second never starts.
    EXPECT_EQ(seen.calls, 3);
    for (QXState state : seen.states) EXPECT_EQ(state, QXState::Paused);
    const std::string text = out.str();
    EXPECT_NE(text.find("\nPhase 0:\n\n"), std::string::npos);
    EXPECT_EQ(text.find("\nPhase 1:\n"), std::string::npos);  // listed, never started
    EXPECT_NE(text.find(" moves performed in "), std::string::npos);
    EXPECT_NE(text.find("Feasible solution: obj = ("), std::string::npos);
    EXPECT_EQ(k.solver.getState(), QXState::Stopped);
    k.solver.stop();  // stopped: nothing to do
}

TEST(QuarrixSolve, SolveNeedsAClosedModel) {
    Quarrix solver;
    solver.getModel()->addObjective(solver.getModel()->createExpression(Op::Bool), QXObjectiveDirection::Maximize);
    EXPECT_TRUE(raises([&] { solver.solve(); }, StoppedOnly));
    EXPECT_FALSE(solver.isStarted());
}

// Moves that divide by zero are refused and counted; the count is said once,
// after the statistics, and only when there is one.
TEST(QuarrixSolve, MovesRefusedForAnArithmeticErrorAreSaidAfterTheStatistics) {
    auto solveAndPrint = [](bool withDivision) {
        Quarrix solver;
        QXModel* m = solver.getModel();
        QXExpression* x = m->createExpression(Op::Bool);
        QXExpression* y = m->createExpression(Op::Bool);
        QXExpression* sum = m->createExpression(Op::Sum);
        for (int i = 0; i < 6; ++i) sum->addOperand(m->createExpression(Op::Prod, m->createExpression(Op::Bool), i + 1));
        QXExpression* divisor = m->createExpression(Op::Sum, x, int64_t{1}, m->createExpression(Op::Prod, y, int64_t{-1}));
        QXExpression* total = m->createExpression(Op::Sum, sum, x, y);
        if (withDivision) total = m->createExpression(Op::Sum, sum, m->createExpression(Op::Div, int64_t{12}, divisor));
        m->addObjective(total, QXObjectiveDirection::Maximize);
        m->close();
        // One thread: the search stops where the objective reaches its
        // bound, 33, and with two, how many moves the other thread made by
        // then (refused ones among them) is up to the clock.
        solver.getParam()->setNbThreads(1);
        solver.getParam()->setSeed(3);
        solver.getParam()->setVerbosity(1);
        solver.setDisplayCallback(nullptr, nullptr);
        solver.createPhase()->setIterationLimit(5000);
        std::ostringstream out;
        std::streambuf* saved = std::cout.rdbuf(out.rdbuf());
        solver.solve();
        std::cout.rdbuf(saved);
        return out.str();
    };
    const std::string refused = solveAndPrint(true);
    std::smatch found;
    ASSERT_TRUE(std::regex_search(
        refused, found,
        std::regex(R"(Feasible solution: obj = \(33\)\n(\d+) moves? (was|were) refused for an arithmetic error )"
                   R"(\(division by zero or square root of a negative number\)\n\n$)"))) << refused;
    EXPECT_GT(std::stoll(found[1].str()), 0);
    const std::string clean = solveAndPrint(false);
    EXPECT_EQ(clean.find("arithmetic"), std::string::npos);
    EXPECT_TRUE(std::regex_search(clean, std::regex(R"(Feasible solution: obj = \(23\)\n\n$)")));
}
