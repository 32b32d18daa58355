#include "solver/kernel/heuristic.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/greedysolution.h"
#include "solver/kernel/heuristicautoannealing.h"
#include "solver/kernel/heuristicdescent.h"
#include "solver/kernel/movefilter.h"
#include "solver/kernel/threadenv.h"
#include "solver/move/autonomousfixedfields.h"
#include "solver/move/movesimplekflip.h"
#include "searchmodels.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <limits>
#include <random>
#include <sstream>

namespace {
const std::vector<long long> WEIGHTS = {23, 31, 29, 44, 53, 38, 63, 85, 89, 82, 12, 17, 40, 27};
const std::vector<long long> VALUES = {92, 57, 49, 68, 60, 43, 67, 84, 87, 72, 15, 20, 51, 30};
const long long CAPACITY = 165;

long long bestKnapsack() {
    long long best = 0;
    for (unsigned int mask = 0; mask < (1u << WEIGHTS.size()); ++mask) {
        long long w = 0, v = 0;
        for (unsigned int i = 0; i < WEIGHTS.size(); ++i)
            if (mask >> i & 1) w += WEIGHTS[i], v += VALUES[i];
        if (w <= CAPACITY && v > best) best = v;
    }
    return best;
}

// A knapsack search as a thread sets it up, from a greedy start.
struct KnapsackSearch {
    explicit KnapsackSearch(int annealingLevel, unsigned int seed = 7, int temperatureSweep = 0,
                            std::function<void(SearchParams&)> tweak = {})
        : model(WEIGHTS, VALUES, CAPACITY) {
        dag = model.g.makeDag();
        Quickrand rand(seed);
        GreedySolution(&rand).computeSolution(dag.get());
        autonomous = std::make_unique<AutonomousFixedFields>(model.g.fixed);
        SearchParams params;
        params.annealingLevel = annealingLevel;
        params.set(TemperatureSweep, temperatureSweep);
        if (tweak) tweak(params);
        env = std::make_unique<ThreadEnv>(params, dag.get(), autonomous.get(), seed);
    }
    Heuristic& h() { return *env->getHeuristic(); }
    SearchModels::Knapsack model;
    std::unique_ptr<Dag> dag;
    std::unique_ptr<AutonomousFixedFields> autonomous;
    std::unique_ptr<ThreadEnv> env;
};

// Removing every item of a knapsack whose start is full lowers the value:
// refused without a window to anneal in.
struct Refused : Move {
    Refused(Dag& dag, Quickrand& rand) : Move(dag, rand, "Refused", 1) {}
    bool modify() override {
        for (unsigned int v : dag.getFixedFields().variables())
            if (dag.currentValue(v) == 1) flip(v);
        return true;
    }
};

// Records a value after each iteration.
struct Probe : HeuristicCallback {
    explicit Probe(std::function<void()> f) : f(std::move(f)) {}
    void heuristicStarted() override {}
    void heuristicEnded() override {}
    void iterate() override { f(); }
    std::function<void()> f;
};
}  // namespace

// No item can be added and no single exchange of two items improves.
bool isSwapLocalOptimum(const std::vector<long long>& x) {
    long long w = 0, v = 0;
    for (unsigned int i = 0; i < x.size(); ++i) w += WEIGHTS[i] * x[i], v += VALUES[i] * x[i];
    for (unsigned int i = 0; i < x.size(); ++i) {
        if (!x[i] && w + WEIGHTS[i] <= CAPACITY) return false;
        for (unsigned int j = 0; j < x.size(); ++j)
            if (!x[i] && x[j] && w + WEIGHTS[i] - WEIGHTS[j] <= CAPACITY && VALUES[i] > VALUES[j]) return false;
    }
    return true;
}

TEST(HeuristicTest, DescentEndsInALocalOptimumAndAnnealingFindsTheOptimum) {
    long long optimum = bestKnapsack();
    for (int level : {0, 3, 4}) {
        for (unsigned int seed : {1u, 2u, 3u, 7u}) {
            SCOPED_TRACE("annealing level " + std::to_string(level) + " seed " + std::to_string(seed));
            KnapsackSearch search(level, seed);
            search.h().setIterationLimit(30000);
            search.h().run();
            const Solution& best = search.h().getBestSolution();
            EXPECT_EQ(best.getNbViolatedConstraints(), 0u);
            long long weight = 0, value = 0;
            for (unsigned int i = 0; i < WEIGHTS.size(); ++i) {
                weight += WEIGHTS[i] * best.getVariableValues()[i];
                value += VALUES[i] * best.getVariableValues()[i];
            }
            EXPECT_LE(weight, CAPACITY);
            EXPECT_EQ(best.getObjectiveValues()[0], value);
            if (level == 0) EXPECT_TRUE(isSwapLocalOptimum(best.getVariableValues()));
            else EXPECT_EQ(value, optimum);
            EXPECT_EQ(search.h().getNbAttempted(), 30000u);
            EXPECT_EQ(search.h().getNbAccepted() + search.h().getNbRejected() + search.h().getNbInfeasibles(),
                      30000u);
        }
    }
}

TEST(HeuristicTest, SameSeedAndIterationLimitGiveTheSameRun) {
    auto runOnce = [](unsigned int seed) {
        KnapsackSearch search(2, seed);
        search.env->getMoveFilter()->setFilteringPeriod(500);
        search.h().setIterationLimit(20000);
        search.h().run();
        std::vector<unsigned long long> trace = {search.h().getNbAccepted(), search.h().getNbImprovements(),
                                                 search.h().getBestSolutionIterations()};
        for (long long v : search.h().getBestSolution().getVariableValues()) trace.push_back(v);
        for (unsigned int m = 0; m < search.h().getNbMoves(); ++m)
            trace.push_back(search.h().getMove(m)->getUtilRate());
        return trace;
    };
    EXPECT_EQ(runOnce(3), runOnce(3));
    EXPECT_NE(runOnce(3), runOnce(4));
}

TEST(HeuristicTest, TerminationRules) {
    KnapsackSearch search(1);
    Heuristic& h = search.h();
    h.setTimeLimit(0);
    h.run();
    EXPECT_EQ(h.getNbIterations(), 0u);

    // A limit is a duration, whole seconds or less: the run lasts at least
    // that long (a whole-second wall clock could end it at once).
    h.setTimeLimit(std::chrono::milliseconds(300));
    h.run();
    EXPECT_GE(h.getRunningDuration(), std::chrono::milliseconds(300));
    EXPECT_EQ(h.getTimeLimit(), 0u);
    h.setTimeLimit(1);
    h.run();
    EXPECT_GE(h.getRunningTime(), 1u);
    EXPECT_EQ(h.getTimeLimit(), 1u);

    // The bound of a maximised objective already reached while feasible.
    h.init();
    h.setObjectiveBound(0, search.dag->currentValue(search.model.value));
    h.run();
    EXPECT_EQ(h.getNbIterations(), 0u);
    h.setObjectiveBound(0, 1000000);

    // Moves that can never be built still count as iterations.
    h.clearMoves();
    h.addMove(new MoveSimpleKFlip(*search.dag, h.getQuickrand(), 99, 1));
    h.setIterationLimit(250);
    h.run();
    EXPECT_EQ(h.getNbIterations(), 250u);
    EXPECT_EQ(h.getNbInfeasibles(), 250u);

    h.getMove(0)->setUtilRate(0);  // an empty lottery ends the run at once
    h.run();
    EXPECT_EQ(h.getNbIterations(), 0u);

    h.clearMoves();
    EXPECT_EQ(kernelErrorOf([&] { h.run(); }), "At least one move is needed");
    EXPECT_EQ(kernelErrorOf([&] { h.getMove(0); }), "Bad argument value.");
    EXPECT_EQ(kernelErrorOf([&] { h.setOptimizedObjective(1); }), "The given objective index is invalid");
    EXPECT_EQ(kernelErrorOf([&] { h.setObjectiveBound(1, 0); }), "Bad argument.");
    Dag fresh(search.model.g.fixed);
    EXPECT_EQ(kernelErrorOf([&] { HeuristicDescent d(&fresh); }), "The dag must be initialized.");
}

TEST(HeuristicTest, BoundsNeverEndAnInfeasibleSearch) {
    // Start over capacity with the constraints soft: the bound on the value
    // is reached, yet the search goes on until the iteration limit.
    SearchModels::Knapsack model(WEIGHTS, VALUES, CAPACITY);
    auto dag = model.g.makeDag(std::vector<long long>(WEIGHTS.size(), 1));
    HeuristicDescent h(dag.get());
    h.addMove(new MoveSimpleKFlip(*dag, h.getQuickrand(), 1, 1));
    h.setObjectiveBound(0, 0);
    h.setIterationLimit(5);
    h.run();
    EXPECT_EQ(h.getNbIterations(), 5u);
}

TEST(HeuristicTest, EarlierObjectivesDecideFirst) {
    // Objective 0 maximises x + y, objective 1 minimises z + y; start at
    // x = 1, y = 0, z = 1, that is (1, 1).
    TestGraph g;
    unsigned int x = g.boolean(), y = g.boolean(), z = g.boolean();
    g.objective(g.add(Sum, {x, y}), Maximize);
    g.objective(g.add(Sum, {z, y}), Minimize);
    g.close();
    auto dag = g.makeDag({1, 0, 1});
    HeuristicDescent descent(dag.get());
    HeuristicAutoAnnealing annealing(dag.get());
    annealing.setObjectiveWindowSize(3);
    Propagation& p = dag->getPropagation();
    auto verdicts = [&](std::vector<std::pair<unsigned int, long long>> changes) {
        for (auto& change : changes) p.modifyVariable(*dag, change.first, change.second);
        bool evaluated = p.eval(*dag);
        std::pair<MoveExitCode, MoveExitCode> result{descent.decide(evaluated), annealing.decide(evaluated)};
        p.rollback(*dag);
        return result;
    };
    typedef std::pair<MoveExitCode, MoveExitCode> Both;
    EXPECT_EQ(verdicts({{x, 0}, {z, 0}}), Both(MoveRejected, MoveRejected));  // (0, 0): first worse
    EXPECT_EQ(verdicts({{y, 1}}), Both(MoveImproved, MoveImproved));          // (2, 2): first better
    EXPECT_EQ(verdicts({{z, 0}}), Both(MoveImproved, MoveImproved));          // (1, 0)
    // (1, 2): the window is not filled, so the annealing refuses as a descent.
    EXPECT_EQ(verdicts({{x, 0}, {y, 1}}), Both(MoveRejected, MoveRejected));
    descent.setOptimizedObjective(0);
    EXPECT_EQ(verdicts({{x, 0}, {y, 1}}).first, MoveAccepted);  // the second is ignored
}

TEST(HeuristicTest, AnnealingEndsAfterNinetyPercentOfTheIterations) {
    KnapsackSearch search(3);
    auto* annealing = dynamic_cast<HeuristicAutoAnnealing*>(&search.h());
    ASSERT_NE(annealing, nullptr);
    EXPECT_EQ(annealing->getObjectiveWindowSize(), 4);
    unsigned long long switchedAt = 0;
    Probe probe([&] {
        if (switchedAt == 0 && annealing->getObjectiveWindowSize() == 1) switchedAt = annealing->getNbIterations();
    });
    annealing->addCallback(&probe);
    // Without an iteration limit the count is estimated once half the time
    // has passed (here at 1.5 s, from the speed so far, over the elapsed
    // time plus a second): the annealing ends at 90% of that estimate,
    // well before the run does.
    annealing->setTimeLimit(3);
    annealing->run();
    EXPECT_GT(switchedAt, 0u);
    EXPECT_LT(switchedAt, annealing->getNbIterations());
    EXPECT_FALSE(annealing->isAnnealingEnabled());
    EXPECT_GT(annealing->getNbAcceptedDegradations(), 0u);
    annealing->removeCallback(&probe);
}

TEST(HeuristicTest, PrintStatsGivesTheFourTotalsThenALinePerMove) {
    KnapsackSearch search(0);
    search.h().setIterationLimit(100);
    search.h().run();
    std::ostringstream out;
    search.h().printStats(&out);
    std::ostringstream expected;
    expected << "NbAttempted =" << search.h().getNbAttempted() << "\nNbAccepted =" << search.h().getNbAccepted()
             << "\nNbImproved =" << search.h().getNbImprovements() << "\nNbInfeasibles ="
             << search.h().getNbInfeasibles() << "\n";
    const std::string text = out.str();
    EXPECT_EQ(text.substr(0, expected.str().size()), expected.str());
    EXPECT_EQ(static_cast<unsigned int>(std::count(text.begin(), text.end(), '\n')), 4 + search.h().getNbMoves());
    EXPECT_EQ(search.h().getNbAttempted(), 100u);
}

TEST(MoveFilterTest, ShiftsWeightToSuccessfulMovesKeepingTheTotal) {
    KnapsackSearch search(0);
    Heuristic& h = search.h();
    MoveFilter filter(&h);
    unsigned int total = filter.sumWeights();
    filter.heuristicStarted();
    std::vector<unsigned int> before;
    for (unsigned int m = 0; m < h.getNbMoves(); ++m) before.push_back(h.getMove(m)->getUtilRate());
    filter.adjustUtilRates();  // nothing counted yet: nothing changes
    std::vector<unsigned int> after;
    for (unsigned int m = 0; m < h.getNbMoves(); ++m) after.push_back(h.getMove(m)->getUtilRate());
    EXPECT_EQ(before, after);

    h.setIterationLimit(3000);
    h.run();  // the thread's own filter adjusts as it goes
    EXPECT_EQ(filter.sumWeights(), total);
    // The simple flip alone succeeds from now on (it always builds a change,
    // where a chain may find none).
    for (unsigned int m = 0; m < h.getNbMoves(); ++m) h.getMove(m)->clearStats();
    ASSERT_GE(h.getNbMoves(), 2u);
    Move* winner = h.getMove(0);
    unsigned int winnerBefore = winner->getUtilRate();
    for (int i = 0; i < 10; ++i) {
        ASSERT_TRUE(winner->modify());
        winner->eval();
        winner->update(MoveRejected);
    }
    for (int i = 0; i < 3; ++i) {
        winner->modify();
        winner->eval();
        winner->update(MoveImproved);  // counted, then rolled forward
    }
    for (int i = 0; i < 20; ++i) filter.adjustUtilRates();
    EXPECT_EQ(filter.sumWeights(), total);
    EXPECT_GT(winner->getUtilRate(), winnerBefore);
    filter.explore();
    EXPECT_EQ(filter.sumWeights(), total);
}

// The kept scores change how a move is evaluated, never its verdict: the
// same seed and iteration limit give the same search with them on or off,
// on a quadratic model (max-cut of a random graph) and on the knapsack.
// The deep moves, built from the scores, are left out on both sides.
TEST(HeuristicTest, KeptScoresLeaveTheSearchUnchanged) {
    TestGraph maxCut;
    {
        std::mt19937 random(5);
        std::vector<unsigned int> x, cuts;
        for (int i = 0; i < 40; ++i) x.push_back(maxCut.boolean());
        for (unsigned int u = 0; u < x.size(); ++u)
            for (unsigned int v = u + 1; v < x.size(); ++v)
                if (random() % 5 == 0) cuts.push_back(maxCut.add(Neq, {x[u], x[v]}));
        maxCut.objective(maxCut.add(Sum, cuts), Maximize);
        maxCut.close();
    }
    SearchModels::Knapsack knapsack(WEIGHTS, VALUES, CAPACITY);
    for (TestGraph* g : {&maxCut, &knapsack.g}) {
        std::vector<long long> results[2];
        for (int enabled = 0; enabled <= 1; ++enabled) {
            std::unique_ptr<Dag> dag = g->makeDag();
            AutonomousFixedFields autonomous(g->fixed);
            SearchParams params;
            params.set(KeptScoresEnabled, enabled);
            params.set(KDeepEnabled, 0);
            ThreadEnv env(params, dag.get(), &autonomous, 11);
            Heuristic& h = *env.getHeuristic();
            h.setIterationLimit(20000);
            h.run();
            results[enabled] = h.getBestSolution().getVariableValues();
            results[enabled].push_back(static_cast<long long>(h.getNbAccepted()));
            results[enabled].push_back(static_cast<long long>(h.getNbImprovements()));
            results[enabled].push_back(static_cast<long long>(dag->getPropagation().getNbKeptEvaluations()));
        }
        // Every move of these models is evaluated from the scores when on.
        EXPECT_EQ(results[0].back(), 0);
        EXPECT_GT(results[1].back(), 10000);
        results[0].pop_back();
        results[1].pop_back();
        EXPECT_EQ(results[0], results[1]);
    }
}

// Only the moves that were built count towards the plateau: iterations whose
// move could not be built leave the annealing on, rejected moves end it.
TEST(HeuristicTest, PlateauCountsOnlyBuiltMoves) {
    struct Unbuildable : Move {
        Unbuildable(Dag& dag, Quickrand& rand) : Move(dag, rand, "Unbuildable", 1) {}
        bool modify() override { return false; }
    };
    for (bool built : {false, true}) {
        KnapsackSearch search(3);
        auto* annealing = dynamic_cast<HeuristicAutoAnnealing*>(&search.h());
        ASSERT_NE(annealing, nullptr);
        annealing->clearMoves();
        if (built) annealing->addMove(new Refused(*search.dag, annealing->getQuickrand()));
        else annealing->addMove(new Unbuildable(*search.dag, annealing->getQuickrand()));
        annealing->setPlateauLength(50);
        annealing->setIterationLimit(200);
        annealing->run();
        EXPECT_EQ(annealing->isAnnealingEnabled(), !built) << (built ? "refused moves" : "unbuilt moves");
    }
}

// The plateau and the end of the annealing follow their advanced parameters:
// the specified values by default, 0 for a plateau that never turns the
// annealing off, a percentage of the estimate for the end.
TEST(HeuristicTest, PlateauAndAnnealingEndFollowTheirParameters) {
    auto annealingOf = [](KnapsackSearch& search) {
        return dynamic_cast<HeuristicAutoAnnealing*>(&search.h());
    };
    KnapsackSearch defaults(3);
    ASSERT_NE(annealingOf(defaults), nullptr);
    EXPECT_EQ(annealingOf(defaults)->getPlateauLength(), 1000000u);
    EXPECT_EQ(annealingOf(defaults)->getDegradingIterationsLimit(), 0.9);
    KnapsackSearch tuned(3, 7, 0, [](SearchParams& p) {
        p.set(PlateauLength, 0);
        p.set(AnnealingEndPercent, 250);
    });
    EXPECT_EQ(annealingOf(tuned)->getPlateauLength(), std::numeric_limits<unsigned long long>::max());
    EXPECT_EQ(annealingOf(tuned)->getDegradingIterationsLimit(), 2.5);
    // Refused moves only: a plateau of 50 turns the annealing off within
    // 200 iterations, the endless one never.
    for (int plateau : {50, 0}) {
        KnapsackSearch search(3, 7, 0, [&](SearchParams& p) { p.set(PlateauLength, plateau); });
        HeuristicAutoAnnealing* annealing = annealingOf(search);
        annealing->clearMoves();
        annealing->addMove(new Refused(*search.dag, annealing->getQuickrand()));
        annealing->setIterationLimit(200);
        annealing->run();
        EXPECT_EQ(annealing->isAnnealingEnabled(), plateau == 0) << "plateau " << plateau;
    }
}

// The temperature cools over each sweep (moves per decision times the
// decisions) and starts again; with it the annealing accepts degradations
// and still finds the optimum.
TEST(HeuristicTest, TemperatureCoolsOverEachSweepAndStartsAgain) {
    const unsigned long long optimum = static_cast<unsigned long long>(bestKnapsack());
    for (unsigned int seed : {1u, 2u, 3u}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        KnapsackSearch search(1, seed, 40);
        auto* annealing = dynamic_cast<HeuristicAutoAnnealing*>(&search.h());
        ASSERT_NE(annealing, nullptr);
        const unsigned long long sweep = 40ull * search.model.g.fixed.nbVariables();
        std::vector<double> temperatures;
        Probe probe([&] { temperatures.push_back(annealing->relativeTemperature()); });
        annealing->addCallback(&probe);
        annealing->setIterationLimit(3 * sweep);
        annealing->run();
        annealing->removeCallback(&probe);
        ASSERT_EQ(temperatures.size(), 3 * sweep);
        // After iteration i the phase is (i + 1) / sweep.
        for (std::size_t i = 1; i < temperatures.size(); ++i) {
            if ((i + 1) % sweep == 0) {
                EXPECT_DOUBLE_EQ(temperatures[i], 0.4) << i;
                EXPECT_GT(temperatures[i], 30 * temperatures[i - 1]) << i;
            } else {
                EXPECT_LT(temperatures[i], temperatures[i - 1]) << i;
            }
        }
        EXPECT_GT(annealing->getNbAcceptedDegradations(), 0u);
        EXPECT_EQ(static_cast<unsigned long long>(annealing->getBestSolution().getObjectiveValues()[0]), optimum);
    }
}
