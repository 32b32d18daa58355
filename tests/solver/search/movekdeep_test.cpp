// Deep moves over unconstrained quadratic objectives: where they are
// offered, and that each built sequence is the greedy one (every step the
// best flip among the neighbours of the flips so far, judged from scratch)
// with the best-ending prefix flipped, on random models, committed or not.
// That the search stays exact with them is the differential search test's.

#include "solver/kernel/dag.h"
#include "solver/kernel/keptscores.h"
#include "solver/kernel/heuristic.h"
#include "solver/kernel/quickrand.h"
#include "solver/kernel/threadenv.h"
#include "solver/move/autonomousfixedfields.h"
#include "solver/move/movekdeep.h"
#include "../kernel/referenceevaluator.h"
#include "../kernel/testgraph.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>

namespace {

const NodeType PAIR_TYPES[] = {And, Or, Xor, Product, Eq, Neq, Lt, Leq, Gt, Geq};

// A random objective of pair terms (every two-boolean operator, and k * a * b),
// single booleans and negated ones, maximised or minimised; with a scale of
// a million its flips change it by more than the buckets hold, and the
// candidates go to the heap.
struct QuadraticModel {
    explicit QuadraticModel(unsigned int seed, long long scale = 1) : random(seed), scale(scale) {
        const unsigned int n = pick(3, 12);
        for (unsigned int i = 0; i < n; ++i) booleans.push_back(g.boolean());
        std::vector<unsigned int> childs;
        std::vector<long long> coefficients;
        for (unsigned int t = 0, count = pick(2, 40); t < count; ++t) {
            const unsigned int kind = pick(0, 9), a = any(), b = any();
            if (kind < 2) {
                childs.push_back(a);
            } else if (kind == 2) {
                childs.push_back(g.add(Not, {a}));
            } else if (a == b) {
                continue;
            } else if (kind == 9) {
                childs.push_back(g.add(ScalarProduct, {a, b}, {coefficient(), 1}));
            } else {
                childs.push_back(g.add(PAIR_TYPES[pick(0, 9)], {a, b}));
            }
            coefficients.push_back(coefficient());
        }
        direction = pick(0, 1) ? Maximize : Minimize;
        objective = g.add(ScalarSum, childs, coefficients);
        g.objective(objective, direction);
        g.close();
    }
    unsigned int pick(unsigned int low, unsigned int high) {
        return std::uniform_int_distribution<unsigned int>(low, high)(random);
    }
    unsigned int any() { return booleans[pick(0, static_cast<unsigned int>(booleans.size()) - 1)]; }
    long long coefficient() { return (static_cast<long long>(pick(0, 20)) - 10) * scale; }

    // The objective, its direction's way up, with the booleans (variable
    // indices) in `flipped` flipped from the committed values.
    long long score(const Dag& dag, const std::vector<unsigned int>& flipped) const {
        std::vector<long long> values(g.fixed.nbNodes(), 0);
        for (unsigned int v = 0; v < g.fixed.nbVariables(); ++v)
            values[g.fixed.variables()[v]] = dag.currentValue(g.fixed.variables()[v]);
        for (unsigned int b : flipped) values[g.fixed.variables()[b]] ^= 1;
        ReferenceEvaluator::evaluate(g.fixed, values);
        return direction == Maximize ? values[objective] : -values[objective];
    }
    // Whether the booleans share a term of the objective.
    bool share(unsigned int a, unsigned int b) const {
        const KeptScoresFixed& kept = g.fixed.keptScores();
        return std::find(kept.othersBegin(a), kept.othersEnd(a), b) != kept.othersEnd(a);
    }

    std::mt19937 random;
    long long scale;
    TestGraph g;
    std::vector<unsigned int> booleans;
    unsigned int objective = 0;
    ObjectiveDirection direction = Maximize;
};

// The sequence against a from-scratch greedy: each flip a neighbour of the
// earlier ones and the best of them, the sequence as long as the depth or
// the neighbours allow, and the prefix flipped the first of the best ends
// of two flips or more.
void expectGreedy(const QuadraticModel& m, const Dag& dag, const MoveKDeep& move) {
    const std::vector<unsigned int>& sequence = move.getSequence();
    const unsigned int n = m.g.fixed.nbBooleans();
    ASSERT_LE(sequence.size(), static_cast<std::size_t>(move.getK()) * MoveKDeep::DEPTH_PER_K);
    std::vector<unsigned int> prefix{sequence[0]};
    const long long start = m.score(dag, {});
    long long best = 0;
    std::size_t bestLength = 0;
    for (std::size_t i = 1; i <= sequence.size(); ++i) {
        std::set<unsigned int> candidates;
        for (unsigned int b = 0; b < n; ++b)
            if (std::find(prefix.begin(), prefix.end(), b) == prefix.end())
                for (unsigned int f : prefix)
                    if (m.share(f, b)) candidates.insert(b);
        if (i == sequence.size()) {
            // Ended: at the depth, or nothing left to flip.
            EXPECT_TRUE(candidates.empty() || i == static_cast<std::size_t>(move.getK()) * MoveKDeep::DEPTH_PER_K);
            break;
        }
        const long long before = m.score(dag, prefix);
        long long top = std::numeric_limits<long long>::min();
        for (unsigned int c : candidates) {
            std::vector<unsigned int> tried = prefix;
            tried.push_back(c);
            top = std::max(top, m.score(dag, tried) - before);
        }
        ASSERT_EQ(candidates.count(sequence[i]), 1u) << "step " << i;
        prefix.push_back(sequence[i]);
        EXPECT_EQ(m.score(dag, prefix) - before, top) << "step " << i;
        const long long total = m.score(dag, prefix) - start;
        if (bestLength == 0 || total > best) {
            best = total;
            bestLength = prefix.size();
        }
    }
    EXPECT_EQ(move.getFlippedLength(), bestLength);
}

}  // namespace

TEST(MoveKDeepTest, SequencesAreGreedyAndTheBestEndIsFlipped) {
    unsigned int built = 0, refused = 0;
    for (unsigned int seed = 1; seed <= 40 && !::testing::Test::HasFatalFailure(); ++seed) {
        QuadraticModel m(seed, seed % 2 == 0 ? 1000003 : 1);
        if (!MoveKDeep::isValidK(2, *m.g.makeDag())) continue;
        std::vector<long long> start;
        for (unsigned int b = 0; b < m.g.fixed.nbBooleans(); ++b) start.push_back(m.pick(0, 1));
        auto dag = m.g.makeDag(start);
        Quickrand rand(seed);
        MoveKDeep move(*dag, rand, seed % 3 == 0 ? 3 : 2, 1);
        for (unsigned int i = 0; i < 30; ++i) {
            SCOPED_TRACE("seed " + std::to_string(seed) + " move " + std::to_string(i));
            if (!move.modify()) {
                // Refused (nothing it could build held two flips, or the
                // objective is at its bound): nothing flipped.
                EXPECT_EQ(move.getFlippedLength(), 0u);
                EXPECT_TRUE(dag->getPropagation().getModifiedVariables().empty());
                ++refused;
                continue;
            }
            ++built;
            expectGreedy(m, *dag, move);
            const std::vector<unsigned int>& flipped = dag->getPropagation().getModifiedVariables();
            ASSERT_EQ(flipped.size(), move.getFlippedLength());
            for (std::size_t f = 0; f < flipped.size(); ++f)
                EXPECT_EQ(m.g.fixed.variableIndex(flipped[f]), move.getSequence()[f]);
            // Judged as a from-scratch evaluation would, then kept or not.
            const std::vector<unsigned int> prefix(move.getSequence().begin(),
                                                   move.getSequence().begin() + move.getFlippedLength());
            const long long expected = m.score(*dag, prefix);
            ASSERT_TRUE(move.eval());
            const long long value = dag->newValue(m.objective);
            EXPECT_EQ(m.direction == Maximize ? value : -value, expected);
            move.update(i % 3 == 0 ? MoveRejected : MoveAccepted);
        }
    }
    EXPECT_GT(built, 400u);
    EXPECT_GT(refused, 0u);
}

TEST(MoveKDeepTest, OfferedOnlyOverAnUnconstrainedObjectiveOfKeptPairs) {
    // Max-cut as x + y - 2xy, flattened as the compiler does: offered for
    // k from 2.
    TestGraph cut;
    std::vector<unsigned int> x;
    for (int i = 0; i < 4; ++i) x.push_back(cut.boolean());
    std::vector<unsigned int> terms;
    std::vector<long long> weights;
    for (int i = 0; i < 4; ++i) {
        const unsigned int a = x[i], b = x[(i + 1) % 4];
        terms.insert(terms.end(), {a, b, cut.add(Product, {a, b})});
        weights.insert(weights.end(), {1, 1, -2});
    }
    cut.objective(cut.add(ScalarSum, terms, weights), Maximize);
    cut.close();
    auto dag = cut.makeDag();
    EXPECT_FALSE(MoveKDeep::isValidK(1, *dag));
    EXPECT_TRUE(MoveKDeep::isValidK(2, *dag));
    Quickrand rand(1);
    EXPECT_EQ(MoveKDeep(*dag, rand, 5, 1).getName(), "5-Deep");

    // A row, a boolean the scores do not cover, or no pair term at all:
    // not offered.
    auto build = [](int variant) {
        auto g = std::make_unique<TestGraph>();
        const unsigned int a = g->boolean(), b = g->boolean(), c = g->boolean();
        const unsigned int pair = variant == 2 ? g->add(Not, {a}) : g->add(Xor, {a, b});
        g->objective(g->add(Sum, {pair, c, b}), Minimize);
        if (variant == 0) g->constraint(g->add(Leq, {g->add(Sum, {a, c}), g->constant(1)}));
        if (variant == 1) g->objective(g->add(Max, {a, c}), Minimize);
        g->close();
        return g;
    };
    for (int variant = 0; variant < 3; ++variant) {
        auto g = build(variant);
        EXPECT_FALSE(MoveKDeep::isValidK(2, *g->makeDag())) << "variant " << variant;
    }
}

TEST(MoveKDeepTest, ThreadsOfferAKindPerKFromTwoUnlessSwitchedOff) {
    QuadraticModel m(3);
    ASSERT_TRUE(MoveKDeep::isValidK(2, *m.g.makeDag()));
    auto deepKinds = [&](int deep, int kept, int size) {
        auto dag = m.g.makeDag();
        AutonomousFixedFields autonomous(m.g.fixed);
        SearchParams params;
        params.set(KDeepEnabled, deep);
        params.set(KeptScoresEnabled, kept);
        params.set(NeighborhoodSize, size);
        ThreadEnv env(params, dag.get(), &autonomous, 1);
        std::vector<std::string> names;
        for (unsigned int i = 0; i < env.getHeuristic()->getNbMoves(); ++i) {
            const std::string& name = env.getHeuristic()->getMove(i)->getName();
            if (name.find("Deep") != std::string::npos) names.push_back(name);
        }
        return names;
    };
    EXPECT_EQ(deepKinds(1, 1, 4), std::vector<std::string>({"2-Deep", "3-Deep", "4-Deep"}));
    EXPECT_EQ(deepKinds(1, 1, 8).size(), 7u);
    EXPECT_TRUE(deepKinds(0, 1, 8).empty());
    // Their sequences are scored from the kept scores.
    EXPECT_TRUE(deepKinds(1, 0, 8).empty());
}
