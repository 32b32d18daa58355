#include "solver/kernel/parallelizer.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/greedysolution.h"
#include "solver/kernel/heuristic.h"
#include "solver/kernel/threadenv.h"
#include "solver/move/autonomousfixedfields.h"
#include "searchmodels.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {
// Set cover over 60 columns and 90 rows, one graph per thread from a common
// greedy start, as the solver sets up a parallel search.
std::vector<std::vector<unsigned int>> coverRows() {
    std::vector<std::vector<unsigned int>> rows;
    Quickrand rand(99);
    for (unsigned int r = 0; r < 90; ++r) {
        std::vector<unsigned int> row(3);
        rand.nextKInt(60, 3, row);
        rows.push_back(row);
    }
    return rows;
}

struct ParallelSearch {
    explicit ParallelSearch(unsigned int nbThreads, int annealingLevel = 2) : model(coverRows(), 60) {
        autonomous = std::make_unique<AutonomousFixedFields>(model.g.fixed);
        SearchParams params;
        params.annealingLevel = annealingLevel;
        Quickrand seeds(5);
        for (unsigned int t = 0; t < nbThreads; ++t) {
            dags.push_back(model.g.makeDag());
            GreedySolution(&seeds).computeSolution(dags.back().get());
            envs.push_back(std::make_unique<ThreadEnv>(params, dags.back().get(), autonomous.get(),
                                                       seeds.nextInt(2147483647u)));
            parallelizer.addHeuristic(envs.back()->getHeuristic());
        }
    }
    ~ParallelSearch() {
        if (parallelizer.getState() == ParallelizerRunning || parallelizer.getState() == ParallelizerPaused)
            parallelizer.stop();
    }
    Heuristic& h(unsigned int t) { return *envs[t]->getHeuristic(); }

    SearchModels::SetCover model;
    std::unique_ptr<AutonomousFixedFields> autonomous;
    std::vector<std::unique_ptr<Dag>> dags;
    std::vector<std::unique_ptr<ThreadEnv>> envs;
    Parallelizer parallelizer;
};

long long bestObjective(ParallelSearch& search) {
    return search.parallelizer.getBestHeuristic()->getBestSolution().getObjectiveValues()[0];
}
}  // namespace

TEST(ParallelizerTest, IterationLimitsGiveReproducibleBestObjectives) {
    std::vector<long long> firstRuns;
    for (int run = 0; run < 2; ++run) {
        ParallelSearch search(3);
        for (unsigned int t = 0; t < 3; ++t) search.h(t).setIterationLimit(20000);
        search.parallelizer.solve();
        for (unsigned int t = 0; t < 3; ++t) EXPECT_EQ(search.h(t).getNbIterations(), 20000u);
        EXPECT_EQ(search.parallelizer.getState(), ParallelizerIdle);
        long long best = bestObjective(search);
        // The best heuristic really holds the best of the three.
        for (unsigned int t = 0; t < 3; ++t)
            EXPECT_LE(best, search.h(t).getBestSolution().getObjectiveValues()[0]);
        // Each heuristic's result is its own, fixed by its seed.
        for (unsigned int t = 0; t < 3; ++t) {
            long long v = search.h(t).getBestSolution().getObjectiveValues()[0];
            if (run == 0) firstRuns.push_back(v);
            else EXPECT_EQ(v, firstRuns[t]) << "thread " << t;
        }
        if (run == 0) firstRuns.push_back(best);
        else EXPECT_EQ(best, firstRuns[3]);
    }
}

TEST(ParallelizerTest, OtherThreadsStopAtTheIterationsOfTheFirstToEnd) {
    ParallelSearch search(2);
    search.h(0).setIterationLimit(3000);
    // Thread 1 alone would run for a minute.
    search.h(1).setTimeLimit(60);
    auto started = std::chrono::steady_clock::now();
    search.parallelizer.solve();
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(30));
    EXPECT_EQ(search.h(0).getNbIterations(), 3000u);
    EXPECT_GE(search.h(1).getNbIterations(), 3000u);
}

TEST(ParallelizerTest, PauseHoldsEveryThreadUntilResume) {
    ParallelSearch search(2);
    for (unsigned int t = 0; t < 2; ++t) search.h(t).setTimeLimit(60);
    Parallelizer& p = search.parallelizer;
    p.start();
    EXPECT_EQ(kernelErrorOf([&] { p.start(); }), "Heuristics already started");
    EXPECT_EQ(kernelErrorOf([&] { p.addHeuristic(&search.h(0)); }), "You cannot add an heuristic during resolution");
    for (int round = 0; round < 3; ++round) {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        p.pause();
        EXPECT_EQ(p.getState(), ParallelizerPaused);
        unsigned long long counts[2] = {search.h(0).getNbIterations(), search.h(1).getNbIterations()};
        EXPECT_GT(counts[0] + counts[1], 0u);
        EXPECT_NE(p.getBestHeuristic(), nullptr);
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        EXPECT_EQ(search.h(0).getNbIterations(), counts[0]);
        EXPECT_EQ(search.h(1).getNbIterations(), counts[1]);
        p.resume();
        EXPECT_EQ(p.getState(), ParallelizerRunning);
    }
    EXPECT_EQ(kernelErrorOf([&] { p.getBestHeuristic(); }), "Solver must be paused or stopped to do this action");
    EXPECT_FALSE(p.wait(0));
    // A stop ends both runs long before their time limits.
    p.stop();
    EXPECT_EQ(p.getState(), ParallelizerIdle);
    EXPECT_LT(search.h(0).getRunningTime(), 30u);
}

TEST(ParallelizerTest, WaitReturnsWhenTheSearchEndsAndPauseAfterTheEndReturnsAtOnce) {
    ParallelSearch search(2);
    for (unsigned int t = 0; t < 2; ++t) search.h(t).setIterationLimit(2000);
    Parallelizer& p = search.parallelizer;
    p.start();
    EXPECT_TRUE(p.wait(30));
    EXPECT_EQ(p.getState(), ParallelizerEnded);
    p.pause();  // nothing runs: returns at once
    p.resume();
    p.join();
    EXPECT_EQ(p.getState(), ParallelizerIdle);
}

TEST(ParallelizerTest, TiesKeepTheFirstHeuristicAndErrors) {
    Parallelizer empty;
    EXPECT_EQ(kernelErrorOf([&] { empty.start(); }), "No heuristic to start");
    EXPECT_EQ(kernelErrorOf([&] { empty.getHeuristic(0); }), "Wrong heuristic number.");
    EXPECT_EQ(empty.getRunningHeuristic(), nullptr);

    // Three heuristics that do not search: their best solutions are the
    // same start, found at iteration 0.
    ParallelSearch search(3);
    for (unsigned int t = 0; t < 3; ++t) search.h(t).setTimeLimit(0);
    search.parallelizer.solve();
    EXPECT_EQ(search.parallelizer.getBestHeuristic(), &search.h(0));
    // A strictly better one wins whatever its position.
    search.h(2).setTimeLimit(60);
    search.h(2).setIterationLimit(5000);
    search.parallelizer.removeHeuristic(&search.h(0));
    search.parallelizer.removeHeuristic(&search.h(1));
    search.parallelizer.solve();
    search.parallelizer.addHeuristic(&search.h(0));
    ASSERT_LT(search.h(2).getBestSolution().getObjectiveValues()[0],
              search.h(0).getBestSolution().getObjectiveValues()[0]);
    EXPECT_EQ(search.parallelizer.getBestHeuristic(), &search.h(2));
}

namespace {
std::vector<std::vector<long long>> bestVariables(ParallelSearch& search, unsigned int nbThreads) {
    std::vector<std::vector<long long>> all;
    for (unsigned int t = 0; t < nbThreads; ++t) all.push_back(search.h(t).getBestSolution().getVariableValues());
    return all;
}

std::chrono::steady_clock::time_point inAMinute() {
    return std::chrono::steady_clock::now() + std::chrono::minutes(1);
}
}  // namespace

TEST(ParallelizerTest, CheckpointsHoldEveryThreadAtTheSameCountsWithoutChangingTheSearch) {
    ParallelSearch plain(2);
    for (unsigned int t = 0; t < 2; ++t) plain.h(t).setIterationLimit(1000);
    plain.parallelizer.solve();

    ParallelSearch held(2);
    for (unsigned int t = 0; t < 2; ++t) held.h(t).setIterationLimit(1000);
    held.parallelizer.setCheckpointPeriod(300);
    held.parallelizer.start();
    for (unsigned long long at : {300u, 600u, 900u}) {
        ASSERT_EQ(held.parallelizer.waitUntil(inAMinute()), Parallelizer::WaitCheckpoint);
        for (unsigned int t = 0; t < 2; ++t) EXPECT_EQ(held.h(t).getNbIterations(), at);
        // Held threads count as paused: the best heuristic can be read, and
        // a display's pause and resume leave them where they are.
        EXPECT_NO_THROW(held.parallelizer.getBestHeuristic());
        held.parallelizer.pause();
        held.parallelizer.resume();
        EXPECT_EQ(held.parallelizer.waitUntil(std::chrono::steady_clock::now() + std::chrono::milliseconds(20)),
                  Parallelizer::WaitCheckpoint);
        for (unsigned int t = 0; t < 2; ++t) EXPECT_EQ(held.h(t).getNbIterations(), at);
        held.parallelizer.releaseCheckpoint();
    }
    // No checkpoint at the limit itself: the threads end there.
    EXPECT_EQ(held.parallelizer.waitUntil(inAMinute()), Parallelizer::WaitEnded);
    EXPECT_TRUE(held.parallelizer.someEnded());
    held.parallelizer.join();
    for (unsigned int t = 0; t < 2; ++t) EXPECT_EQ(held.h(t).getNbIterations(), 1000u);
    EXPECT_EQ(bestVariables(held, 2), bestVariables(plain, 2));
}

TEST(ParallelizerTest, StopReleasesThreadsHeldAtACheckpoint) {
    ParallelSearch search(2);
    for (unsigned int t = 0; t < 2; ++t) search.h(t).setIterationLimit(100000);
    search.parallelizer.setCheckpointPeriod(50);
    search.parallelizer.start();
    ASSERT_EQ(search.parallelizer.waitUntil(inAMinute()), Parallelizer::WaitCheckpoint);
    EXPECT_FALSE(search.parallelizer.someEnded());
    search.parallelizer.stop();
    for (unsigned int t = 0; t < 2; ++t) EXPECT_EQ(search.h(t).getNbIterations(), 50u);
}

TEST(ParallelizerTest, RestartMovesASearchToABetterSolutionAndKeepsABetterBest) {
    // Short descents: two seeds end at different costs.
    ParallelSearch search(2, 0);
    for (unsigned int t = 0; t < 2; ++t) search.h(t).setIterationLimit(60);
    search.parallelizer.solve();
    Heuristic* better = search.parallelizer.getBestHeuristic();
    Heuristic* worse = better == &search.h(0) ? &search.h(1) : &search.h(0);
    const Solution target = better->getBestSolution();
    const Solution formerBest = worse->getBestSolution();
    ASSERT_GT(target.compare(*better->getDag(), formerBest), 0) << "the two searches must differ";

    EXPECT_TRUE(worse->restartFrom(target));
    Solution now;
    worse->getDag()->saveSolution(now);
    EXPECT_EQ(now.getVariableValues(), target.getVariableValues());
    EXPECT_EQ(worse->getBestSolution().getObjectiveValues(), target.getObjectiveValues());
    EXPECT_EQ(worse->getBestSolution().getVariableValues(), target.getVariableValues());

    // Moved to a worse point, a search keeps its best.
    EXPECT_TRUE(better->restartFrom(formerBest));
    better->getDag()->saveSolution(now);
    EXPECT_EQ(now.getVariableValues(), formerBest.getVariableValues());
    EXPECT_EQ(better->getBestSolution().getVariableValues(), target.getVariableValues());
    EXPECT_EQ(better->getBestSolution().getObjectiveValues(), target.getObjectiveValues());
}
