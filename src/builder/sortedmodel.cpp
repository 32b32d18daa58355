#include "builder/sortedmodel.h"


SortedModel::SortedModel(const ModelGraph& model_) : model(model_) {
    const int count = model.getNbExpressions();
    sorted.reserve(count);
    added.assign(count, 0);
    for (int i = 0; i < count; ++i) addExpression(model.getExpression(i));
}

void SortedModel::addExpression(ModelExpr root) {
    if (added[root.getIndex()]) return;
    // Marked when pushed, so an operand shared by two frames is walked once.
    added[root.getIndex()] = 1;
    stack.push_back({root, 0});
    while (!stack.empty()) {
        Frame& top = stack.back();
        const int nbOperands = top.expr.getNbOperands();
        while (top.next < nbOperands && added[top.expr.getOperand(top.next).getIndex()])
            ++top.next;
        if (top.next < nbOperands) {
            ModelExpr operand = top.expr.getOperand(top.next);
            added[operand.getIndex()] = 1;
            stack.push_back({operand, 0});
            continue;
        }
        sorted.push_back(top.expr.getIndex());
        stack.pop_back();
    }
}

void SortedModel::release() {
    std::vector<int32_t>().swap(sorted);
    std::vector<unsigned char>().swap(added);
    std::vector<Frame>().swap(stack);
}
