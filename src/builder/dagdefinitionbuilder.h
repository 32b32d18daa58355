#pragma once

#include "builder/sortedmodel.h"
#include "builder/termflattener.h"
#include "solver/kernel/nodetype.h"
#include "solver/kernel/temporarydagfixedfields.h"

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

class DagFixedFields;
class ModelGraph;

// Compiles a closed model into fixed fields, in this order: sort the
// expressions, fold constant subexpressions, mark the expressions that need
// a node of their own, create the nodes (children first), add constraints
// and objectives, close. Lives for one build only.
//
// Marks: NODE_MARK means "becomes a node"; a smaller value counts the
// flattening parents (sums, products, minima, maxima) that absorb the
// expression; 0 after marking means no node.
class DagDefinitionBuilder {
public:
    static constexpr int32_t NODE_MARK = QXLimits::MAX_COUNT;

    // `expressionNodes` receives one entry per expression: its node, or
    // KernelConstants::NO_NODE.
    // The graph is released with the build's scratch.
    static void createDagDefinition(ModelGraph& model, DagFixedFields& fixed,
                                    std::vector<unsigned int>& expressionNodes);

    // --- Used by the markers and node factories ---
    const ModelGraph& getModel() const { return model; }
    unsigned int getNode(ModelExpr expr) const;
    void setNode(ModelExpr expr, unsigned int node);
    bool isConstant(ModelExpr expr) const;
    // A constant subexpression becomes the Constant node of its value,
    // except a constraint: two constraints on one node are refused, and
    // eq(2, 2) and leq(1, 2) may both be constraints.
    bool foldsToConstant(ModelExpr expr) const;
    long long getConstant(ModelExpr expr) const;
    void associateConstant(ModelExpr expr, long long value);
    int32_t getMark(ModelExpr expr) const;
    void setMark(ModelExpr expr, int32_t mark);
    // Adds 1 unless the mark is NODE_MARK.
    void incrementMark(ModelExpr expr);

    // One Constant node per value.
    unsigned int createConstant(TemporaryDagFixedFields& temporary, long long value);
    unsigned int createConstantWithExpression(TemporaryDagFixedFields& temporary,
                                              ModelExpr expr);
    // One Scalar node per (child, factor).
    unsigned int createScalar(TemporaryDagFixedFields& temporary, long long coefficient,
                              unsigned int child);
    // A new node of that type; coefficients only for the scalar types.
    unsigned int createInnerNode(TemporaryDagFixedFields& temporary, NodeType type,
                                 const std::vector<unsigned int>& childs,
                                 const std::vector<long long>& coefficients = {});
    // True for a product of constants and exactly one non-constant operand:
    // coefficient gets the constants' product (wrapping), operand the other.
    bool isScalar(ModelExpr expr, long long& coefficient,
                  ModelExpr& operand) const;
    // The node of a decision; refuses any other expression.
    unsigned int getVariable(ModelExpr expr) const;

    TermFlattener& getFlattener() { return flattener; }

private:
    DagDefinitionBuilder(ModelGraph& model, DagFixedFields& fixed,
                         std::vector<unsigned int>& expressionNodes);

    void findConstantExpressions();
    void markExpressions();
    void markLeaves();
    void markExpression(ModelExpr expr);
    void createAllNodes();
    void addConstraints();
    void addObjectives();
    void releaseScratch();

    ModelGraph& model;
    std::vector<unsigned int>& nodes;  // by expression index
    SortedModel sorted;
    TemporaryDagFixedFields temporary;
    std::vector<int32_t> marks;        // by expression index
    std::vector<long long> constants;  // by expression index, NOT_CONSTANT if none
    std::map<long long, unsigned int> constantNodes;
    std::map<std::pair<unsigned int, long long>, unsigned int> scalarNodes;
    TermFlattener flattener;
};
