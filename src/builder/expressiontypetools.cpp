#include "builder/expressiontypetools.h"

#include "api/qxexpression.h"

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
    if (op == QXOperator::Iif && position == 0) return QXValueType::Boolean;
    return getOperatorInfo(op).operandType;
}

bool ExpressionTypeTools::hasBooleanValue(const QXExpression* expr) {
    if (expr->op == QXOperator::Const) return expr->value == 0 || expr->value == 1;
    return getValueType(expr->op) == QXValueType::Boolean;
}

bool ExpressionTypeTools::isOperandValueTypeValid(QXOperator op, const QXExpression* operand,
                                                  int position) {
    switch (getOperandType(op, position)) {
    case QXValueType::Integer: return true;
    case QXValueType::Boolean: return hasBooleanValue(operand);
    case QXValueType::None: break;
    }
    return false;
}
