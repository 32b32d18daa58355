#include "api/kernelexception.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/nodetypeutils.h"
#include "solver/kernel/quickrand.h"
#include "../kernel/referenceevaluator.h"
#include "../kernel/testgraph.h"

#include <gtest/gtest.h>

#include <limits>

namespace {
constexpr long long MAX = std::numeric_limits<long long>::max();
constexpr long long MIN = std::numeric_limits<long long>::min();
const std::vector<long long> GRID = {0, 1, -1, 2, -2, 7, -7, MAX, MIN, MAX - 1, MIN + 1};

// One operator over integer variables, evaluated from scratch at init and
// then moved through every combination of the grid, each move checked
// against the reference formula.
void checkOverGrid(NodeType type, unsigned int arity) {
    SCOPED_TRACE(NodeTypeUtils::toString(type));
    TestGraph g;
    std::vector<unsigned int> vars;
    for (unsigned int i = 0; i < arity; ++i) vars.push_back(g.integer());
    unsigned int node = g.add(type, vars);
    g.objective(node);
    const DagFixedFields& f = g.close();
    auto skip = [&](const std::vector<long long>& v) {
        if ((type == Divide || type == Modulo) && v[1] == 0) return true;
        return type == Sqrt && v[0] < 0;
    };
    std::vector<long long> values(f.nbNodes(), 1);
    std::unique_ptr<Dag> dag = g.makeDag(std::vector<long long>(arity, 1));
    std::vector<unsigned int> index(arity, 0);
    for (;;) {
        std::vector<long long> v;
        for (unsigned int i = 0; i < arity; ++i) v.push_back(GRID[index[i]]);
        if (!skip(v)) {
            for (unsigned int i = 0; i < arity; ++i) {
                dag->getPropagation().modifyVariable(*dag, vars[i], v[i]);
                values[vars[i]] = v[i];
            }
            ASSERT_TRUE(dag->getPropagation().eval(*dag));
            long long expected = ReferenceEvaluator::value(f, node, values);
            ASSERT_EQ(dag->newValue(node), expected) << v[0] << " " << v[1];
            dag->getPropagation().commit(*dag);
            ASSERT_EQ(dag->currentValue(node), expected);
            ASSERT_EQ(g.makeDag(v)->currentValue(node), expected);  // from scratch
        }
        unsigned int k = 0;
        while (k < arity && ++index[k] == GRID.size()) index[k++] = 0;
        if (k == arity) break;
    }
}

std::string errorOf(NodeType type, long long a, long long b, std::string& function) {
    TestGraph g;
    unsigned int x = g.integer(), y = g.integer();
    unsigned int node = g.add(type, {x, y});
    g.objective(node);
    g.close();
    std::unique_ptr<Dag> dag = g.makeDag({6, 3});
    Propagation& propagation = dag->getPropagation();
    propagation.modifyVariable(*dag, x, a);
    propagation.modifyVariable(*dag, y, b);
    try {
        dag->getNode(node)->eval(*dag, propagation, node);
    } catch (const KernelException& e) {
        function = e.getFunctionName();
        return e.getExplanation();
    }
    return "";
}
}  // namespace

TEST(NodeOperatorsTest, FixedArityOperatorsMatchTheirDefinitionAtTheExtremes) {
    for (NodeType type : {Abs, Not, Sqrt}) checkOverGrid(type, 1);
    for (NodeType type : {Distance, Divide, Modulo, Eq, Neq, Lt, Leq, Gt, Geq}) checkOverGrid(type, 2);
    checkOverGrid(If, 3);
}

TEST(NodeOperatorsTest, NaryOperatorsMatchTheirDefinitionAtTheExtremes) {
    for (NodeType type : {Sum, Product, Max, Min, And, Or, Xor}) checkOverGrid(type, 3);
}

TEST(NodeOperatorsTest, DocumentedValues) {
    TestGraph g;
    unsigned int a = g.integer(), b = g.integer(), c = g.integer();
    unsigned int divide = g.add(Divide, {a, b});
    unsigned int modulo = g.add(Modulo, {a, b});
    unsigned int iif = g.add(If, {c, a, b});
    unsigned int conjunction = g.add(And, {b, c});
    g.objective(divide);
    g.close();
    std::unique_ptr<Dag> dag = g.makeDag({MIN, -1, 5});
    EXPECT_EQ(dag->currentValue(divide), MIN);  // wraps instead of trapping
    EXPECT_EQ(dag->currentValue(modulo), 0);
    EXPECT_EQ(dag->currentValue(iif), MIN);     // any non-zero condition
    EXPECT_EQ(dag->currentValue(conjunction), 1);  // -1 and 5 are both true
    dag->getPropagation().modifyVariable(*dag, c, 0);
    ASSERT_TRUE(dag->getPropagation().eval(*dag));
    EXPECT_EQ(dag->newValue(iif), -1);
    EXPECT_EQ(dag->newValue(conjunction), 0);
}

TEST(NodeOperatorsTest, ArithmeticErrorsNameTheirOperation) {
    std::string function;
    EXPECT_EQ(errorOf(Divide, 4, 0, function), "Division by zero.");
    EXPECT_EQ(function, "eval");
    EXPECT_EQ(errorOf(Modulo, 4, 0, function), "Division by zero.");
    TestGraph g;
    unsigned int x = g.integer();
    g.objective(g.add(Sqrt, {x}));
    g.close();
    try {
        g.makeDag({-1});
        FAIL();
    } catch (const KernelException& e) {
        EXPECT_EQ(e.getExplanation(), "Square root of a negative number");
        EXPECT_EQ(e.getFunctionName(), "computeValue");
        EXPECT_EQ(e.getFileName(), "src/solver/node/nodesqrt");
    }
}

// The propagation turns an operation that cannot be evaluated into a
// refused move: rolled back, the graph is as before and the next move runs.
TEST(NodeOperatorsTest, AMoveThatDividesByZeroIsRefusedAndRolledBack) {
    TestGraph g;
    unsigned int x = g.integer(), y = g.integer();
    unsigned int quotient = g.add(Divide, {x, y});
    unsigned int total = g.add(Sum, {quotient, x});
    g.objective(total);
    g.close();
    std::unique_ptr<Dag> dag = g.makeDag({12, 3});
    Propagation& propagation = dag->getPropagation();
    propagation.modifyVariable(*dag, x, 20);
    propagation.modifyVariable(*dag, y, 0);
    EXPECT_FALSE(propagation.eval(*dag));
    propagation.rollback(*dag);
    EXPECT_EQ(dag->currentValue(total), 16);
    EXPECT_NO_THROW(propagation.check(*dag));
    for (unsigned int node : {x, y, quotient, total}) EXPECT_EQ(dag->newValue(node), dag->currentValue(node));
    propagation.modifyVariable(*dag, y, 4);
    ASSERT_TRUE(propagation.eval(*dag));
    propagation.commit(*dag);
    EXPECT_EQ(dag->currentValue(total), 15);
}

TEST(NodeOperatorsTest, SumBackToItsValueNotifiesNoParent) {
    TestGraph g;
    unsigned int x = g.boolean(), y = g.boolean();
    unsigned int s = g.add(Sum, {x, y});
    unsigned int parent = g.add(Not, {s});
    g.objective(parent);
    g.close();
    std::unique_ptr<Dag> dag = g.makeDag({1, 0});
    Propagation& p = dag->getPropagation();
    p.modifyVariable(*dag, x, 0);
    p.modifyVariable(*dag, y, 1);
    ASSERT_TRUE(p.eval(*dag));
    EXPECT_EQ(dag->newValue(s), 1);
    EXPECT_TRUE(dag->isModified(s));
    EXPECT_FALSE(dag->isModified(parent));
    p.commit(*dag);
    EXPECT_NO_THROW(dag->check());
}

TEST(NodeOperatorsTest, SumSearchFollowsBoundsAndCoefficientSigns) {
    TestGraph g;
    unsigned int x = g.boolean(), y = g.boolean();
    unsigned int full = g.add(Sum, {x, y});
    unsigned int scaled = g.add(ScalarSum, {x, y}, {-1, 2});
    g.objective(full);
    g.close();
    std::unique_ptr<Dag> dag = g.makeDag({1, 1});
    Quickrand rand(9);
    unsigned int boolean = 4294967295u;
    // At its upper bound: false, and no random number drawn.
    EXPECT_FALSE(dag->getNode(full)->findIncreasingBoolean(*dag, rand, boolean, full));
    EXPECT_EQ(rand.getState(), 9u);
    ASSERT_TRUE(dag->getNode(full)->findDecreasingBoolean(*dag, rand, boolean, full));
    EXPECT_TRUE(boolean == x || boolean == y);
    // -x + 2y with x = y = 1: it rises only by lowering x and falls only by lowering y.
    for (int k = 0; k < 20; ++k) {
        ASSERT_TRUE(dag->getNode(scaled)->findIncreasingBoolean(*dag, rand, boolean, scaled));
        EXPECT_EQ(boolean, x);  // y is at 1 and cannot rise; x can fall
        ASSERT_TRUE(dag->getNode(scaled)->findDecreasingBoolean(*dag, rand, boolean, scaled));
        EXPECT_EQ(boolean, y);
    }
    EXPECT_FALSE(dag->getNode(x)->findIncreasingBoolean(*dag, rand, boolean, x));
}

// Wide sums of two-valued terms keep only the terms at their high value;
// the search must still draw, each way, booleans that move the sum that
// way, after moves committed through the graph (x: a signed sum under an
// absolute value) and from the kept scores (y: a sum of pair terms, each
// y in exactly two of them).
TEST(NodeOperatorsTest, WideSumsOfTwoValuedTermsDrawBooleansMovingThemEachWay) {
    TestGraph g;
    const unsigned int n = 300;
    std::vector<unsigned int> x, y, pairs;
    std::vector<long long> coefficients;
    for (unsigned int i = 0; i < n; ++i) x.push_back(g.boolean());
    for (unsigned int i = 0; i < n; ++i) y.push_back(g.boolean());
    for (unsigned int i = 0; i < n; ++i) coefficients.push_back(i % 3 == 0 ? -2 : 1 + static_cast<long long>(i % 5));
    unsigned int row = g.add(ScalarSum, x, coefficients);
    for (unsigned int i = 0; i < n; ++i) pairs.push_back(g.add(Neq, {y[i], y[(i * 7 + 1) % n]}));
    unsigned int cut = g.add(Sum, pairs);
    g.objective(cut, Maximize);
    g.objective(g.add(Abs, {row}));
    g.close();
    Quickrand rand(5);
    std::vector<long long> start;
    for (unsigned int i = 0; i < 2 * n; ++i) start.push_back(rand.nextInt(2));
    std::unique_ptr<Dag> dag = g.makeDag(start);
    Propagation& p = dag->getPropagation();
    auto change = [&](unsigned int sum, unsigned int b) {
        p.modifyVariable(*dag, b, 1 - dag->currentValue(b));
        EXPECT_TRUE(p.eval(*dag));
        long long delta = dag->newValue(sum) - dag->currentValue(sum);
        p.rollback(*dag);
        return delta;
    };
    for (int move = 0; move < 400; ++move) {
        const std::vector<unsigned int>& side = move % 2 == 0 ? x : y;
        for (unsigned int f = 0, count = 1 + rand.nextInt(3); f < count; ++f) {
            unsigned int b = side[rand.nextInt(n)];
            p.modifyVariable(*dag, b, 1 - dag->currentValue(b));
        }
        ASSERT_TRUE(p.eval(*dag));
        p.commit(*dag);
        ASSERT_NO_THROW(dag->check()) << "move " << move;
        if (move % 40 != 0) continue;
        // A comparison asked to move tries one random child one random
        // way: for the cut, some draws find nothing, none goes wrong.
        unsigned int foundUp = 0, foundDown = 0;
        for (int draw = 0; draw < 20; ++draw) {
            unsigned int b = 4294967295u;
            // A row boolean moves the row by its coefficient.
            ASSERT_TRUE(dag->getNode(row)->findIncreasingBoolean(*dag, rand, b, row));
            ASSERT_GT(change(row, b), 0) << "move " << move;
            ASSERT_TRUE(dag->getNode(row)->findDecreasingBoolean(*dag, rand, b, row));
            ASSERT_LT(change(row, b), 0) << "move " << move;
            // Cutting one term may uncut the other one: never less.
            ASSERT_GT(dag->currentValue(cut), 0);
            ASSERT_LT(dag->currentValue(cut), static_cast<long long>(n));
            if (dag->getNode(cut)->findIncreasingBoolean(*dag, rand, b, cut)) {
                ++foundUp;
                ASSERT_GE(change(cut, b), 0) << "move " << move;
            }
            if (dag->getNode(cut)->findDecreasingBoolean(*dag, rand, b, cut)) {
                ++foundDown;
                ASSERT_LE(change(cut, b), 0) << "move " << move;
            }
        }
        EXPECT_GT(foundUp, 0u);
        EXPECT_GT(foundDown, 0u);
    }
    // Both kinds of commit took part.
    EXPECT_GT(p.getNbKeptEvaluations(), 0u);
    EXPECT_GT(p.getNbEvaluatedNodes(), 0u);
}

TEST(NodeOperatorsTest, ComparisonCostsMeasureTheViolation) {
    TestGraph g;
    unsigned int a = g.integer(), b = g.integer();
    unsigned int lt = g.add(Lt, {a, b}), leq = g.add(Leq, {a, b}), gt = g.add(Gt, {a, b});
    unsigned int geq = g.add(Geq, {a, b}), eq = g.add(Eq, {a, b}), neq = g.add(Neq, {a, b});
    g.objective(lt);
    g.close();
    std::unique_ptr<Dag> dag = g.makeDag({5, 2});
    auto cost = [&](unsigned int n) { return dag->getNode(n)->initialViolatedConstraintCost(*dag, n); };
    EXPECT_EQ(cost(lt), 4);
    EXPECT_EQ(cost(leq), 3);
    EXPECT_EQ(cost(gt), 0);
    EXPECT_EQ(cost(geq), 0);
    EXPECT_EQ(cost(eq), 3);
    EXPECT_EQ(cost(neq), 0);
    dag->getPropagation().modifyVariable(*dag, b, 5);
    ASSERT_TRUE(dag->getPropagation().eval(*dag));
    auto delta = [&](unsigned int n) { return dag->getNode(n)->evalViolatedConstraintCost(*dag, n); };
    EXPECT_EQ(delta(lt), 1 - 4);
    EXPECT_EQ(delta(leq), -3);
    EXPECT_EQ(delta(gt), 1);
    EXPECT_EQ(delta(eq), -3);
    EXPECT_EQ(delta(neq), 1);
}
