// The graph compiler against the API's own evaluation: random models of
// every operator are closed, and for random decision values every
// expression that got a node must have the node's value, and every node
// must lie within its bounds.

#include "api/kernelexception.h"
#include "api/quarrix.h"
#include "api/qxexpression.h"
#include "api/qxmodel.h"
#include "api/qxsolution.h"
#include "api/compiledmodel.h"
#include "builder/dagbuilder.h"
#include "randommodel.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/kernelconstants.h"
#include "solver/kernel/nodetypeutils.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>
#include <vector>

namespace {

// Sets the decisions in the API solution and loads them into the main Dag.
void assign(CompiledModel& builder, QXSolution& solution, const std::vector<QXExpression*>& decisions,
            const std::vector<int64_t>& values) {
    for (std::size_t i = 0; i < decisions.size(); ++i) solution.setValue(decisions[i], values[i]);
    std::vector<long long> variableValues;
    builder.convertSolution(&solution, variableValues);
    DagBuilder::loadVariableValues(*builder.getDag(0), variableValues);
}

// Every expression with a node against the API's value; every node within
// its bounds. Returns the number of expressions compared.
int compareWithModel(CompiledModel& builder, QXSolution& solution, const std::string& where) {
    const QXModel& model = builder.getModel();
    const Dag& dag = *builder.getDag(0);
    const DagFixedFields& fixed = builder.getFixedFields();
    int compared = 0;
    for (int i = 0; i < model.getNbExpressions(); ++i) {
        const QXExpression* e = model.getExpression(i);
        const unsigned int node = builder.getNode(e);
        if (node == KernelConstants::NO_NODE) continue;
        ++compared;
        EXPECT_EQ(dag.currentValue(node), solution.getValue(e))
            << where << " expression " << i << " (" << e->toString() << ") node " << node << " "
            << NodeTypeUtils::toString(fixed.type(node));
    }
    for (unsigned int node = 0; node < fixed.nbNodes(); ++node) {
        const long long v = dag.currentValue(node);
        EXPECT_TRUE(fixed.lowerBound(node) <= v && v <= fixed.upperBound(node))
            << where << " node " << node << " " << NodeTypeUtils::toString(fixed.type(node))
            << " value " << v << " bounds [" << fixed.lowerBound(node) << ", "
            << fixed.upperBound(node) << "]";
    }
    return compared;
}

}  // namespace

TEST(DagBuilder, RandomModelsCompileToTheApiValuesWithinBounds) {
    std::set<NodeType> typesSeen;
    for (unsigned int seed = 1; seed <= 1000; ++seed) {
        Quarrix solver;
        QXModel* model = solver.getModel();
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomModel random(model, seed);
        model->close();
        CompiledModel& builder = *model->getCompiledModel();
        QXSolution& solution = *solver.getSolution();
        const DagFixedFields& fixed = builder.getFixedFields();
        for (int c = 0; c < model->getNbConstraints(); ++c)
            ASSERT_NE(builder.getNode(model->getConstraint(c)), KernelConstants::NO_NODE);
        for (int o = 0; o < model->getNbObjectives(); ++o)
            ASSERT_NE(builder.getNode(model->getObjective(o)), KernelConstants::NO_NODE);
        for (unsigned int node = 0; node < fixed.nbNodes(); ++node) typesSeen.insert(fixed.type(node));

        // The Dag starts at the decisions' values of the model: all 0.
        const std::string where = "seed " + std::to_string(seed);
        EXPECT_GT(compareWithModel(builder, solution, where + " initial"), 0);
        for (int round = 0; round < 6; ++round) {
            assign(builder, solution, random.decisions, random.randomDecisionValues());
            compareWithModel(builder, solution, where + " round " + std::to_string(round));
        }
        // A copy for a further thread starts where the main Dag is.
        builder.createCopies(1);
        for (unsigned int node = 0; node < fixed.nbNodes(); ++node)
            ASSERT_EQ(builder.getDag(1)->currentValue(node), builder.getDag(0)->currentValue(node))
                << where << " node " << node;
        if (HasFailure()) return;
    }
    // Every node type a model can produce was produced (all but Integer).
    EXPECT_EQ(typesSeen.size(), NB_NODE_TYPES - 1);
    EXPECT_EQ(typesSeen.count(Integer), 0u);
}

TEST(DagBuilder, MillionDeepChainIsOneSum) {
    const int n = 1000000;
    Quarrix solver;
    QXModel* model = solver.getModel();
    std::vector<QXExpression*> x;
    for (int i = 0; i < n; ++i) x.push_back(model->createExpression(QXOperator::Bool));
    QXExpression* s = x[0];
    for (int i = 1; i < n; ++i) s = model->createExpression(QXOperator::Sum, s, x[i]);
    model->addObjective(s, QXObjectiveDirection::Maximize);
    model->close();

    const CompiledModel& builder = *model->getCompiledModel();
    const DagFixedFields& fixed = builder.getFixedFields();
    ASSERT_EQ(fixed.nbNodes(), static_cast<unsigned int>(n + 1));
    const unsigned int root = builder.getNode(s);
    EXPECT_EQ(fixed.type(root), BooleanSum);
    EXPECT_EQ(fixed.nbChilds(root), static_cast<unsigned int>(n));
    EXPECT_EQ(fixed.lowerBound(root), 0);
    EXPECT_EQ(fixed.upperBound(root), n);
    // The inner sums of the chain are absorbed.
    EXPECT_EQ(builder.getNode(s->getOperand(0)), KernelConstants::NO_NODE);
}

TEST(DagBuilder, ConstantsFoldedAndSharedUnusedExpressionsDropped) {
    Quarrix solver;
    QXModel* model = solver.getModel();
    QXExpression* x = model->createExpression(QXOperator::Bool);
    QXExpression* y = model->createExpression(QXOperator::Bool);
    QXExpression* five = model->createConstant(5);
    QXExpression* minusOne = model->createConstant(-1);
    // sum(2, 3) and max(5, -1) fold to the value of the constant 5.
    QXExpression* folded = model->createExpression(QXOperator::Sum, 2, 3);
    QXExpression* alsoFive = model->createExpression(QXOperator::Max, five, -1);
    QXExpression* pick = model->createExpression(QXOperator::Iif, x, folded, five);
    QXExpression* other = model->createExpression(QXOperator::Iif, y, alsoFive, 7);
    // Unused, however large.
    QXExpression* unused = model->createExpression(QXOperator::Sum);
    for (int i = 0; i < 300; ++i) unused->addOperand(i % 2 ? x : y);
    QXExpression* unusedAbs = model->createExpression(QXOperator::Abs, unused);
    model->addObjective(pick, QXObjectiveDirection::Maximize);
    model->addObjective(other, QXObjectiveDirection::Minimize);
    model->close();

    const CompiledModel& builder = *model->getCompiledModel();
    const DagFixedFields& fixed = builder.getFixedFields();
    const unsigned int fiveNode = builder.getNode(five);
    ASSERT_NE(fiveNode, KernelConstants::NO_NODE);
    EXPECT_EQ(builder.getNode(folded), fiveNode);
    EXPECT_EQ(builder.getNode(alsoFive), fiveNode);
    // x, y, the constants 5 and 7, two If nodes.
    EXPECT_EQ(fixed.nbNodes(), 6u);
    EXPECT_EQ(fixed.nbNodesOfType(Constant), 2u);
    EXPECT_EQ(builder.getNode(unused), KernelConstants::NO_NODE);
    EXPECT_EQ(builder.getNode(unusedAbs), KernelConstants::NO_NODE);
    EXPECT_EQ(builder.getNode(minusOne), KernelConstants::NO_NODE);
}

// Constant constraints keep nodes of their own: folded to the constant 1,
// two of them would be one node constrained twice.
TEST(DagBuilder, ConstantConstraintsStayApart) {
    Quarrix solver;
    QXModel* model = solver.getModel();
    QXExpression* x = model->createExpression(QXOperator::Bool);
    model->addConstraint(model->createExpression(QXOperator::Eq, 2, 2));
    model->addConstraint(model->createExpression(QXOperator::Leq, 1, 2));
    model->addConstraint(model->createConstant(1));
    model->addObjective(x, QXObjectiveDirection::Maximize);
    model->close();
    const DagFixedFields& fixed = model->getDagBuilder()->getFixedFields();
    ASSERT_EQ(fixed.nbConstraints(), 3u);
    EXPECT_EQ(fixed.type(fixed.constraints()[0]), Eq);
    EXPECT_EQ(fixed.type(fixed.constraints()[1]), Leq);
    EXPECT_EQ(fixed.type(fixed.constraints()[2]), Constant);
}

TEST(DagBuilder, ConstantErrorsRefuseTheClosing) {
    struct Case {
        QXOperator op;
        int64_t a, b;
        const char* message;
    };
    const Case cases[] = {{QXOperator::Div, 7, 0, "Division by zero."},
                          {QXOperator::Mod, 7, 0, "Division by zero."},
                          {QXOperator::Sqrt, -4, 0, "Square root of a negative number"}};
    for (const Case& c : cases) {
        Quarrix solver;
        QXModel* model = solver.getModel();
        QXExpression* x = model->createExpression(QXOperator::Bool);
        QXExpression* bad = c.op == QXOperator::Sqrt ? model->createExpression(c.op, c.a)
                                                     : model->createExpression(c.op, c.a, c.b);
        model->addObjective(model->createExpression(QXOperator::Sum, x, bad),
                            QXObjectiveDirection::Maximize);
        try {
            model->close();
            ADD_FAILURE() << "no error for " << bad->toString();
        } catch (const KernelException& e) {
            EXPECT_EQ(e.getExplanation(), c.message);
        }
        EXPECT_FALSE(model->isClosed());
        EXPECT_EQ(model->getDagBuilder(), nullptr);
    }
}

// Violations of MAX, MAX and 2 add up to 2^64: the total cost must not wrap
// to 0, which would take the start for a feasible one.
TEST(DagBuilder, HugeViolationsNeverAddUpToFeasible) {
    const int64_t max = std::numeric_limits<int64_t>::max();
    Quarrix solver;
    QXModel* model = solver.getModel();
    for (int64_t amount : {max, max, int64_t(2)}) {
        QXExpression* x = model->createExpression(QXOperator::Bool);
        QXExpression* reached = model->createExpression(QXOperator::Iif, x, amount, 0);
        model->addConstraint(model->createExpression(QXOperator::Leq, amount, reached));
        model->addObjective(x, QXObjectiveDirection::Maximize);
    }
    model->close();
    const Propagation& propagation = model->getDagBuilder()->getDag(0)->getPropagation();
    EXPECT_EQ(propagation.getNbViolatedConstraints(), 3u);
    EXPECT_GT(propagation.getViolatedConstraintsCost(), 0);
}

// Every operator, plain and scaled, over two operands that each take two
// values among the 64-bit extremes and small values: every combination of
// values is reached, so a bound that misses a wrapped or extreme result
// shows up.
TEST(DagBuilder, BoundsHoldAtTheExtremes) {
    const int64_t min = std::numeric_limits<int64_t>::min();
    const int64_t max = std::numeric_limits<int64_t>::max();
    const int64_t values[] = {min, min + 1, -3, -1, 0, 1, 2, max - 1, max};
    Quarrix solver;
    QXModel* model = solver.getModel();
    QXExpression* x = model->createExpression(QXOperator::Bool);
    QXExpression* y = model->createExpression(QXOperator::Bool);
    using Op = QXOperator;
    auto objective = [&](QXExpression* e) { model->addObjective(e, QXObjectiveDirection::Maximize); };
    for (int64_t a : values)
        for (int64_t b : values)
            for (int64_t c : values)
                for (int64_t d : values) {
                    if (a > b || c > d) continue;  // each range once
                    QXExpression* s = model->createExpression(Op::Iif, x, a, b);
                    QXExpression* t = model->createExpression(Op::Iif, y, c, d);
                    for (Op op : {Op::Dist, Op::Sum, Op::Prod, Op::Max, Op::Min, Op::Lt, Op::Eq})
                        objective(model->createExpression(op, s, t));
                    objective(model->createExpression(Op::Abs, s));
                    if (a >= 0) objective(model->createExpression(Op::Sqrt, s));
                    if (c != 0 && d != 0) {
                        objective(model->createExpression(Op::Div, s, t));
                        objective(model->createExpression(Op::Mod, s, t));
                    }
                    // Scalar forms, with c as the factor.
                    if (c == 0 || c == 1 || c == max) continue;
                    QXExpression* scaled = model->createExpression(Op::Prod, c, s);
                    objective(scaled);
                    objective(model->createExpression(Op::Sum, scaled, t));
                    objective(model->createExpression(Op::Max, scaled, t));
                    objective(model->createExpression(Op::Min, scaled, t));
                    objective(model->createExpression(Op::Prod, c, s, t));
                }
    model->close();
    CompiledModel& builder = *model->getCompiledModel();
    const DagFixedFields& fixed = builder.getFixedFields();
    for (NodeType type : {Scalar, ScalarSum, ScalarMax, ScalarMin, ScalarProduct, Divide, Modulo,
                          Sqrt, Distance, Abs, Product})
        EXPECT_GT(fixed.nbNodesOfType(type), 0u) << NodeTypeUtils::toString(type);
    QXSolution& solution = *solver.getSolution();
    for (int64_t vx : {0, 1})
        for (int64_t vy : {0, 1}) {
            assign(builder, solution, {x, y}, {vx, vy});
            compareWithModel(builder, solution, "x = " + std::to_string(vx) + ", y = " + std::to_string(vy));
        }
}
