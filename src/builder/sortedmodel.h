#pragma once

#include "builder/modelgraph.h"

#include <vector>

class ModelGraph;

// The expressions of a model in depth-first post-order: for each expression
// in index order, its operands (in operand order) and then itself, each
// expression once. Every operand therefore precedes its users, which is the
// order in which constants are folded, nodes are created and the model is
// written. The walk keeps its own stack: a chain of nested operators as deep
// as the model costs heap, not call stack.
class SortedModel {
public:
    explicit SortedModel(const ModelGraph& model);

    // Expression indexes.
    const std::vector<int32_t>& expressions() const { return sorted; }
    bool isAdded(int index) const { return added[index] != 0; }
    // Frees the order once its user is done with it.
    void release();

private:
    void addExpression(ModelExpr expr);

    const ModelGraph& model;
    std::vector<int32_t> sorted;
    std::vector<unsigned char> added;  // by expression index
    struct Frame {
        ModelExpr expr;
        int next;  // next operand to look at
    };
    std::vector<Frame> stack;
};
