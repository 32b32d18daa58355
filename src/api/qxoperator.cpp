#include "api/qxoperator.h"

#include "solver/kernel/constants.h"

namespace {

constexpr int Unbounded = QXLimits::MAX_COUNT;
constexpr QXValueType None = QXValueType::None;
constexpr QXValueType Int = QXValueType::Integer;
constexpr QXValueType Bool = QXValueType::Boolean;

// Indexed by the operator code: keep in the order of QXOperator.
const QXOperatorInfo catalogue[QX_NB_OPERATORS] = {
    {"abs", 1, 1, Int, Int},
    {"and", 1, Unbounded, Bool, Bool},
    {"bool", 0, 0, None, Bool},
    {"const", 0, 0, None, Int},
    {"dist", 2, 2, Int, Int},
    {"div", 2, 2, Int, Int},
    {"eq", 2, 2, Int, Bool},
    {"geq", 2, 2, Int, Bool},
    {"gt", 2, 2, Int, Bool},
    {"iif", 3, 3, Int, Int},  // position 0 is boolean, see getOperandType
    {"leq", 2, 2, Int, Bool},
    {"lt", 2, 2, Int, Bool},
    {"max", 1, Unbounded, Int, Int},
    {"min", 1, Unbounded, Int, Int},
    {"mod", 2, 2, Int, Int},
    {"neq", 2, 2, Int, Bool},
    {"not", 1, 1, Bool, Bool},
    {"or", 1, Unbounded, Bool, Bool},
    {"prod", 1, Unbounded, Int, Int},
    {"sqrt", 1, 1, Int, Int},
    {"sum", 1, Unbounded, Int, Int},
    {"xor", 1, Unbounded, Bool, Bool},
};

}  // namespace

const QXOperatorInfo& getOperatorInfo(QXOperator op) {
    return catalogue[static_cast<unsigned>(op)];
}

QXValueType getOperandType(QXOperator op, int position) {
    if (op == QXOperator::Iif && position == 0) return QXValueType::Boolean;
    return getOperatorInfo(op).operandType;
}
