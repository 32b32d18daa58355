#pragma once

#include "api/qxoperator.h"
#include "builder/modelgraph.h"

#include <cstdint>
#include <string>
#include <vector>


// Names, classification and value computation of the operators. The
// evaluators compute an operator's value from its operands' values; they
// wrap on 64-bit overflow like the kernel's nodes, and raise the kernel's
// errors for a zero divisor and the square root of a negative number.
class ExpressionTools {
public:
    using Values = std::vector<int64_t>;

    // The language name; the empty string for a value outside the 22 codes.
    static std::string getName(QXOperator op);
    static bool isDecision(QXOperator op);
    static bool isLeaf(QXOperator op);
    // One operand under an n-ary operator: the expression equals its operand.
    static bool isUnary(QXOperator op, int nbOperands);
    static bool isUnary(ModelExpr expr) { return isUnary(expr.getOperator(), expr.getNbOperands()); }

    // The values are the operands' in operand order; their count must be
    // within the operator's bounds (the model's closing and the language's
    // argument checks see to it): it is not checked again here.
    static int64_t evaluate(ModelExpr expr, const Values& values);
    static int64_t callEvaluator(QXOperator op, const Values& values);

    static int64_t absEval(const Values& v);
    static int64_t andEval(const Values& v);
    static int64_t boolEval(const Values& v);
    static int64_t constantEval(const Values& v);
    static int64_t distanceEval(const Values& v);
    static int64_t divideEval(const Values& v);
    static int64_t eqEval(const Values& v);
    static int64_t geqEval(const Values& v);
    static int64_t gtEval(const Values& v);
    static int64_t ifEval(const Values& v);
    static int64_t leqEval(const Values& v);
    static int64_t ltEval(const Values& v);
    static int64_t maxEval(const Values& v);
    static int64_t minEval(const Values& v);
    static int64_t moduloEval(const Values& v);
    static int64_t neqEval(const Values& v);
    static int64_t notEval(const Values& v);
    static int64_t orEval(const Values& v);
    static int64_t productEval(const Values& v);
    static int64_t sqrtEval(const Values& v);
    static int64_t sumEval(const Values& v);
    static int64_t xorEval(const Values& v);
};
