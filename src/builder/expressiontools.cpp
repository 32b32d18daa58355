#include "builder/expressiontools.h"

#include "api/kernelexception.h"
#include "solver/kernel/wraparith.h"

#include <cmath>

namespace {

const char* const UNIT = "src/builder/expressiontools";

[[noreturn]] void divisionByZero(const char* unit) {
    throw KernelException("Division by zero.", QX_WHERE(unit, "computeValue"));
}

}  // namespace

std::string ExpressionTools::getName(QXOperator op) {
    return isValidOperator(op) ? getOperatorInfo(op).name : "";
}

bool ExpressionTools::isDecision(QXOperator op) { return op == QXOperator::Bool; }

bool ExpressionTools::isLeaf(QXOperator op) {
    return op == QXOperator::Bool || op == QXOperator::Const;
}

bool ExpressionTools::isUnary(QXOperator op, int nbOperands) {
    if (nbOperands != 1) return false;
    switch (op) {
    case QXOperator::And:
    case QXOperator::Max:
    case QXOperator::Min:
    case QXOperator::Or:
    case QXOperator::Prod:
    case QXOperator::Sum:
    case QXOperator::Xor: return true;
    default: return false;
    }
}

int64_t ExpressionTools::evaluate(ModelExpr expr, const Values& values) {
    return callEvaluator(expr.getOperator(), values);
}

int64_t ExpressionTools::callEvaluator(QXOperator op, const Values& v) {
    switch (op) {
    case QXOperator::Abs: return absEval(v);
    case QXOperator::And: return andEval(v);
    case QXOperator::Bool: return boolEval(v);
    case QXOperator::Const: return constantEval(v);
    case QXOperator::Dist: return distanceEval(v);
    case QXOperator::Div: return divideEval(v);
    case QXOperator::Eq: return eqEval(v);
    case QXOperator::Geq: return geqEval(v);
    case QXOperator::Gt: return gtEval(v);
    case QXOperator::Iif: return ifEval(v);
    case QXOperator::Leq: return leqEval(v);
    case QXOperator::Lt: return ltEval(v);
    case QXOperator::Max: return maxEval(v);
    case QXOperator::Min: return minEval(v);
    case QXOperator::Mod: return moduloEval(v);
    case QXOperator::Neq: return neqEval(v);
    case QXOperator::Not: return notEval(v);
    case QXOperator::Or: return orEval(v);
    case QXOperator::Prod: return productEval(v);
    case QXOperator::Sqrt: return sqrtEval(v);
    case QXOperator::Sum: return sumEval(v);
    case QXOperator::Xor: return xorEval(v);
    }
    throw KernelException("Operator " + std::to_string(static_cast<unsigned>(op)) + " unknown.",
                          QX_HERE);
}

int64_t ExpressionTools::absEval(const Values& v) { return WrapArith::abs(v[0]); }

int64_t ExpressionTools::andEval(const Values& v) {
    for (int64_t x : v)
        if (x != 1) return 0;
    return 1;
}

int64_t ExpressionTools::boolEval(const Values&) {
    throw KernelException("Cannot evaluate Bool operator. Please use a Solution object instead ",
                          QX_HERE);
}

int64_t ExpressionTools::constantEval(const Values&) {
    throw KernelException("Cannot evaluate a constant node with ExpressionTools.", QX_HERE);
}

int64_t ExpressionTools::distanceEval(const Values& v) { return WrapArith::abs(WrapArith::sub(v[0], v[1])); }

int64_t ExpressionTools::divideEval(const Values& v) {
    if (v[1] == 0) divisionByZero("src/solver/node/nodedivide");
    return WrapArith::divide(v[0], v[1]);
}

int64_t ExpressionTools::moduloEval(const Values& v) {
    if (v[1] == 0) divisionByZero("src/solver/node/nodemodulo");
    return WrapArith::modulo(v[0], v[1]);
}

// The comparisons answer 1 on fewer than two values: nothing contradicts them.
int64_t ExpressionTools::eqEval(const Values& v) {
    for (size_t i = 1; i < v.size(); ++i)
        if (v[i] != v[0]) return 0;
    return 1;
}
int64_t ExpressionTools::neqEval(const Values& v) { return v.size() < 2 || v[0] != v[1]; }
int64_t ExpressionTools::geqEval(const Values& v) { return v.size() < 2 || v[0] >= v[1]; }
int64_t ExpressionTools::gtEval(const Values& v) { return v.size() < 2 || v[0] > v[1]; }
int64_t ExpressionTools::leqEval(const Values& v) { return v.size() < 2 || v[0] <= v[1]; }
int64_t ExpressionTools::ltEval(const Values& v) { return v.size() < 2 || v[0] < v[1]; }

int64_t ExpressionTools::ifEval(const Values& v) { return v[0] == 1 ? v[1] : v[2]; }

int64_t ExpressionTools::maxEval(const Values& v) {
    int64_t result = INT64_MIN;
    for (int64_t x : v)
        if (x > result) result = x;
    return result;
}

int64_t ExpressionTools::minEval(const Values& v) {
    int64_t result = INT64_MAX;
    for (int64_t x : v)
        if (x < result) result = x;
    return result;
}

int64_t ExpressionTools::notEval(const Values& v) { return WrapArith::sub(1, v[0]); }

int64_t ExpressionTools::orEval(const Values& v) {
    for (int64_t x : v)
        if (x == 1) return 1;
    return 0;
}

int64_t ExpressionTools::productEval(const Values& v) {
    int64_t result = 1;
    for (int64_t x : v) result = WrapArith::mul(result, x);
    return result;
}

int64_t ExpressionTools::sqrtEval(const Values& v) {
    if (v[0] < 0)
        throw KernelException("Square root of a negative number",
                              QX_WHERE("src/solver/node/nodesqrt", "computeValue"));
    return static_cast<int64_t>(std::sqrt(static_cast<double>(v[0])));
}

int64_t ExpressionTools::sumEval(const Values& v) {
    int64_t result = 0;
    for (int64_t x : v) result = WrapArith::add(result, x);
    return result;
}

int64_t ExpressionTools::xorEval(const Values& v) { return sumEval(v) & 1; }
