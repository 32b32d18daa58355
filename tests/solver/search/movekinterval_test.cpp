// Time-indexed schedules (IntervalRows) and the moves along their line:
// which models are found to have one (near misses not), that every built
// move keeps the machine rows as covered as before and evaluates as a
// from-scratch evaluation does, and the start that places the jobs.

#include "solver/kernel/dag.h"
#include "solver/kernel/greedysolution.h"
#include "solver/kernel/quickrand.h"
#include "solver/kernel/threadenv.h"
#include "solver/move/autonomousfixedfields.h"
#include "solver/move/autonomousstructure.h"
#include "solver/move/movekinterval.h"
#include "../kernel/referenceevaluator.h"
#include "gatedmodels.h"
#include "schedulemodels.h"
#include "searchmodels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>

using ScheduleModels::Schedule;

namespace {

std::map<std::string, unsigned int> movesOf(const DagFixedFields& fixed, const SearchParams& params) {
    auto dag = std::make_unique<Dag>(fixed);
    dag->init();
    AutonomousFixedFields fields(fixed);
    ThreadEnv env(params, dag.get(), &fields, 1);
    std::map<std::string, unsigned int> byName;
    for (unsigned int m = 0; m < env.getHeuristic()->getNbMoves(); ++m)
        byName[env.getHeuristic()->getMove(m)->getName()] = env.getHeuristic()->getMove(m)->getUtilRate();
    return byName;
}

// Jobs of lengths 2, 3 and 2 over 0..H-1 written in the given ways; the
// first job's boolean starting at 1 stands for every variant.
struct NearSchedule {
    enum Variant { Exact, Gap, Capacity2, Coefficient2, MixedLengths, SharedBoolean, OtherConstraint };

    explicit NearSchedule(Variant variant) {
        const unsigned int horizon = 8, lengths[3] = {2, 3, 2};
        std::vector<std::vector<unsigned int>> covers(horizon);
        for (unsigned int j = 0; j < 3; ++j) {
            std::vector<unsigned int> row;
            for (unsigned int t = 0; t + lengths[j] <= horizon; ++t) {
                row.push_back(g.boolean());
                // The first job's boolean at 1 covers 1 and 3, not 2; or
                // only 1, where the others of its row cover two places.
                for (unsigned int u = t; u < t + lengths[j]; ++u) {
                    if (j == 0 && t == 1 && variant == Gap && u == 2) continue;
                    if (j == 0 && t == 1 && variant == MixedLengths && u == 2) continue;
                    covers[u].push_back(row.back());
                }
                if (j == 0 && t == 1 && variant == Gap) covers[3].push_back(row.back());
            }
            rows.push_back(row);
            g.constraint(g.add(Eq, {g.add(BooleanSum, row), g.constant(1)}));
        }
        if (variant == SharedBoolean)
            g.constraint(g.add(Eq, {g.add(BooleanSum, {rows[0][1], rows[1][0]}), g.constant(1)}));
        if (variant == OtherConstraint)
            g.constraint(g.add(Leq, {g.add(ScalarSum, {rows[0][1], rows[2][3]}, {4, 5}), g.constant(7)}));
        for (unsigned int u = 0; u < horizon; ++u) {
            unsigned int busy = variant == Coefficient2 && u == 4
                                    ? g.add(ScalarSum, covers[u], std::vector<long long>(covers[u].size(), 2))
                                    : g.add(BooleanSum, covers[u]);
            g.constraint(g.add(Leq, {busy, g.constant(variant == Capacity2 ? 2 : 1)}));
        }
        std::vector<long long> costs;
        for (unsigned int t = 0; t < rows[2].size(); ++t) costs.push_back(t);
        g.objective(g.add(ScalarSum, rows[2], costs), Minimize);
        g.close();
    }

    TestGraph g;
    std::vector<std::vector<unsigned int>> rows;
};

}  // namespace

TEST(IntervalRowsTest, FindsTheJobsAndTheLineOfATimeIndexedSchedule) {
    for (unsigned int slack : {0u, 5u}) {
        Schedule model(6, 5, slack, 7 + slack);
        AutonomousFixedFields fields(model.g.fixed);
        const IntervalRows& rows = fields.getIntervals();
        ASSERT_EQ(rows.nbRows(), model.n);
        ASSERT_EQ(rows.lineLength(), model.horizon);
        for (unsigned int u = 0; u < model.horizon; ++u)
            EXPECT_EQ(rows.lineSum(u), fields.rootSumIndex(model.machine[u]));
        for (unsigned int j = 0; j < model.n; ++j) {
            EXPECT_EQ(rows.rowSum(j), fields.rootSumIndex(model.rows[j]));
            EXPECT_EQ(rows.length(j), model.lengths[j]);
            ASSERT_EQ(rows.sizeOf(j), model.horizon - model.lengths[j] + 1);
            for (unsigned int t = 0; t + model.lengths[j] <= model.horizon; ++t) {
                unsigned int boolean = model.at(j, t);
                EXPECT_EQ(rows.at(j, t), boolean);
                EXPECT_EQ(rows.firstOf(j)[t], boolean);
                EXPECT_EQ(rows.rowOf(model.g.fixed.variableIndex(boolean)), j);
                EXPECT_EQ(rows.startOf(model.g.fixed.variableIndex(boolean)), t);
            }
            // No boolean starts past the horizon.
            EXPECT_EQ(rows.at(j, model.horizon - model.lengths[j] + 1), IntervalRows::NONE);
        }
        EXPECT_TRUE(MoveKInterval::isValid(fields));
    }
    // The small hand-written one is found too: the near misses below differ
    // from it in one point each.
    NearSchedule exact(NearSchedule::Exact);
    AutonomousFixedFields fields(exact.g.fixed);
    EXPECT_EQ(fields.getIntervals().nbRows(), 3u);
    EXPECT_EQ(fields.getIntervals().lineLength(), 8u);
}

TEST(IntervalRowsTest, FindsNoneInNearMissesNorInOtherModels) {
    const char* names[] = {"exact", "gap", "capacity 2", "coefficient 2", "mixed lengths", "shared boolean",
                           "other constraint"};
    for (int v = NearSchedule::Gap; v <= NearSchedule::OtherConstraint; ++v) {
        SCOPED_TRACE(names[v]);
        NearSchedule near(static_cast<NearSchedule::Variant>(v));
        AutonomousFixedFields fields(near.g.fixed);
        EXPECT_TRUE(fields.getIntervals().empty());
        EXPECT_FALSE(MoveKInterval::isValid(fields));
        for (const auto& move : movesOf(near.g.fixed, SearchParams()))
            EXPECT_EQ(move.first.find("Interval"), std::string::npos) << move.first;
    }
    // Assignments without a line: rows of gated places, a knapsack, a set
    // cover.
    GatedModels::GatedModel colouring(GatedModels::Colouring, 5, 5, 3);
    GatedModels::GatedModel packing(GatedModels::BinPacking, 5, 5, 3);
    SearchModels::Knapsack knapsack({3, 4, 5}, {4, 5, 6}, 8);
    SearchModels::SetCover cover({{0, 1}, {1, 2}, {0, 2}}, 3);
    for (const DagFixedFields* fixed : {&colouring.g.fixed, &packing.g.fixed, &knapsack.g.fixed, &cover.g.fixed}) {
        AutonomousFixedFields fields(*fixed);
        EXPECT_TRUE(fields.getIntervals().empty());
    }
}

TEST(MoveKIntervalTest, BothKindsHaveTheSwitchAndTheirWeight) {
    Schedule model(4, 3, 2, 1);
    SearchParams params;
    std::map<std::string, unsigned int> on = movesOf(model.g.fixed, params);
    EXPECT_EQ(on["1-IntervalInsert"], MoveWeights::INTERVAL_WEIGHT);
    EXPECT_EQ(on["1-IntervalSwap"], MoveWeights::INTERVAL_WEIGHT);
    params.set(KIntervalEnabled, 0);
    std::map<std::string, unsigned int> off = movesOf(model.g.fixed, params);
    on.erase("1-IntervalInsert");
    on.erase("1-IntervalSwap");
    EXPECT_EQ(on, off);
}

// From a feasible start, with idle places between jobs or none: every built
// move keeps each job started once and no two overlapping, within the span
// the jobs covered (idle places move with the jobs around them, or out at
// its ends), the
// graph's evaluation agrees
// with a from-scratch one, and random commits walk on through orders.
TEST(MoveKIntervalTest, EveryBuiltMoveKeepsTheLineCoveredAndEvaluatesExactly) {
    for (MoveKInterval::Kind kind : {MoveKInterval::Insert, MoveKInterval::Swap})
        for (unsigned int seed = 1; seed <= 4; ++seed) {
            SCOPED_TRACE("kind " + std::to_string(kind) + " seed " + std::to_string(seed));
            Schedule model(7, 4, seed % 2 == 0 ? 0 : 6, seed);
            const DagFixedFields& fixed = model.g.fixed;
            // Idle places among the jobs: the first job starts at 1 when
            // there is slack.
            if (seed % 2 != 0) {
                model.start[fixed.variableIndex(model.at(0, 0))] = 0;
                model.start[fixed.variableIndex(model.at(0, 1))] = 1;
                for (unsigned int j = 1, clock = model.lengths[0] + 2; j < model.n; clock += model.lengths[j++]) {
                    for (unsigned int t = 0; t + model.lengths[j] <= model.horizon; ++t)
                        model.start[fixed.variableIndex(model.at(j, t))] = t == clock ? 1 : 0;
                }
            }
            auto dag = model.g.makeDag(model.start);
            // Judged from the kept scores, a move reaches the graph only when
            // committed: on every other seed the graph judges each one.
            const bool kept = seed % 4 < 2;
            dag->getPropagation().setKeptScoresEnabled(*dag, kept);
            AutonomousFixedFields fields(fixed);
            AutonomousStructure structure(*dag, fields);
            Quickrand rand(seed);
            MoveKInterval move(*dag, rand, structure, kind, 1, 50);
            EXPECT_EQ(move.getName(), kind == MoveKInterval::Insert ? "1-IntervalInsert" : "1-IntervalSwap");
            std::vector<long long> values(fixed.nbNodes(), 0);
            for (unsigned int node : fixed.variables()) values[node] = dag->currentValue(node);
            ASSERT_TRUE(model.holds(values));
            std::vector<unsigned int> load = model.load(values);
            const std::vector<long long> first = model.starts(values);
            unsigned int built = 0, committed = 0;
            bool reordered = false;
            for (int i = 0; i < 300; ++i) {
                if (!move.modify()) {
                    move.update(MoveInfeasible);
                    continue;
                }
                ++built;
                ASSERT_FALSE(dag->getPropagation().getModifiedVariables().empty());
                for (unsigned int node : fixed.variables()) values[node] = dag->newValue(node);
                ASSERT_TRUE(model.holds(values));
                // The jobs stay within the span they covered: the first
                // loaded place is never earlier, the last never later.
                std::vector<unsigned int> now = model.load(values);
                ASSERT_GE(std::find(now.begin(), now.end(), 1u) - now.begin(),
                          std::find(load.begin(), load.end(), 1u) - load.begin());
                ASSERT_GE(std::find(now.rbegin(), now.rend(), 1u) - now.rbegin(),
                          std::find(load.rbegin(), load.rend(), 1u) - load.rbegin());
                ASSERT_TRUE(move.eval());
                ReferenceEvaluator::evaluate(fixed, values);
                for (unsigned int node = 0; node < fixed.nbNodes() && !kept; ++node)
                    ASSERT_EQ(dag->newValue(node), values[node]) << node;
                bool commit = rand.nextInt(2) == 0;
                committed += commit;
                move.update(commit ? MoveAccepted : MoveRejected);
                for (unsigned int node : fixed.variables()) values[node] = dag->currentValue(node);
                load = model.load(values);
                ReferenceEvaluator::evaluate(fixed, values);
                for (unsigned int node = 0; node < fixed.nbNodes(); ++node)
                    ASSERT_EQ(dag->currentValue(node), values[node]) << node;
                reordered = reordered || model.starts(values) != first;
            }
            // Once feasible, every job is placed once and no run overlaps:
            // only a near draw that finds no other job fails to build.
            EXPECT_GT(built, 150u);
            EXPECT_GT(committed, 100u);
            EXPECT_TRUE(reordered);
        }
}

// Nothing to move while no job is placed once: all 0, or a job twice.
TEST(MoveKIntervalTest, BuildsNothingWhereNoJobIsPlacedOnce) {
    Schedule model(3, 3, 0, 5);
    std::vector<long long> none(model.g.fixed.nbVariables(), 0);
    std::vector<long long> doubled = none;
    for (unsigned int j = 0; j < model.n; ++j) {
        doubled[model.g.fixed.variableIndex(model.at(j, 0))] = 1;
        doubled[model.g.fixed.variableIndex(model.at(j, 1))] = 1;
    }
    for (const auto* start : {&none, &doubled}) {
        auto dag = model.g.makeDag(*start);
        AutonomousFixedFields fields(model.g.fixed);
        AutonomousStructure structure(*dag, fields);
        Quickrand rand(3);
        for (MoveKInterval::Kind kind : {MoveKInterval::Insert, MoveKInterval::Swap}) {
            MoveKInterval move(*dag, rand, structure, kind, 1, 50);
            for (int i = 0; i < 20; ++i) {
                EXPECT_FALSE(move.modify());
                move.update(MoveInfeasible);
            }
        }
    }
}

// From all 0 the start places the jobs one after another, tight (no slack:
// an exact cover of the line, which the plain greedy pass misses) or with
// idle places, in the order of their latest cheapest start.
TEST(GreedySolutionTest, PlacesTheJobsOfATimeIndexedScheduleOneAfterAnother) {
    for (unsigned int slack : {0u, 4u})
        for (unsigned int seed = 1; seed <= 3; ++seed) {
            SCOPED_TRACE("slack " + std::to_string(slack) + " seed " + std::to_string(seed));
            Schedule model(8, 5, slack, seed);
            auto dag = model.g.makeDag();
            AutonomousFixedFields fields(model.g.fixed);
            Quickrand rand(seed);
            ASSERT_TRUE(GreedySolution(&rand).placeIntervals(dag.get(), fields));
            EXPECT_EQ(dag->getPropagation().getViolatedConstraints().sizeIn(), 0u);
            EXPECT_EQ(dag->getPropagation().getActiveConstraints().sizeOut(), 0u);
            std::vector<long long> values(model.g.fixed.nbNodes(), 0);
            for (unsigned int node : model.g.fixed.variables()) values[node] = dag->currentValue(node);
            ASSERT_TRUE(model.holds(values));
            std::vector<long long> at = model.starts(values);
            // Back to back from 0: the jobs cover 0 to the sum of their
            // lengths.
            std::vector<unsigned int> load = model.load(values);
            for (unsigned int u = 0; u < model.horizon; ++u) EXPECT_EQ(load[u], u < model.horizon - slack ? 1u : 0u);
            // The job whose cost starts later goes later.
            for (unsigned int a = 0; a < model.n; ++a)
                for (unsigned int b = 0; b < model.n; ++b) {
                    unsigned int latestA = 0, latestB = 0;
                    for (unsigned int t = 0; t + model.lengths[a] <= model.horizon; ++t)
                        if (fields.getRootBool(model.g.fixed.variableIndex(model.at(a, t))).getNbFreeRootSums() == 0)
                            latestA = t;
                    for (unsigned int t = 0; t + model.lengths[b] <= model.horizon; ++t)
                        if (fields.getRootBool(model.g.fixed.variableIndex(model.at(b, t))).getNbFreeRootSums() == 0)
                            latestB = t;
                    if (latestA < latestB) {
                        EXPECT_LT(at[a], at[b]) << a << " " << b;
                    }
                }
        }
    // No structure, no placement.
    SearchModels::Knapsack knapsack({3, 4, 5}, {4, 5, 6}, 8);
    auto dag = knapsack.g.makeDag();
    AutonomousFixedFields fields(knapsack.g.fixed);
    Quickrand rand(1);
    EXPECT_FALSE(GreedySolution(&rand).placeIntervals(dag.get(), fields));
}
