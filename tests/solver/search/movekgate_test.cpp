// Gates (booleans that gate others through "x <= g" or "sum <= C * g") and
// the moves across them: which booleans are found to gate which, that every
// built move keeps the links whole and evaluates as a from-scratch
// evaluation does, and the moves' verdicts on small models where they are
// forced.

#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"
#include "solver/kernel/threadenv.h"
#include "solver/move/autonomousfixedfields.h"
#include "solver/move/autonomousstructure.h"
#include "solver/move/movekgate.h"
#include "../kernel/referenceevaluator.h"
#include "gatedmodels.h"
#include "searchmodels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>

using namespace GatedModels;

namespace {

const char* shapeName(Shape shape) {
    return shape == Colouring ? "colouring" : shape == PMedian ? "p-median" : "bin packing";
}

std::vector<unsigned int> sorted(GateLinks::Span span) {
    std::vector<unsigned int> out(span.begin(), span.end());
    std::sort(out.begin(), out.end());
    return out;
}

// The names and rates of the moves a thread builds for a model.
std::map<std::string, unsigned int> movesOf(const GatedModel& model, const SearchParams& params) {
    auto dag = model.g.makeDag(model.start);
    AutonomousFixedFields fields(model.g.fixed);
    ThreadEnv env(params, dag.get(), &fields, 1);
    std::map<std::string, unsigned int> byName;
    for (unsigned int m = 0; m < env.getHeuristic()->getNbMoves(); ++m)
        byName[env.getHeuristic()->getMove(m)->getName()] = env.getHeuristic()->getMove(m)->getUtilRate();
    return byName;
}

}  // namespace

TEST(GateLinksTest, FindsTheGatesOfTextbookModelsInEachForm) {
    for (Shape shape : {Colouring, PMedian, BinPacking})
        for (Form form : {Linked, Reversed, Grouped}) {
            if (shape == PMedian && form == Grouped) continue;
            SCOPED_TRACE(std::string(shapeName(shape)) + " form " + std::to_string(form));
            GatedModel model(shape, 5, 5, 3, form);
            AutonomousFixedFields fields(model.g.fixed);
            const GateLinks& gates = fields.getGates();
            ASSERT_EQ(gates.size(), model.m);
            for (unsigned int j = 0; j < model.m; ++j) {
                unsigned int gate = 0;
                while (gate < gates.size() && gates.gateNode(gate) != model.gates[j]) ++gate;
                ASSERT_LT(gate, gates.size());
                EXPECT_EQ(gates.isGroup(gate), form == Grouped);
                if (form != Grouped) {
                    EXPECT_EQ(gates.gateOf(model.rank(model.gates[j])), gate);
                }
                std::vector<unsigned int> column;
                for (unsigned int i = 0; i < model.n; ++i) column.push_back(model.x[i * model.m + j]);
                EXPECT_EQ(sorted(gates.gated(gate)), column);
                for (unsigned int i = 0; i < model.n; ++i)
                    EXPECT_EQ(sorted(gates.gatesOf(model.rank(model.x[i * model.m + j]))),
                              std::vector<unsigned int>{gate});
                // Only the packing's loads bounded by their bin's boolean
                // are capacities of a gate.
                unsigned int sum = fields.rootSumIndex(model.loads.empty() ? model.rows[j] : model.loads[j]);
                const GateLinks::Capacity* capacity = gates.capacityOf(sum);
                if (shape == BinPacking && form != Grouped) {
                    ASSERT_NE(capacity, nullptr);
                    EXPECT_EQ(capacity->gate, gate);
                    EXPECT_EQ(capacity->capacity, model.capacity);
                } else {
                    EXPECT_EQ(capacity, nullptr);
                }
            }
            for (unsigned int row : model.rows) EXPECT_EQ(gates.capacityOf(fields.rootSumIndex(row)), nullptr);
            // An item gates nothing.
            EXPECT_EQ(gates.gateOf(model.rank(model.x[0])), 4294967295u);
            EXPECT_TRUE(MoveKGate::isValid(fields));
            // Where a count ties the gates, closes and opens move them.
            EXPECT_EQ(MoveKGate::isValidSwap(fields), shape != PMedian);
        }
}

TEST(GateLinksTest, FindsNoneWhereNoBooleanGatesOthers) {
    SearchModels::Knapsack knapsack({3, 4, 5}, {4, 5, 6}, 8);
    SearchModels::SetCover cover({{0, 1}, {1, 2}, {0, 2}}, 3);
    // Max-cut: a weighted sum of xors, no constraint.
    TestGraph cut;
    std::vector<unsigned int> side;
    for (int i = 0; i < 4; ++i) side.push_back(cut.boolean());
    cut.objective(cut.add(ScalarSum, {cut.add(Xor, {side[0], side[1]}), cut.add(Xor, {side[1], side[2]}),
                                      cut.add(Xor, {side[2], side[3]})},
                          {3, 1, 2}),
                  Maximize);
    cut.close();
    // Near misses: a boolean below a sum or a constant, strictly below a
    // boolean, below a negative multiple, a doubled boolean below another,
    // a row with a negative coefficient below a multiple, a row below a
    // multiple of one of its own booleans; maxima that are not groups.
    TestGraph near;
    std::vector<unsigned int> b;
    for (int i = 0; i < 6; ++i) b.push_back(near.boolean());
    near.constraint(near.add(Leq, {b[0], near.add(Sum, {b[1], b[2]})}));
    near.constraint(near.add(Leq, {b[0], near.constant(1)}));
    near.constraint(near.add(Lt, {b[1], b[2]}));
    near.constraint(near.add(Leq, {b[1], near.scalar(-3, b[3])}));
    near.constraint(near.add(Leq, {near.scalar(2, b[2]), b[3]}));
    near.constraint(near.add(Leq, {near.add(ScalarSum, {b[0], b[1], b[2]}, {4, -2, 3}), near.scalar(9, b[4])}));
    near.constraint(near.add(Leq, {near.add(ScalarSum, {b[3], b[4], b[5]}, {4, 2, 3}), near.scalar(9, b[5])}));
    // Maxima of booleans that no row places, and one under a constraint.
    near.objective(near.add(Sum, {near.add(Max, {b[0], b[1]}), near.add(Or, {b[2], b[3]}), b[4], b[5]}));
    std::vector<unsigned int> r;
    for (int i = 0; i < 4; ++i) r.push_back(near.boolean());
    near.constraint(near.add(Eq, {near.add(BooleanSum, r), near.constant(1)}));
    near.constraint(near.add(Leq, {near.add(Max, {r[0], r[1]}), near.add(Max, {r[2], r[3]})}));
    near.close();
    for (const DagFixedFields* fixed : {&knapsack.g.fixed, &cover.g.fixed, &cut.fixed, &near.fixed}) {
        AutonomousFixedFields fields(*fixed);
        EXPECT_EQ(fields.getGates().size(), 0u);
        for (unsigned int s = 0; s < fields.getNbRootSums(); ++s) EXPECT_EQ(fields.getGates().capacityOf(s), nullptr);
        EXPECT_FALSE(MoveKGate::isValid(fields));
        // No gate move in the thread's lottery.
        auto dag = std::make_unique<Dag>(*fixed);
        dag->init();
        ThreadEnv env(SearchParams(), dag.get(), &fields, 1);
        for (unsigned int m = 0; m < env.getHeuristic()->getNbMoves(); ++m)
            EXPECT_EQ(env.getHeuristic()->getMove(m)->getName().find("Gate"), std::string::npos);
    }
}

TEST(MoveKGateTest, EachKindHasItsSwitchAndWeight) {
    GatedModel model(Colouring, 4, 4, 1);
    SearchParams params;
    std::map<std::string, unsigned int> both = movesOf(model, params);
    EXPECT_EQ(both["1-GateClose"], MoveWeights::GATE_WEIGHT);
    EXPECT_EQ(both["1-GateOpen"], MoveWeights::GATE_WEIGHT);
    EXPECT_EQ(both["1-GateSwap"], MoveWeights::GATE_WEIGHT);
    params.set(KGateCloseEnabled, 0);
    std::map<std::string, unsigned int> two = movesOf(model, params);
    EXPECT_EQ(two.count("1-GateClose"), 0u);
    EXPECT_EQ(two.count("1-GateOpen"), 1u);
    EXPECT_EQ(two.count("1-GateSwap"), 1u);
    params.set(KGateSwapEnabled, 0);
    std::map<std::string, unsigned int> one = movesOf(model, params);
    EXPECT_EQ(one.count("1-GateSwap"), 0u);
    EXPECT_EQ(one.count("1-GateOpen"), 1u);
    params.set(KGateOpenEnabled, 0);
    std::map<std::string, unsigned int> none = movesOf(model, params);
    EXPECT_EQ(none.count("1-GateOpen"), 0u);
    // The other moves are the same either way.
    for (const char* name : {"1-GateClose", "1-GateOpen", "1-GateSwap"}) both.erase(name);
    EXPECT_EQ(both, none);
}

// From a feasible start, every move built keeps each row, link, capacity
// and conflict (it is refused rather than built otherwise), the graph's
// evaluation agrees with a from-scratch one, and random commits walk on.
TEST(MoveKGateTest, EveryBuiltMoveKeepsTheLinksWholeAndEvaluatesExactly) {
    for (Shape shape : {Colouring, PMedian, BinPacking})
        for (MoveKGate::Kind kind : {MoveKGate::Close, MoveKGate::Open, MoveKGate::Swap})
            for (unsigned int seed = 1; seed <= 3; ++seed) {
                SCOPED_TRACE(std::string(shapeName(shape)) + " kind " + std::to_string(kind) + " seed " +
                             std::to_string(seed));
                GatedModel model(shape, 8, shape == PMedian ? 9 : 8, seed, static_cast<Form>(seed - 1));
                auto dag = model.g.makeDag(model.start);
                const DagFixedFields& fixed = model.g.fixed;
                AutonomousFixedFields fields(fixed);
                AutonomousStructure structure(*dag, fields);
                Quickrand rand(seed);
                MoveKGate move(*dag, rand, structure, kind, 1, 50);
                const char* names[3] = {"1-GateClose", "1-GateOpen", "1-GateSwap"};
                EXPECT_EQ(move.getName(), names[kind]);
                std::vector<long long> values(fixed.nbNodes(), 0);
                unsigned int built = 0, committed = 0, gateChanges = 0;
                for (int i = 0; i < 400; ++i) {
                    if (!move.modify()) {
                        move.update(MoveInfeasible);
                        continue;
                    }
                    ++built;
                    ASSERT_FALSE(dag->getPropagation().getModifiedVariables().empty());
                    for (unsigned int node : fixed.variables()) values[node] = dag->newValue(node);
                    ASSERT_TRUE(model.holds(values));
                    ASSERT_TRUE(move.eval());
                    ReferenceEvaluator::evaluate(fixed, values);
                    for (unsigned int gate : model.gates) gateChanges += values[gate] != dag->currentValue(gate);
                    for (unsigned int node = 0; node < fixed.nbNodes(); ++node)
                        ASSERT_EQ(dag->newValue(node), values[node]);
                    bool commit = rand.nextInt(2) == 0;
                    committed += commit;
                    move.update(commit ? MoveAccepted : MoveRejected);
                }
                EXPECT_EQ(move.getNbAttempted(), 400u);
                EXPECT_EQ(move.getNbInfeasibles(), 400u - built);
                // Opening alone gains nothing where the objective counts the
                // gates: only the p-median, whose open gates are fixed in
                // number, moves a gate by opening one; and only there is a
                // gate closed at the start, for a swap to open. Closes run
                // out as the committed ones pack the items into fewer gates.
                if (kind == MoveKGate::Close || shape == PMedian) {
                    EXPECT_GT(built, 3u);
                    EXPECT_GT(committed, 0u);
                    EXPECT_GT(gateChanges, 0u);
                } else {
                    EXPECT_EQ(built, 0u);
                }
            }
}

// Bins of capacity 10 holding {7, 2}, {6, 2} and {1}: closing the third
// puts its item in the fullest bin where it fits, the first (room 1
// against 2). Any close built keeps every bin within its capacity.
TEST(MoveKGateTest, ClosingABinPutsItsItemsWhereTheyFitBest) {
    TestGraph g;
    const unsigned int n = 5, m = 3;
    const std::vector<long long> sizes = {7, 2, 6, 2, 1};
    const unsigned int binOf[n] = {0, 0, 1, 1, 2};
    std::vector<unsigned int> x, used, loads;
    for (unsigned int i = 0; i < n * m; ++i) x.push_back(g.boolean());
    for (unsigned int j = 0; j < m; ++j) used.push_back(g.boolean());
    for (unsigned int i = 0; i < n; ++i)
        g.constraint(g.add(Eq, {g.add(BooleanSum, {x[i * m], x[i * m + 1], x[i * m + 2]}), g.constant(1)}));
    for (unsigned int j = 0; j < m; ++j) {
        std::vector<unsigned int> column;
        for (unsigned int i = 0; i < n; ++i) column.push_back(x[i * m + j]);
        loads.push_back(g.add(ScalarSum, column, sizes));
        g.constraint(g.add(Leq, {loads.back(), g.scalar(10, used[j])}));
    }
    g.objective(g.add(Sum, used));
    g.close();
    std::vector<long long> start(g.fixed.nbVariables(), 0);
    for (unsigned int i = 0; i < n; ++i) start[g.fixed.variableIndex(x[i * m + binOf[i]])] = 1;
    for (unsigned int j = 0; j < m; ++j) start[g.fixed.variableIndex(used[j])] = 1;
    auto dag = g.makeDag(start);
    AutonomousFixedFields fields(g.fixed);
    AutonomousStructure structure(*dag, fields);
    Quickrand rand(7);
    MoveKGate close(*dag, rand, structure, MoveKGate::Close, 1, 0);
    unsigned int closedThird = 0;
    for (int attempt = 0; attempt < 60; ++attempt) {
        if (!close.modify()) {
            close.update(MoveInfeasible);
            continue;
        }
        ASSERT_TRUE(close.eval());
        EXPECT_EQ(dag->newValue(g.fixed.objectives()[0]), 2);
        for (unsigned int j = 0; j < m; ++j) EXPECT_LE(dag->newValue(loads[j]), 10 * dag->newValue(used[j]));
        if (dag->newValue(used[2]) == 0) {
            ++closedThird;
            EXPECT_EQ(dag->newValue(x[4 * m + 0]), 1);
            EXPECT_EQ(dag->newValue(x[4 * m + 1]), 0);
            EXPECT_EQ(dag->getPropagation().getModifiedVariables().size(), 3u);
        }
        close.update(MoveRejected);
    }
    EXPECT_GT(closedThird, 5u);
}

// Three clients, each assigned to one of two sites and only to an open
// one, site 0 open and serving all; `costs` per client and site, then, when
// given, the cost of opening each site; `count`: exactly one site open.
struct TwoSites {
    TwoSites(std::vector<long long> costs, bool count) {
        for (unsigned int i = 0; i < n * m; ++i) x.push_back(g.boolean());
        for (unsigned int j = 0; j < m; ++j) open.push_back(g.boolean());
        for (unsigned int i = 0; i < n; ++i) {
            g.constraint(g.add(Eq, {g.add(BooleanSum, {x[i * m], x[i * m + 1]}), g.constant(1)}));
            for (unsigned int j = 0; j < m; ++j) g.constraint(g.add(Leq, {x[i * m + j], open[j]}));
        }
        if (count) g.constraint(g.add(Eq, {g.add(BooleanSum, open), g.constant(1)}));
        std::vector<unsigned int> terms = x;
        if (costs.size() > n * m) terms.insert(terms.end(), open.begin(), open.end());
        g.objective(g.add(ScalarSum, terms, costs));
        g.close();
        start.assign(g.fixed.nbVariables(), 0);
        for (unsigned int i = 0; i < n; ++i) start[g.fixed.variableIndex(x[i * m])] = 1;
        start[g.fixed.variableIndex(open[0])] = 1;
    }
    static const unsigned int n = 3, m = 2;
    TestGraph g;
    std::vector<unsigned int> x, open;
    std::vector<long long> start;
};

// One median among two sites, the open one farther from every client:
// opening the other must close the first and move every client over,
// closing the first must open the other, and a swap does both: each way
// the cost is the other site's, in one move.
TEST(MoveKGateTest, AMedianMovesWithAllItServes) {
    TwoSites s({9, 2, 8, 3, 7, 4}, true);
    for (MoveKGate::Kind kind : {MoveKGate::Open, MoveKGate::Close, MoveKGate::Swap}) {
        auto dag = s.g.makeDag(s.start);
        AutonomousFixedFields fields(s.g.fixed);
        AutonomousStructure structure(*dag, fields);
        Quickrand rand(3);
        MoveKGate move(*dag, rand, structure, kind, 1, 50);
        ASSERT_TRUE(move.modify());
        ASSERT_TRUE(move.eval());
        EXPECT_EQ(dag->newValue(s.open[0]), 0);
        EXPECT_EQ(dag->newValue(s.open[1]), 1);
        for (unsigned int i = 0; i < s.n; ++i) EXPECT_EQ(dag->newValue(s.x[i * s.m + 1]), 1);
        EXPECT_EQ(dag->newValue(s.g.fixed.objectives()[0]), 2 + 3 + 4);
        move.update(MoveImproved);
        EXPECT_EQ(dag->currentValue(s.g.fixed.objectives()[0]), 9);
    }
}

// Two sites without a count of open ones, the open one dearer to open and
// no nearer to any client: closing it alone strands its clients, opening
// the other alone takes nobody over, and only a swap moves the clients
// and saves the difference.
TEST(MoveKGateTest, OnlyASwapMovesASiteThatNoCountTies) {
    TwoSites s({5, 5, 4, 4, 6, 6, 10, 1}, false);
    const unsigned int n = s.n, m = s.m;
    const TestGraph& g = s.g;
    const std::vector<unsigned int>& x = s.x;
    const std::vector<unsigned int>& open = s.open;
    const std::vector<long long>& start = s.start;
    for (MoveKGate::Kind kind : {MoveKGate::Close, MoveKGate::Open, MoveKGate::Swap}) {
        SCOPED_TRACE(kind);
        auto dag = g.makeDag(start);
        AutonomousFixedFields fields(g.fixed);
        AutonomousStructure structure(*dag, fields);
        Quickrand rand(5);
        MoveKGate move(*dag, rand, structure, kind, 1, 50);
        bool built = move.modify();
        EXPECT_EQ(built, kind == MoveKGate::Swap);
        if (built) {
            ASSERT_TRUE(move.eval());
            EXPECT_EQ(dag->newValue(open[0]), 0);
            EXPECT_EQ(dag->newValue(open[1]), 1);
            for (unsigned int i = 0; i < n; ++i) EXPECT_EQ(dag->newValue(x[i * m + 1]), 1);
            EXPECT_EQ(dag->newValue(g.fixed.objectives()[0]), 5 + 4 + 6 + 1);
        }
        move.update(built ? MoveImproved : MoveInfeasible);
    }
}
