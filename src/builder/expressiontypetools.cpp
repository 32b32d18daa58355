#include "builder/expressiontypetools.h"


int ExpressionTypeTools::getNbMinOperands(QXOperator op) {
    return getOperatorInfo(op).minOperands;
}

int ExpressionTypeTools::getNbMaxOperands(QXOperator op) {
    return getOperatorInfo(op).maxOperands;
}

QXValueType ExpressionTypeTools::getValueType(QXOperator op) {
    return getOperatorInfo(op).resultType;
}

QXValueType ExpressionTypeTools::getOperandType(QXOperator op, int position) {
    return ::getOperandType(op, position);
}

bool ExpressionTypeTools::hasBooleanValue(QXOperator op, int64_t value) {
    if (op == QXOperator::Const) return value == 0 || value == 1;
    return getValueType(op) == QXValueType::Boolean;
}

bool ExpressionTypeTools::isOperandValueTypeValid(QXOperator op, QXOperator operandOp,
                                                  int64_t operandValue, int position) {
    switch (getOperandType(op, position)) {
    case QXValueType::Integer: return true;
    case QXValueType::Boolean: return hasBooleanValue(operandOp, operandValue);
    case QXValueType::None: break;
    }
    return false;
}
