#pragma once

#include <cstdint>

// The expression operators. The order is fixed: the code is the index of the
// catalogue below, of the language's name table and of the model writer, so
// any change here must be mirrored in qxoperator.cpp.
enum class QXOperator : uint8_t {
    Abs,   // 0
    And,   // 1
    Bool,  // 2
    Const, // 3
    Dist,  // 4
    Div,   // 5
    Eq,    // 6
    Geq,   // 7
    Gt,    // 8
    Iif,   // 9
    Leq,   // 10
    Lt,    // 11
    Max,   // 12
    Min,   // 13
    Mod,   // 14
    Neq,   // 15
    Not,   // 16
    Or,    // 17
    Prod,  // 18
    Sqrt,  // 19
    Sum,   // 20
    Xor    // 21
};

constexpr int QX_NB_OPERATORS = 22;

// Kind of a value: what an operator yields, and what it requires of an
// operand. None is the operand kind of the leaves, which take no operand.
enum class QXValueType : uint8_t { None, Integer, Boolean };

// One row of the operator catalogue.
struct QXOperatorInfo {
    const char* name;     // the language name
    int minOperands;
    int maxOperands;      // QXLimits::MAX_COUNT when unbounded
    QXValueType operandType;  // for Iif, the kind of positions 1 and 2
    QXValueType resultType;
};

// The catalogue row of an operator; op must be one of the 22 codes.
const QXOperatorInfo& getOperatorInfo(QXOperator op);
// The kind required at an operand position: the row's operand kind, except
// the condition of Iif, which is boolean.
QXValueType getOperandType(QXOperator op, int position);

// True for the 22 codes; anything else comes from a bad cast.
inline bool isValidOperator(QXOperator op) {
    return static_cast<unsigned>(op) < static_cast<unsigned>(QX_NB_OPERATORS);
}
