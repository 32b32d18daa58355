#pragma once

#include "api/qxoperator.h"

#include <cstdint>

// The operand and result kinds of the operator catalogue, as pure functions
// of the operator (and of the operand position for the operand kind).
class ExpressionTypeTools {
public:
    static int getNbMinOperands(QXOperator op);
    static int getNbMaxOperands(QXOperator op);
    static QXValueType getValueType(QXOperator op);
    static QXValueType getOperandType(QXOperator op, int position);

    // Whether operand may stand at position of an expression of operator op:
    // integer positions take anything (a boolean is the integer 0 or 1);
    // boolean positions take a boolean-kind expression or the constant 0 or 1.
    static bool isOperandValueTypeValid(QXOperator op, QXOperator operandOp,
                                        int64_t operandValue, int position);

    // Boolean kind, or a constant 0 or 1: what a boolean position and a
    // constraint accept.
    static bool hasBooleanValue(QXOperator op, int64_t value);
};
