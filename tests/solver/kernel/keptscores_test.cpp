// The kept flip scores: which booleans they cover, and a randomized
// differential check against the graph (the same moves on two Dags of one
// graph, scores on and off) with every kept gain recomputed from scratch
// after each committed or rolled-back move.

#include "solver/kernel/keptscores.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/propagation.h"
#include "solver/kernel/quickrand.h"
#include "solver/kernel/solution.h"
#include "testgraph.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

bool scored(const TestGraph& g, unsigned int node) {
    return g.fixed.keptScores().isScored(g.fixed.variableIndex(node));
}

// Two booleans in an objective term, a third in a row, and one read by a
// node outside both.
TEST(KeptScoresTest, ScoresOnlyBooleansReadByRootsAndRows) {
    TestGraph g;
    unsigned int x = g.boolean(), y = g.boolean(), z = g.boolean(), w = g.boolean();
    unsigned int two = g.constant(2);
    unsigned int pair = g.add(Neq, {x, y});
    g.objective(g.add(ScalarSum, {pair, z, two}, {3, -4, 1}), Maximize);
    g.constraint(g.add(Geq, {two, g.add(Sum, {y, z})}));
    g.objective(g.add(Max, {w, x}));
    g.close();
    const KeptScoresFixed& kept = g.fixed.keptScores();
    ASSERT_EQ(kept.nbRoots(), 1u);
    ASSERT_EQ(kept.getRows().size(), 1u);
    EXPECT_FALSE(kept.getRows()[0].sumFirst);
    EXPECT_FALSE(scored(g, x));  // also under the max
    EXPECT_TRUE(scored(g, y));
    EXPECT_TRUE(scored(g, z));
    EXPECT_FALSE(scored(g, w));
}

TEST(KeptScoresTest, SharedSumsAndTermsStayOnTheGraph) {
    TestGraph g;
    unsigned int x = g.boolean(), y = g.boolean(), one = g.constant(1);
    unsigned int sum = g.add(Sum, {x, y});
    // One sum under two constraints, one term under two roots.
    g.constraint(g.add(Leq, {sum, one}));
    g.constraint(g.add(Geq, {sum, one}));
    unsigned int both = g.add(And, {x, y});
    g.objective(g.add(Sum, {both}));
    g.objective(g.add(Sum, {both, x}));
    g.close();
    EXPECT_TRUE(g.fixed.keptScores().isEmpty());
    EXPECT_FALSE(scored(g, x));
}

const NodeType PAIR_TYPES[] = {And, Or, Xor, Product, Eq, Neq, Lt, Leq, Gt, Geq};
const NodeType ROW_TYPES[] = {Eq, Neq, Lt, Leq, Gt, Geq};

// A random pseudo-Boolean model: up to two kept objectives of linear,
// pair and negated terms, rows of signed sums, and sometimes an objective
// the scores do not cover.
struct RandomModel {
    explicit RandomModel(unsigned int seed) : random(seed) {
        unsigned int n = pick(4, 24);
        for (unsigned int i = 0; i < n; ++i) booleans.push_back(g.boolean());
        for (unsigned int o = 0, count = pick(1, 2); o < count; ++o) addRoot(o == 1 ? Maximize : Minimize);
        for (unsigned int r = 0, count = pick(0, 5); r < count; ++r) addRow();
        if (pick(0, 3) == 0) g.objective(g.add(Max, {anyBoolean(), anyBoolean()}));
        g.close();
    }

    unsigned int pick(unsigned int low, unsigned int high) {
        return std::uniform_int_distribution<unsigned int>(low, high)(random);
    }
    long long coefficient() { return static_cast<long long>(pick(0, 14)) - 7; }
    unsigned int anyBoolean() { return booleans[pick(0, static_cast<unsigned int>(booleans.size()) - 1)]; }

    void addRoot(ObjectiveDirection direction) {
        std::vector<unsigned int> childs;
        std::vector<long long> coefficients;
        for (unsigned int t = 0, count = pick(1, 90); t < count; ++t) {
            unsigned int kind = pick(0, 9);
            if (kind < 3) {
                childs.push_back(anyBoolean());
            } else if (kind == 3) {
                childs.push_back(g.add(Not, {anyBoolean()}));
            } else if (kind == 4) {
                childs.push_back(g.constant(coefficient()));
            } else {
                unsigned int a = anyBoolean(), b = anyBoolean();
                if (a == b) continue;
                // k * a * b, with k on either factor.
                if (kind == 9)
                    childs.push_back(pick(0, 1) ? g.add(ScalarProduct, {a, b}, {coefficient(), 1})
                                                : g.add(ScalarProduct, {a, b}, {1, coefficient()}));
                else
                    childs.push_back(g.add(PAIR_TYPES[pick(0, 9)], {a, b}));
            }
            coefficients.push_back(coefficient());
        }
        g.objective(g.add(ScalarSum, childs, coefficients), direction);
    }

    void addRow() {
        std::vector<unsigned int> childs;
        std::vector<long long> coefficients;
        for (unsigned int t = 0, count = pick(1, 8); t < count; ++t) {
            childs.push_back(anyBoolean());
            coefficients.push_back(coefficient());
        }
        unsigned int sum = pick(0, 1) ? g.add(ScalarSum, childs, coefficients) : g.add(Sum, childs);
        unsigned int bound = g.constant(static_cast<long long>(pick(0, 8)) - 3);
        NodeType type = ROW_TYPES[pick(0, 5)];
        g.constraint(pick(0, 1) ? g.add(type, {sum, bound}) : g.add(type, {bound, sum}));
    }

    std::mt19937 random;
    TestGraph g;
    std::vector<unsigned int> booleans;
};

// With targeting, also the improving sets: exactly the booleans whose gain
// goes the objective's way, and a draw from them is one of them.
void expectGainsExact(const Dag& dag, bool targeting = false) {
    const KeptScores* kept = dag.getPropagation().getKeptScores();
    ASSERT_NE(kept, nullptr);
    const KeptScoresFixed& fixed = dag.getFixedFields().keptScores();
    for (unsigned int r = 0; r < fixed.nbRoots(); ++r) {
        const unsigned int objective = fixed.getRoots()[r].objective;
        const bool maximised = dag.getFixedFields().directions()[objective] == Maximize;
        unsigned int nbImproving = 0;
        for (unsigned int b = 0; b < dag.getFixedFields().nbBooleans(); ++b) {
            const long long gain = kept->gain(b, r);
            ASSERT_EQ(gain, kept->computeGain(dag, b, r)) << "boolean " << b << " root " << r;
            if (!targeting) continue;
            const bool improves = maximised ? gain > 0 : gain < 0;
            ASSERT_EQ(kept->isImproving(b, r), improves) << "boolean " << b << " root " << r;
            nbImproving += improves;
        }
        if (!targeting) continue;
        Quickrand rand(r + 1);
        const unsigned int picked = kept->pickImproving(objective, rand);
        if (nbImproving == 0) {
            ASSERT_EQ(picked, Bipartition::NONE);
        } else {
            ASSERT_LT(picked, dag.getFixedFields().nbBooleans());
            ASSERT_TRUE(kept->isImproving(picked, r));
        }
    }
}

TEST(KeptScoresTest, MovesAgreeWithTheGraphAndGainsStayExact) {
    unsigned long long keptEvaluations = 0;
    for (unsigned int seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomModel m(seed);
        std::vector<long long> start;
        for (unsigned int i = 0; i < m.booleans.size(); ++i) start.push_back(m.pick(0, 1));
        std::unique_ptr<Dag> kept = m.g.makeDag(start), plain = m.g.makeDag(start);
        plain->getPropagation().setKeptScoresEnabled(*plain, false);
        if (m.g.fixed.keptScores().nbRoots() == 0) continue;
        const bool targeting = seed % 2 == 0;
        kept->getPropagation().setKeptTargetingEnabled(*kept, targeting);
        Propagation& p = kept->getPropagation();
        Propagation& q = plain->getPropagation();
        // Soft constraints half of the time, hard (where satisfied) else.
        if (m.pick(0, 1)) {
            p.activateAllSatisfiedConstraints(*kept);
            q.activateAllSatisfiedConstraints(*plain);
        }
        expectGainsExact(*kept, targeting);
        const std::vector<unsigned int>& objectives = m.g.fixed.objectives();
        for (int move = 0; move < 400; ++move) {
            for (unsigned int f = 0, count = m.pick(1, 4); f < count; ++f) {
                unsigned int b = m.anyBoolean();
                p.modifyVariable(*kept, b, 1 - kept->currentValue(b));
                q.modifyVariable(*plain, b, 1 - plain->currentValue(b));
            }
            bool evaluated = p.eval(*kept);
            ASSERT_EQ(evaluated, q.eval(*plain)) << "move " << move;
            if (evaluated) {
                for (unsigned int o : objectives) ASSERT_EQ(kept->newValue(o), plain->newValue(o)) << "move " << move;
                ASSERT_EQ(p.getTViolatedConstraintsCost(), q.getTViolatedConstraintsCost());
                ASSERT_EQ(p.getTNbViolatedConstraints(), q.getTNbViolatedConstraints());
                ASSERT_EQ(p.getEvalViolatedConstraints().sizeIn(), q.getEvalViolatedConstraints().sizeIn());
            }
            if (evaluated && m.pick(0, 2) == 0) {
                p.commit(*kept);
                q.commit(*plain);
                std::vector<unsigned int> a = p.getConstraintsSatisfiedByLastCommit();
                std::vector<unsigned int> b = q.getConstraintsSatisfiedByLastCommit();
                std::sort(a.begin(), a.end());
                std::sort(b.begin(), b.end());
                ASSERT_EQ(a, b) << "move " << move;
            } else {
                p.rollback(*kept);
                q.rollback(*plain);
            }
            for (unsigned int node = 0; node < m.g.fixed.nbNodes(); ++node) {
                ASSERT_EQ(kept->currentValue(node), plain->currentValue(node)) << "node " << node;
                ASSERT_EQ(kept->newValue(node), kept->currentValue(node)) << "node " << node;
            }
            ASSERT_EQ(p.getViolatedConstraintsCost(), q.getViolatedConstraintsCost());
            ASSERT_EQ(p.getViolatedConstraints().sizeIn(), q.getViolatedConstraints().sizeIn());
            ASSERT_EQ(p.getNbViolatedConstraints(), q.getNbViolatedConstraints());
            expectGainsExact(*kept, targeting);
            // Committed without propagation, the nodes' own bookkeeping
            // (candidate terms, true children, zero factors) still holds.
            ASSERT_NO_THROW(kept->check()) << "move " << move;
        }
        keptEvaluations += p.getNbKeptEvaluations();
    }
    // The scores took part: most random models are covered in full.
    EXPECT_GT(keptEvaluations, 5000u);
}

// Loading a whole solution flips many booleans in one move, some of them in
// pairs with each other.
TEST(KeptScoresTest, LoadingASolutionKeepsTheGainsExact) {
    RandomModel m(99);
    std::unique_ptr<Dag> dag = m.g.makeDag();
    ASSERT_GT(m.g.fixed.keptScores().nbRoots(), 0u);
    dag->getPropagation().setKeptTargetingEnabled(*dag, true);
    Solution solution;
    dag->saveSolution(solution);
    for (int round = 0; round < 20; ++round) {
        for (long long& v : solution.variables()) v = m.pick(0, 1);
        ASSERT_TRUE(dag->loadSolution(solution));
        expectGainsExact(*dag, true);
    }
}

}  // namespace
