#include <gtest/gtest.h>

#include "api/kernelexception.h"
#include "api/quarrix.h"
#include "api/qxexpression.h"
#include "api/qxmodel.h"
#include "builder/expressiontools.h"
#include "builder/expressiontypetools.h"

#include <cstdint>

using T = ExpressionTools;
using Op = QXOperator;

namespace {
bool valid(Op op, const QXExpression* operand, int position) {
    return ExpressionTypeTools::isOperandValueTypeValid(op, operand->getOperator(),
                                                        operand->isConstant() ? operand->getValue() : 0,
                                                        position);
}
bool unary(const QXExpression* expr) { return T::isUnary(expr->getOperator(), expr->getNbOperands()); }
}  // namespace

TEST(ExpressionTools, CatalogueFollowsTheOperatorCodes) {
    const char* names[] = {"abs", "and", "bool", "const", "dist", "div", "eq", "geq",
                           "gt",  "iif", "leq",  "lt",    "max",  "min", "mod", "neq",
                           "not", "or",  "prod", "sqrt",  "sum",  "xor"};
    for (int code = 0; code < QX_NB_OPERATORS; ++code)
        EXPECT_EQ(T::getName(static_cast<Op>(code)), names[code]) << code;
    EXPECT_EQ(T::getName(static_cast<Op>(22)), "");
    EXPECT_EQ(T::getName(static_cast<Op>(255)), "");
}

TEST(ExpressionTools, OperandCountsAndKinds) {
    using TT = ExpressionTypeTools;
    const int unbounded = 2147483647;
    EXPECT_EQ(TT::getNbMinOperands(Op::Bool), 0);
    EXPECT_EQ(TT::getNbMaxOperands(Op::Const), 0);
    EXPECT_EQ(TT::getNbMinOperands(Op::Iif), 3);
    EXPECT_EQ(TT::getNbMaxOperands(Op::Iif), 3);
    EXPECT_EQ(TT::getNbMaxOperands(Op::Not), 1);
    EXPECT_EQ(TT::getNbMinOperands(Op::Div), 2);
    for (Op op : {Op::And, Op::Max, Op::Min, Op::Or, Op::Prod, Op::Sum, Op::Xor}) {
        EXPECT_EQ(TT::getNbMinOperands(op), 1);
        EXPECT_EQ(TT::getNbMaxOperands(op), unbounded);
    }
    // n-ary arithmetic over booleans stays integer: it cannot be constrained.
    for (Op op : {Op::Iif, Op::Max, Op::Min, Op::Sum, Op::Prod, Op::Const, Op::Abs})
        EXPECT_EQ(TT::getValueType(op), QXValueType::Integer);
    for (Op op : {Op::And, Op::Bool, Op::Eq, Op::Geq, Op::Gt, Op::Leq, Op::Lt, Op::Neq,
                  Op::Not, Op::Or, Op::Xor})
        EXPECT_EQ(TT::getValueType(op), QXValueType::Boolean);
    EXPECT_EQ(TT::getOperandType(Op::Iif, 0), QXValueType::Boolean);
    EXPECT_EQ(TT::getOperandType(Op::Iif, 1), QXValueType::Integer);
    EXPECT_EQ(TT::getOperandType(Op::Iif, 2), QXValueType::Integer);
    EXPECT_EQ(TT::getOperandType(Op::Xor, 5), QXValueType::Boolean);
    EXPECT_EQ(TT::getOperandType(Op::Bool, 0), QXValueType::None);
}

TEST(ExpressionTools, BooleanPositionsTakeBooleansAndTheConstantsZeroAndOne) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* b = m->createExpression(Op::Bool);
    QXExpression* sumOfOne = m->createExpression(Op::Sum, b);
    QXExpression* zero = m->createConstant(0);
    QXExpression* one = m->createConstant(1);
    QXExpression* two = m->createConstant(2);
    QXExpression* minusOne = m->createConstant(-1);
    EXPECT_TRUE(valid(Op::And, b, 0));
    EXPECT_TRUE(valid(Op::And, zero, 3));
    EXPECT_TRUE(valid(Op::Or, one, 0));
    EXPECT_FALSE(valid(Op::Or, two, 0));
    EXPECT_FALSE(valid(Op::Not, minusOne, 0));
    EXPECT_FALSE(valid(Op::Xor, sumOfOne, 1));
    EXPECT_FALSE(valid(Op::Iif, two, 0));
    EXPECT_TRUE(valid(Op::Iif, two, 1));
    EXPECT_TRUE(valid(Op::Sum, sumOfOne, 0));
    EXPECT_FALSE(valid(Op::Bool, b, 0));

    EXPECT_TRUE(unary(sumOfOne));
    EXPECT_FALSE(unary(b));
    QXExpression* notB = m->createExpression(Op::Not, b);
    EXPECT_FALSE(unary(notB));  // one operand, but not n-ary
    EXPECT_FALSE(unary(m->createExpression(Op::Sum, b, b)));
    EXPECT_TRUE(T::isDecision(Op::Bool));
    EXPECT_FALSE(T::isDecision(Op::Const));
    EXPECT_TRUE(T::isLeaf(Op::Const));
    EXPECT_FALSE(T::isLeaf(Op::Not));
}

TEST(ExpressionTools, ArithmeticEvaluators) {
    const int64_t max = INT64_MAX, min = INT64_MIN;
    EXPECT_EQ(T::callEvaluator(Op::Abs, {-7}), 7);
    EXPECT_EQ(T::callEvaluator(Op::Abs, {min}), min);  // wraps like the kernel
    EXPECT_EQ(T::callEvaluator(Op::Dist, {3, 10}), 7);
    EXPECT_EQ(T::callEvaluator(Op::Dist, {10, 3}), 7);
    EXPECT_EQ(T::callEvaluator(Op::Sum, {1, 2, 3, -10}), -4);
    EXPECT_EQ(T::callEvaluator(Op::Sum, {max, 1}), min);
    EXPECT_EQ(T::callEvaluator(Op::Prod, {2, -3, 4}), -24);
    EXPECT_EQ(T::callEvaluator(Op::Prod, {}), 1);
    EXPECT_EQ(T::callEvaluator(Op::Max, {3, -1, 9, 2}), 9);
    EXPECT_EQ(T::callEvaluator(Op::Min, {3, -1, 9, 2}), -1);
    EXPECT_EQ(T::callEvaluator(Op::Iif, {1, 10, 20}), 10);
    EXPECT_EQ(T::callEvaluator(Op::Iif, {0, 10, 20}), 20);
    EXPECT_EQ(T::callEvaluator(Op::Sqrt, {0}), 0);
    EXPECT_EQ(T::callEvaluator(Op::Sqrt, {15}), 3);
    EXPECT_EQ(T::callEvaluator(Op::Sqrt, {16}), 4);
    EXPECT_EQ(T::callEvaluator(Op::Sqrt, {max}), 3037000499);
}

TEST(ExpressionTools, DivisionAndModuloTruncateTowardZero) {
    EXPECT_EQ(T::callEvaluator(Op::Div, {7, 2}), 3);
    EXPECT_EQ(T::callEvaluator(Op::Div, {-7, 2}), -3);
    EXPECT_EQ(T::callEvaluator(Op::Div, {7, -2}), -3);
    EXPECT_EQ(T::callEvaluator(Op::Mod, {7, 2}), 1);
    EXPECT_EQ(T::callEvaluator(Op::Mod, {-7, 2}), -1);  // sign of the dividend
    EXPECT_EQ(T::callEvaluator(Op::Mod, {7, -2}), 1);
    // The one quotient that overflows wraps instead of trapping.
    EXPECT_EQ(T::callEvaluator(Op::Div, {INT64_MIN, -1}), INT64_MIN);
    EXPECT_EQ(T::callEvaluator(Op::Div, {5, -1}), -5);
    EXPECT_EQ(T::callEvaluator(Op::Mod, {INT64_MIN, -1}), 0);
}

TEST(ExpressionTools, LogicAndComparisonEvaluators) {
    EXPECT_EQ(T::callEvaluator(Op::And, {1, 1, 1}), 1);
    EXPECT_EQ(T::callEvaluator(Op::And, {1, 0, 1}), 0);
    EXPECT_EQ(T::callEvaluator(Op::Or, {0, 0, 1}), 1);
    EXPECT_EQ(T::callEvaluator(Op::Or, {0, 0}), 0);
    EXPECT_EQ(T::callEvaluator(Op::Xor, {1, 1, 1}), 1);
    EXPECT_EQ(T::callEvaluator(Op::Xor, {1, 0, 1}), 0);
    EXPECT_EQ(T::callEvaluator(Op::Not, {0}), 1);
    EXPECT_EQ(T::callEvaluator(Op::Not, {1}), 0);
    EXPECT_EQ(T::callEvaluator(Op::Eq, {4, 4, 4}), 1);
    EXPECT_EQ(T::callEvaluator(Op::Eq, {4, 4, 5}), 0);  // all compared with the first
    EXPECT_EQ(T::callEvaluator(Op::Neq, {4, 5}), 1);
    EXPECT_EQ(T::callEvaluator(Op::Neq, {4, 4}), 0);
    EXPECT_EQ(T::callEvaluator(Op::Geq, {4, 4}), 1);
    EXPECT_EQ(T::callEvaluator(Op::Gt, {4, 4}), 0);
    EXPECT_EQ(T::callEvaluator(Op::Leq, {5, 4}), 0);
    EXPECT_EQ(T::callEvaluator(Op::Lt, {3, 4}), 1);
    for (Op op : {Op::Eq, Op::Neq, Op::Geq, Op::Gt, Op::Leq, Op::Lt}) {
        EXPECT_EQ(T::callEvaluator(op, {}), 1);
        EXPECT_EQ(T::callEvaluator(op, {7}), 1);
    }
}

namespace {
void expectKernelError(Op op, std::vector<int64_t> values, const std::string& text,
                       const std::string& fileName) {
    try {
        T::callEvaluator(op, values);
        ADD_FAILURE() << "nothing raised for " << T::getName(op);
    } catch (const KernelException& e) {
        EXPECT_EQ(e.getExplanation(), text);
        EXPECT_EQ(e.getFileName(), fileName);
    }
}
}  // namespace

TEST(ExpressionTools, EvaluatorsRefuseWithTheKernelsErrors) {
    expectKernelError(Op::Div, {1, 0}, "Division by zero.", "src/solver/node/nodedivide");
    expectKernelError(Op::Mod, {1, 0}, "Division by zero.", "src/solver/node/nodemodulo");
    expectKernelError(Op::Sqrt, {-1}, "Square root of a negative number",
                      "src/solver/node/nodesqrt");
    expectKernelError(Op::Const, {}, "Cannot evaluate a constant node with ExpressionTools.",
                      "src/builder/expressiontools");
    expectKernelError(Op::Bool, {},
                      "Cannot evaluate Bool operator. Please use a Solution object instead ",
                      "src/builder/expressiontools");
}
