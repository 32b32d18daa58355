#include "builder/modelgraph.h"

void ModelGraph::reserve(std::size_t nbExpressions, std::size_t nbOperands) {
    ops.reserve(nbExpressions);
    values.reserve(nbExpressions);
    constraintFlags.reserve(nbExpressions);
    firstOperand.reserve(nbExpressions + 1);
    operands.reserve(nbOperands);
}

void ModelGraph::addExpression(QXOperator op, int64_t value, bool constraint,
                               const int32_t* first, int count) {
    ops.push_back(op);
    values.push_back(value);
    constraintFlags.push_back(constraint ? 1 : 0);
    const int32_t index = static_cast<int32_t>(ops.size()) - 1;
    for (int k = 0; k < count; ++k) ordered = ordered && first[k] < index;
    operands.insert(operands.end(), first, first + count);
    firstOperand.push_back(static_cast<uint32_t>(operands.size()));
}

void ModelGraph::addObjective(int32_t expr, uint8_t direction) {
    objectives.push_back(expr);
    directions.push_back(direction);
}
