// Randomized differential test of the incremental kernel: random graphs of
// every node kind and arity, long random moves with random commit and
// rollback, and after every step the whole graph compared with a
// from-scratch evaluation, the bounds and a recount of the constraints.

#include "solver/kernel/dag.h"
#include "solver/kernel/nodetypeutils.h"
#include "solver/kernel/propagation.h"
#include "solver/kernel/quickrand.h"
#include "testgraph.h"
#include "referenceevaluator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

namespace {

using Range = std::pair<__int128, __int128>;

// Values in generated graphs stay far below overflow, so the test's own
// interval arithmetic is exact and the kernel's wrap-around never matters.
constexpr __int128 MAGNITUDE_LIMIT = static_cast<__int128>(1) << 40;
constexpr long long INTEGER_RANGE = 3;

class RandomGraph {
public:
    RandomGraph(unsigned int seed, unsigned int maxArity) : random(seed), maxArity(maxArity) {
        unsigned int nbBooleans = pick(6, 40);
        for (unsigned int i = 0; i < nbBooleans; ++i) addLeaf(graph.boolean(), {0, 1});
        for (unsigned int i = 0, n = pick(0, 2); i < n; ++i) addLeaf(graph.integer(), {-INTEGER_RANGE, INTEGER_RANGE});
        for (long long value : {1LL, 2LL, -2LL, 5LL, 0LL}) addLeaf(graph.constant(value), {value, value});
        unsigned int nbInner = pick(40, 140);
        for (unsigned int i = 0; i < nbInner; ++i) addInner();
        std::vector<unsigned int> candidates;
        for (unsigned int node = firstInner; node < ranges.size(); ++node)
            if (booleanDomain[node]) candidates.push_back(node);
        std::shuffle(candidates.begin(), candidates.end(), random);
        for (unsigned int k = 0, n = std::min<unsigned int>(pick(0, 4), candidates.size()); k < n; ++k)
            graph.constraint(candidates[k]);
        graph.objective(static_cast<unsigned int>(ranges.size()) - 1);
        graph.objective(pick(firstInner, static_cast<unsigned int>(ranges.size()) - 1), Maximize);
        graph.close();
    }

    TestGraph graph;
    std::vector<Range> ranges;  // the test's own bounds, by node

private:
    unsigned int pick(unsigned int low, unsigned int high) {
        return std::uniform_int_distribution<unsigned int>(low, high)(random);
    }
    long long coefficient() { return static_cast<long long>(pick(0, 6)) - 3; }

    void addLeaf(unsigned int node, Range range) {
        ranges.push_back(range);
        booleanDomain.push_back(range.first >= 0 && range.second <= 1);
        firstInner = static_cast<unsigned int>(ranges.size());
    }

    unsigned int arity() {
        static const unsigned int TOPS[] = {8, 16, 32, 64, 256, 300};
        if (pick(0, 9) < 6) return pick(1, std::min(8u, maxArity));
        unsigned int k = pick(0, 5);
        unsigned int low = k == 0 ? 1 : TOPS[k - 1] + 1;
        return pick(std::min(low, maxArity), std::min(TOPS[k], maxArity));
    }

    // A random earlier node satisfying `accept`, favouring recent ones so
    // that graphs get deep.
    template <class Accept>
    unsigned int child(Accept accept) {
        unsigned int n = static_cast<unsigned int>(ranges.size());
        for (int attempt = 0; attempt < 200; ++attempt) {
            unsigned int node = pick(0, 1) ? pick(0, n - 1) : pick(n > 30 ? n - 30 : 0, n - 1);
            if (accept(node)) return node;
        }
        return firstInner - 5;  // the constant 1: always acceptable here
    }
    unsigned int anyChild() { return child([](unsigned int) { return true; }); }

    void addInner() {
        for (;;) {
            NodeType type = static_cast<NodeType>(pick(0, NB_NODE_TYPES - 1));
            if (type == Boolean || type == Integer || type == Constant) continue;
            std::vector<unsigned int> childs;
            std::vector<long long> coefficients;
            long long factor = 0;
            fillChilds(type, childs, coefficients, factor);
            Range range = rangeOf(type, childs, coefficients, factor);
            if (range.second > MAGNITUDE_LIMIT || range.first < -MAGNITUDE_LIMIT) continue;
            unsigned int node = graph.add(type, childs, coefficients);
            if (type == Scalar) graph.temporary.setNodeScalar(node, factor);
            ranges.push_back(range);
            booleanDomain.push_back(range.first >= 0 && range.second <= 1);
            return;
        }
    }

    void fillChilds(NodeType type, std::vector<unsigned int>& childs, std::vector<long long>& coefficients,
                    long long& factor) {
        auto nonZero = [&](unsigned int node) { return ranges[node].first > 0 || ranges[node].second < 0; };
        auto nonNegative = [&](unsigned int node) { return ranges[node].first >= 0; };
        auto isBool = [&](unsigned int node) { return booleanDomain[node] != 0; };
        auto small = [&](unsigned int node) { return ranges[node].first >= -2 && ranges[node].second <= 2; };
        switch (type) {
            case Abs: case Not: childs = {anyChild()}; break;
            case Sqrt: childs = {child(nonNegative)}; break;
            case Scalar: childs = {anyChild()}; factor = coefficient(); break;
            case Divide: case Modulo: childs = {anyChild(), child(nonZero)}; break;
            case If: childs = {anyChild(), anyChild(), anyChild()}; break;
            case Distance: case Eq: case Neq: case Lt: case Leq: case Gt: case Geq:
                childs = {anyChild(), anyChild()};
                break;
            default: {
                unsigned int n = arity();
                bool wide = type == Product || type == ScalarProduct;
                for (unsigned int i = 0; i < n; ++i) {
                    if (type == BooleanSum) childs.push_back(child(isBool));
                    else if (wide) childs.push_back(child(small));
                    else childs.push_back(anyChild());
                    if (type == ScalarSum || type == ScalarMax || type == ScalarMin) coefficients.push_back(coefficient());
                    if (type == ScalarProduct) coefficients.push_back(pick(0, 1) ? 1 : -1);
                }
            }
        }
    }

    Range rangeOf(NodeType type, const std::vector<unsigned int>& c, const std::vector<long long>& k,
                  long long factor) const {
        auto r = [&](unsigned int i) { return ranges[c[i]]; };
        auto scaled = [](Range x, __int128 f) {
            return f >= 0 ? Range{x.first * f, x.second * f} : Range{x.second * f, x.first * f};
        };
        auto magnitude = [](Range x) { return std::max(x.first < 0 ? -x.first : x.first, x.second < 0 ? -x.second : x.second); };
        switch (type) {
            case Abs: {
                Range x = r(0);
                if (x.first >= 0) return x;
                if (x.second <= 0) return {-x.second, -x.first};
                return {0, magnitude(x)};
            }
            case Distance: {
                __int128 m = std::max(r(1).second - r(0).first, r(0).second - r(1).first);
                return {0, m};
            }
            case Scalar: return scaled(r(0), factor);
            case Divide: case Modulo: return {-magnitude(r(0)), magnitude(r(0))};
            case Sqrt:
                return {static_cast<long long>(std::sqrt(static_cast<double>(r(0).first))),
                        static_cast<long long>(std::sqrt(static_cast<double>(r(0).second)))};
            case If: return {std::min(r(1).first, r(2).first), std::max(r(1).second, r(2).second)};
            case Sum: case BooleanSum: case ScalarSum: {
                Range total{0, 0};
                for (unsigned int i = 0; i < c.size(); ++i) {
                    Range x = type == ScalarSum ? scaled(r(i), k[i]) : r(i);
                    total = {total.first + x.first, total.second + x.second};
                }
                return total;
            }
            case Product: case ScalarProduct: {
                Range total{1, 1};
                for (unsigned int i = 0; i < c.size(); ++i) {
                    Range x = type == ScalarProduct ? scaled(r(i), k[i]) : r(i);
                    __int128 corners[4] = {total.first * x.first, total.first * x.second,
                                           total.second * x.first, total.second * x.second};
                    total = {*std::min_element(corners, corners + 4), *std::max_element(corners, corners + 4)};
                    if (magnitude(total) > MAGNITUDE_LIMIT) return total;
                }
                return total;
            }
            case Max: case Min: case ScalarMax: case ScalarMin: {
                bool isMax = type == Max || type == ScalarMax;
                Range total;
                for (unsigned int i = 0; i < c.size(); ++i) {
                    Range x = (type == ScalarMax || type == ScalarMin) ? scaled(r(i), k[i]) : r(i);
                    if (i == 0) total = x;
                    else if (isMax) total = {std::max(total.first, x.first), std::max(total.second, x.second)};
                    else total = {std::min(total.first, x.first), std::min(total.second, x.second)};
                }
                return total;
            }
            default: return {0, 1};  // logic and comparisons
        }
    }

    std::mt19937 random;
    unsigned int maxArity;
    unsigned int firstInner = 0;
    std::vector<char> booleanDomain;
};

// Drives random moves on one graph and checks the whole state after each.
struct RunStats {
    unsigned int evaluated = 0, refused = 0, committed = 0, foundBooleans = 0;
    // Node objects seen per n-ary type and subset representation (by arity).
    std::set<std::pair<NodeType, unsigned int>> representations;
};

unsigned int representationOf(unsigned int nbChilds) {
    static const unsigned int TOPS[] = {8, 16, 32, 64, 256, 65534};
    unsigned int k = 0;
    while (k < 6 && nbChilds > TOPS[k]) ++k;
    return k;
}

class DifferentialRun {
public:
    // `ranges` are the test's own bounds of every node.
    DifferentialRun(const TestGraph& graph, const std::vector<Range>& ranges, unsigned int seed, RunStats& stats)
        : stats(stats), ranges(ranges), fixed(graph.fixed), dag(graph.makeDag()), propagation(dag->getPropagation()),
          random(seed), committed(fixed.nbNodes(), 0) {
        ReferenceEvaluator::evaluate(fixed, committed);
        checkCommittedState();
        for (unsigned int node = 0; node < fixed.nbNodes(); ++node)
            if (NodeTypeUtils::isNodeInner(fixed.type(node)) && fixed.nbChilds(node) > 3)
                stats.representations.insert({fixed.type(node), representationOf(fixed.nbChilds(node))});
    }

    void run(unsigned int nbSteps) {
        for (unsigned int step = 0; step < nbSteps && !::testing::Test::HasFailure(); ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            if (random() % 64 == 0) propagation.desactivateAllConstraints();
            std::vector<long long> proposed = committed;
            std::vector<char> touched(fixed.nbNodes(), 0);
            for (unsigned int k = 0, n = 1 + random() % 4; k < n; ++k) {
                unsigned int variable = fixed.variables()[random() % fixed.nbVariables()];
                long long value = fixed.type(variable) == Boolean
                                      ? 1 - committed[variable]
                                      : static_cast<long long>(random() % (2 * INTEGER_RANGE + 1)) - INTEGER_RANGE;
                propagation.modifyVariable(*dag, variable, value);
                // Only the first real change of a variable in a move counts.
                if (!touched[variable] && value != committed[variable]) {
                    proposed[variable] = value;
                    touched[variable] = 1;
                }
            }
            ReferenceEvaluator::evaluate(fixed, proposed);
            bool breaksActive = false;
            for (unsigned int node : fixed.constraints())
                if (propagation.isConstraintActive(*dag, node) && proposed[node] == 0) breaksActive = true;
            bool evaluated = propagation.eval(*dag);
            ASSERT_EQ(evaluated, !breaksActive);
            ++(evaluated ? stats.evaluated : stats.refused);
            if (evaluated) checkEvaluatedState(proposed);
            if (evaluated && random() % 2 == 0) {
                propagation.commit(*dag);
                committed = proposed;
                ++stats.committed;
            } else {
                propagation.rollback(*dag);
            }
            checkCommittedState();
            exerciseFinds();
        }
    }

private:
    void checkEvaluatedState(const std::vector<long long>& proposed) {
        long long cost = 0;
        for (unsigned int node = 0; node < fixed.nbNodes(); ++node)
            ASSERT_EQ(dag->newValue(node), proposed[node]) << "node " << node << " " << dag->getNode(node)->toString();
        for (unsigned int node : fixed.constraints()) cost += ReferenceEvaluator::violation(fixed, node, proposed);
        ASSERT_EQ(propagation.getTViolatedConstraintsCost(), cost);
    }

    void checkCommittedState() {
        long long cost = 0;
        unsigned int nbViolated = 0;
        for (unsigned int node = 0; node < fixed.nbNodes(); ++node) {
            ASSERT_EQ(dag->currentValue(node), committed[node]) << "node " << node << " " << dag->getNode(node)->toString();
            ASSERT_EQ(dag->newValue(node), committed[node]);
            ASSERT_FALSE(dag->isModified(node));
            ASSERT_GE(committed[node], fixed.lowerBound(node)) << "node " << node;
            ASSERT_LE(committed[node], fixed.upperBound(node)) << "node " << node << " " << dag->getNode(node)->toString();
            ASSERT_GE(committed[node], ranges[node].first) << "node " << node;
            ASSERT_LE(committed[node], ranges[node].second) << "node " << node;
        }
        for (unsigned int k = 0; k < fixed.nbConstraints(); ++k) {
            unsigned int node = fixed.constraints()[k];
            cost += ReferenceEvaluator::violation(fixed, node, committed);
            ASSERT_EQ(propagation.getViolatedConstraints().isIn(k), committed[node] == 0);
            if (committed[node] == 0) ++nbViolated;
        }
        ASSERT_EQ(propagation.getViolatedConstraintsCost(), cost);
        ASSERT_EQ(propagation.getTViolatedConstraintsCost(), cost);
        ASSERT_EQ(propagation.getViolatedConstraints().sizeIn(), nbViolated);
        // Feasible means hard: a zero cost leaves no constraint soft.
        if (cost == 0 && propagation.getActiveConstraints().sizeOut() != 0) {
            ASSERT_TRUE(propagation.getModifiedVariables().empty());
        }
        ASSERT_NO_THROW(dag->check());
        ASSERT_NO_THROW(propagation.check(*dag));
    }

    // The search helpers must name a boolean decision, and a variable only
    // in a direction it can move.
    void exerciseFinds() {
        Quickrand rand(static_cast<unsigned int>(random()));
        for (int k = 0; k < 4; ++k) {
            unsigned int node = random() % fixed.nbNodes();
            unsigned int boolean = KernelConstants::NO_NODE;
            bool increase = random() % 2 == 0;
            Node* object = dag->getNode(node);
            bool found = increase ? object->findIncreasingBoolean(*dag, rand, boolean, node)
                                  : object->findDecreasingBoolean(*dag, rand, boolean, node);
            if (!found) continue;
            ++stats.foundBooleans;
            ASSERT_LT(boolean, fixed.nbNodes());
            ASSERT_EQ(fixed.type(boolean), Boolean);
            if (fixed.type(node) == Boolean) {
                ASSERT_EQ(committed[boolean], increase ? 0 : 1);
            }
        }
    }

    RunStats& stats;
    const std::vector<Range>& ranges;
    const DagFixedFields& fixed;
    std::unique_ptr<Dag> dag;
    Propagation& propagation;
    std::mt19937 random;
    std::vector<long long> committed;  // reference values of the committed state
};

RunStats runSeeds(unsigned int firstSeed, unsigned int nbSeeds, unsigned int maxArity, unsigned int nbSteps) {
    RunStats stats;
    for (unsigned int seed = firstSeed; seed < firstSeed + nbSeeds && !::testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE("graph seed " + std::to_string(seed));
        RandomGraph graph(seed, maxArity);
        DifferentialRun run(graph.graph, graph.ranges, seed * 7919u + 1, stats);
        run.run(nbSteps);
    }
    // The runs must have gone through every path they are meant to check.
    EXPECT_GT(stats.committed, nbSeeds * nbSteps / 4);
    EXPECT_GT(stats.refused, 0u);
    EXPECT_GT(stats.foundBooleans, nbSeeds);
    return stats;
}

}  // namespace

TEST(KernelDifferentialTest, SmallOperatorsManyMoves) { runSeeds(1, 60, 8, 400); }

TEST(KernelDifferentialTest, EveryArityUpTo300) {
    RunStats stats = runSeeds(1000, 40, 300, 300);
    // Every n-ary family in every representation up to 300 children.
    for (NodeType type : {And, BooleanSum, Max, Min, Or, Product, ScalarMax, ScalarMin, ScalarProduct,
                          ScalarSum, Sum, Xor})
        for (unsigned int representation = 0; representation < 6; ++representation)
            EXPECT_TRUE(stats.representations.count({type, representation}))
                << NodeTypeUtils::toString(type) << " representation " << representation;
}

// Operators wider than 65534 children take the sparse set with 32-bit
// entries; the random graphs stop at 300, so one graph holds one node of
// every n-ary family at that width.
TEST(KernelDifferentialTest, EveryFamilyBeyond65534Children) {
    const unsigned int n = 65600;
    TestGraph graph;
    std::vector<unsigned int> booleans;
    std::vector<long long> unit, signs;
    for (unsigned int i = 0; i < n; ++i) {
        booleans.push_back(graph.boolean());
        unit.push_back(1);
        signs.push_back(i % 3 == 0 ? -1 : 1);
    }
    std::vector<unsigned int> families;
    for (NodeType type : {And, BooleanSum, Max, Min, Or, Product, Sum, Xor})
        families.push_back(graph.add(type, booleans));
    for (NodeType type : {ScalarMax, ScalarMin, ScalarSum})
        families.push_back(graph.add(type, booleans, signs));
    families.push_back(graph.add(ScalarProduct, booleans, unit));
    unsigned int anyFalse = graph.add(Not, {families[0]});
    graph.constraint(anyFalse);
    graph.objective(families[6]);
    const DagFixedFields& fixed = graph.close();
    std::vector<Range> ranges;
    for (unsigned int node = 0; node < fixed.nbNodes(); ++node)
        ranges.push_back({fixed.lowerBound(node), fixed.upperBound(node)});
    RunStats stats;
    DifferentialRun run(graph, ranges, 17, stats);
    run.run(60);
    EXPECT_GT(stats.committed, 10u);
}

// --- The real search on the same random graphs ---------------------------
//
// Both acceptance rules with every move kind run for thousands of
// iterations; after each iteration (from a heuristic callback, so the
// heuristic's own loop drives everything) the committed graph is compared
// with a from-scratch evaluation, the sum structure of the moves with the
// values, and a descent is checked never to lose ground.

#include "solver/kernel/greedysolution.h"
#include "solver/kernel/heuristicautoannealing.h"
#include "solver/kernel/heuristicdescent.h"
#include "solver/kernel/threadenv.h"
#include "solver/move/autonomousfixedfields.h"
#include "../search/gatedmodels.h"
#include "../search/schedulemodels.h"

#include <map>

namespace {

class SearchChecker : public HeuristicCallback {
public:
    SearchChecker(const std::vector<Range>& ranges, Dag& dag, const AutonomousStructure& structure, bool descent)
        : ranges(ranges), fixed(dag.getFixedFields()), dag(dag), structure(structure), descent(descent),
          values(fixed.nbNodes(), 0) {}

    void heuristicStarted() override { remember(); }
    void heuristicEnded() override {}
    void iterate() override {
        if (::testing::Test::HasFatalFailure()) return;
        checkGraph();
        checkStructure();
        if (descent) checkNoLoss();
        remember();
        ++nbChecked;
    }

    unsigned int nbChecked = 0;

private:
    void checkGraph() {
        for (unsigned int node : fixed.variables()) values[node] = dag.currentValue(node);
        ReferenceEvaluator::evaluate(fixed, values);
        long long cost = 0;
        unsigned int violated = 0;
        for (unsigned int node = 0; node < fixed.nbNodes(); ++node) {
            ASSERT_EQ(dag.currentValue(node), values[node]) << "node " << node << " " << dag.getNode(node)->toString();
            ASSERT_EQ(dag.newValue(node), values[node]);
            ASSERT_FALSE(dag.isModified(node));
            ASSERT_GE(values[node], ranges[node].first);
            ASSERT_LE(values[node], ranges[node].second);
        }
        for (unsigned int node : fixed.constraints()) {
            cost += ReferenceEvaluator::violation(fixed, node, values);
            violated += values[node] == 0;
            // A hard constraint is never broken by an accepted move.
            if (dag.getPropagation().isConstraintActive(dag, node)) {
                ASSERT_EQ(values[node], 1);
            }
        }
        ASSERT_EQ(dag.getPropagation().getViolatedConstraintsCost(), cost);
        ASSERT_EQ(dag.getPropagation().getViolatedConstraints().sizeIn(), violated);
        ASSERT_NO_THROW(dag.getPropagation().check(dag));
    }

    void checkStructure() {
        const std::vector<RootSum>& sums = structure.getFixedFields().getRootSums();
        for (unsigned int s = 0; s < sums.size(); ++s)
            for (unsigned int j = 0; j < sums[s].booleans.size(); ++j) {
                bool up = (values[sums[s].booleans[j]] == 0) == (sums[s].coefficientAt(j) > 0);
                ASSERT_EQ(structure.increasingBools(s).isIn(j), up) << "root sum " << s << " entry " << j;
                // The blocks in the bipartition's order follow its swaps.
                const unsigned int place = structure.increasingBools(s).getPosition(j);
                ASSERT_EQ(structure.getFixedFields().rootBoolAt(structure.blocksInOrder(s)[place]).getNode(),
                          sums[s].booleans[j])
                    << "root sum " << s << " entry " << j;
            }
    }

    // While feasible, a descent's objectives up to the optimized one never
    // get lexicographically worse.
    void checkNoLoss() {
        bool feasible = dag.getPropagation().getActiveConstraints().sizeOut() == 0;
        if (feasible && wasFeasible) {
            for (unsigned int i = 0; i <= optimized; ++i) {
                long long now = values[fixed.objectives()[i]], before = previous[i];
                if (now == before) continue;
                ASSERT_EQ(now > before, fixed.directions()[i] == Maximize) << "objective " << i << " got worse";
                break;
            }
        }
        // Once feasible, the search stays feasible.
        if (wasFeasible) {
            ASSERT_TRUE(feasible);
        }
    }

    void remember() {
        wasFeasible = dag.getPropagation().getActiveConstraints().sizeOut() == 0;
        previous.clear();
        for (unsigned int node : fixed.objectives()) previous.push_back(dag.currentValue(node));
    }

    const std::vector<Range>& ranges;
    const DagFixedFields& fixed;
    Dag& dag;
    const AutonomousStructure& structure;
    bool descent;
    std::vector<long long> values;
    std::vector<long long> previous;
    bool wasFeasible = false;

public:
    unsigned int optimized = 0;
};

// Attempts and acceptances per move kind, over every run.
typedef std::map<std::string, std::pair<unsigned long long, unsigned long long>> MoveCounts;

// A search on a graph, from `start` (variable order; all 0 when empty) or
// from a greedy solution.
void runSearch(const TestGraph& graph, const std::vector<Range>& ranges, unsigned int seed, int annealingLevel,
               unsigned int nbIterations, MoveCounts& counts, const std::vector<long long>& start = {}) {
    std::mt19937 random(seed);
    auto dag = graph.makeDag(start);
    Quickrand greedyRand(seed);
    if (random() % 2) GreedySolution(&greedyRand).computeSolution(dag.get());
    AutonomousFixedFields autonomous(graph.fixed);
    SearchParams params;
    params.annealingLevel = annealingLevel;
    params.set(NeighborhoodSize, 4);
    params.set(TargetingLevel, static_cast<int>(random() % 11));
    ThreadEnv env(params, dag.get(), &autonomous, seed);
    Heuristic* heuristic = env.getHeuristic();
    env.getMoveFilter()->setFilteringPeriod(97);  // several filterings per run
    heuristic->setIterationLimit(nbIterations);
    heuristic->setOptimizedObjective(random() % graph.fixed.objectives().size());
    // The structure is read through a second one over the same graph, kept
    // current by the same commits.
    AutonomousStructure mirror(*dag, autonomous);
    SearchChecker checker(ranges, *dag, mirror, annealingLevel == 0);
    checker.optimized = heuristic->getOptimizedObjective();
    heuristic->addCallback(&checker);
    heuristic->run();
    if (::testing::Test::HasFatalFailure()) return;
    EXPECT_EQ(checker.nbChecked, heuristic->getNbIterations());
    EXPECT_EQ(heuristic->getNbAttempted(), heuristic->getNbIterations());
    // The best solution's stored objectives are those of its stored variables.
    const Solution& best = heuristic->getBestSolution();
    std::vector<long long> values(graph.fixed.nbNodes(), 0);
    for (unsigned int r = 0; r < graph.fixed.nbVariables(); ++r)
        values[graph.fixed.variables()[r]] = best.getVariableValues()[r];
    ReferenceEvaluator::evaluate(graph.fixed, values);
    for (unsigned int i = 0; i < graph.fixed.objectives().size(); ++i)
        EXPECT_EQ(best.getObjectiveValues()[i], values[graph.fixed.objectives()[i]]);
    for (unsigned int m = 0; m < heuristic->getNbMoves(); ++m) {
        const Move* move = heuristic->getMove(m);
        std::string kind = move->getName().substr(move->getName().find('-') + 1);
        counts[kind].first += move->getNbAttempted();
        counts[kind].second += move->getNbAccepted();
    }
    if (auto* annealing = dynamic_cast<HeuristicAutoAnnealing*>(heuristic))
        counts["degradations"].second += annealing->getNbAcceptedDegradations();
}

}  // namespace

TEST(SearchDifferentialTest, DescentAndAnnealingKeepTheGraphExact) {
    MoveCounts counts;
    for (unsigned int seed = 1; seed <= 24 && !::testing::Test::HasFatalFailure(); ++seed) {
        for (int level : {0, 3}) {
            SCOPED_TRACE("graph seed " + std::to_string(seed) + " annealing level " + std::to_string(level));
            RandomGraph graph(seed, 40);
            runSearch(graph.graph, graph.ranges, seed, level, 2500, counts);
        }
    }
    for (const char* kind : {"SimpleFlip", "Flip", "Swap", "Balance", "Path", "Cycle", "ForkCycle", "ForkPath"}) {
        EXPECT_GT(counts[kind].first, 1000u) << kind;
        EXPECT_GT(counts[kind].second, 0u) << kind;
    }
    // The annealing did accept worse moves somewhere.
    EXPECT_GT(counts["degradations"].second, 0u);
}

// Textbook models with gates (colouring, p-median, bin packing, their
// links either way round or their gates as maxima), from a feasible start, a greedy one or all 0: the gate moves
// keep the graph exact too, and are tried and taken.
TEST(SearchDifferentialTest, GateMovesKeepTheGraphExact) {
    using namespace GatedModels;
    MoveCounts counts;
    const Range any{-(static_cast<__int128>(1) << 62), static_cast<__int128>(1) << 62};
    for (unsigned int seed = 1; seed <= 12 && !::testing::Test::HasFatalFailure(); ++seed) {
        Shape shape = static_cast<Shape>(seed % 3);
        GatedModel model(shape, 6 + seed % 4, shape == PMedian ? 12 : 10, seed, static_cast<Form>(seed / 3 % 3));
        std::vector<Range> ranges(model.g.fixed.nbNodes(), any);
        for (int level : {0, 3}) {
            SCOPED_TRACE("gated seed " + std::to_string(seed) + " annealing level " + std::to_string(level));
            runSearch(model.g, ranges, seed, level, 2500, counts,
                      seed % 4 == 3 ? std::vector<long long>() : model.start);
        }
    }
    for (const char* kind : {"GateClose", "GateOpen", "GateSwap"}) {
        EXPECT_GT(counts[kind].first, 1000u) << kind;
        EXPECT_GT(counts[kind].second, 0u) << kind;
    }
}

// Time-indexed schedules, tight or with idle time, from jobs back to back,
// from the start that places them, or all 0 (then the greedy pass): the
// interval moves keep the graph exact too, and are tried and taken.
TEST(SearchDifferentialTest, IntervalMovesKeepTheGraphExact) {
    MoveCounts counts;
    const Range any{-(static_cast<__int128>(1) << 62), static_cast<__int128>(1) << 62};
    for (unsigned int seed = 1; seed <= 9 && !::testing::Test::HasFatalFailure(); ++seed) {
        ScheduleModels::Schedule model(5 + seed % 4, 4, seed % 3 == 0 ? 0 : 3, seed);
        std::vector<Range> ranges(model.g.fixed.nbNodes(), any);
        std::vector<long long> start = model.start;
        if (seed % 3 == 1) {
            auto dag = model.g.makeDag();
            AutonomousFixedFields fields(model.g.fixed);
            Quickrand rand(seed);
            ASSERT_TRUE(GreedySolution(&rand).placeIntervals(dag.get(), fields));
            for (unsigned int r = 0; r < model.g.fixed.nbVariables(); ++r)
                start[r] = dag->currentValue(model.g.fixed.variables()[r]);
        } else if (seed % 3 == 2) {
            start.clear();
        }
        for (int level : {0, 3}) {
            SCOPED_TRACE("schedule seed " + std::to_string(seed) + " annealing level " + std::to_string(level));
            runSearch(model.g, ranges, seed, level, 2500, counts, start);
        }
    }
    for (const char* kind : {"IntervalInsert", "IntervalSwap"}) {
        EXPECT_GT(counts[kind].first, 1000u) << kind;
        EXPECT_GT(counts[kind].second, 0u) << kind;
    }
}

// Knapsacks of several rows (some weights negative, some rows ranged from
// below too) and set covers with costs, from all 0, a greedy start or all
// 1: the fills, deep ones too, keep the graph exact, and are tried and taken.
TEST(SearchDifferentialTest, FillMovesKeepTheGraphExact) {
    MoveCounts counts;
    const Range any{-(static_cast<__int128>(1) << 62), static_cast<__int128>(1) << 62};
    for (unsigned int seed = 1; seed <= 12 && !::testing::Test::HasFatalFailure(); ++seed) {
        std::mt19937 random(seed);
        TestGraph g;
        const unsigned int n = 12 + seed % 9, m = 1 + seed % 4;
        std::vector<unsigned int> x;
        for (unsigned int j = 0; j < n; ++j) x.push_back(g.boolean());
        std::vector<long long> worths;
        for (unsigned int j = 0; j < n; ++j) worths.push_back(1 + static_cast<long long>(random() % 50));
        const bool cover = seed % 2 == 0;
        for (unsigned int i = 0; i < m + (cover ? 2 * n / 3 : 0); ++i) {
            std::vector<unsigned int> row;
            std::vector<long long> weights;
            for (unsigned int j = 0; j < n; ++j)
                if (!cover || random() % 4 == 0) {
                    row.push_back(x[j]);
                    weights.push_back(cover ? 1 : static_cast<long long>(random() % 40) - (seed % 3 == 0 ? 8 : 0));
                }
            if (row.size() < 2) continue;
            const unsigned int sum = g.add(ScalarSum, row, weights);
            if (cover) {
                g.constraint(g.add(Geq, {sum, g.constant(1)}));
            } else {
                g.constraint(g.add(Leq, {sum, g.constant(static_cast<long long>(n) * 6)}));
                if (i == 1) g.constraint(g.add(Geq, {sum, g.constant(static_cast<long long>(n))}));
            }
        }
        g.objective(g.add(ScalarSum, x, worths), cover ? Minimize : Maximize);
        g.close();
        std::vector<Range> ranges(g.fixed.nbNodes(), any);
        std::vector<long long> start(n, seed % 3 == 2 ? 1 : 0);
        for (int level : {0, 3}) {
            SCOPED_TRACE(std::string(cover ? "cover" : "knapsack") + " seed " + std::to_string(seed) +
                         " annealing level " + std::to_string(level));
            runSearch(g, ranges, seed, level, 2500, counts, start);
        }
    }
    EXPECT_GT(counts["Fill"].first, 1000u);
    EXPECT_GT(counts["Fill"].second, 0u);
    EXPECT_GT(counts["DeepFill"].first, 1000u);
    EXPECT_GT(counts["DeepFill"].second, 0u);
}

// Unconstrained quadratic objectives (max-cut as x + y - 2xy, as != pairs,
// or any two-boolean operator; weights of both signs; maximised or
// minimised), from all 0, a greedy start or at random: the deep moves keep
// the graph exact too, and are tried and taken.
TEST(SearchDifferentialTest, DeepMovesKeepTheGraphExact) {
    const NodeType pairTypes[] = {And, Or, Xor, Product, Eq, Neq, Lt, Leq, Gt, Geq};
    MoveCounts counts;
    const Range any{-(static_cast<__int128>(1) << 62), static_cast<__int128>(1) << 62};
    for (unsigned int seed = 1; seed <= 12 && !::testing::Test::HasFatalFailure(); ++seed) {
        std::mt19937 random(seed);
        TestGraph g;
        const unsigned int n = 8 + seed % 13;
        std::vector<unsigned int> x;
        for (unsigned int j = 0; j < n; ++j) x.push_back(g.boolean());
        std::vector<unsigned int> terms;
        std::vector<long long> weights;
        for (unsigned int e = 0; e < 3 * n; ++e) {
            const unsigned int a = x[random() % n], b = x[random() % n];
            if (a == b) continue;
            const long long w = static_cast<long long>(random() % 9) - (seed % 2 ? 4 : 0);
            if (seed % 3 == 0) {
                // w (a + b - 2ab), flattened as the compiler does.
                terms.insert(terms.end(), {a, b, g.add(Product, {a, b})});
                weights.insert(weights.end(), {w, w, -2 * w});
            } else {
                terms.push_back(g.add(seed % 3 == 1 ? Neq : pairTypes[random() % 10], {a, b}));
                weights.push_back(w);
            }
        }
        g.objective(g.add(ScalarSum, terms, weights), seed % 4 == 0 ? Minimize : Maximize);
        g.close();
        std::vector<Range> ranges(g.fixed.nbNodes(), any);
        std::vector<long long> start(n, 0);
        if (seed % 3 == 2)
            for (long long& value : start) value = static_cast<long long>(random() % 2);
        for (int level : {0, 3}) {
            SCOPED_TRACE("quadratic seed " + std::to_string(seed) + " annealing level " + std::to_string(level));
            runSearch(g, ranges, seed, level, 2500, counts, start);
        }
    }
    EXPECT_GT(counts["Deep"].first, 1000u);
    EXPECT_GT(counts["Deep"].second, 0u);
}
