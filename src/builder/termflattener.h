#pragma once

#include "api/qxoperator.h"
#include "builder/modelgraph.h"

#include <cstdint>
#include <set>
#include <utility>
#include <vector>

class DagDefinitionBuilder;

// The terms of an n-ary sum, product, minimum or maximum once nested
// operators of the same kind, one-operand n-ary operators and products by
// constants are seen through, and constant operands folded.
struct FlatTerms {
    // Expression and its weight: a coefficient for sums, minima and maxima,
    // a multiplicity for products. Each (expression, weight) once.
    std::vector<std::pair<ModelExpr, long long>> terms;
    // Nested operators of the same kind that were seen through, each once.
    std::vector<ModelExpr> absorbed;
    // Folded constants: their weighted sum, their product, or the best of
    // them for minima and maxima (only when hasConstant).
    long long constant = 0;
    bool hasConstant = false;
};

// Walks the operand graph under one n-ary expression with explicit work
// lists. Sums and products are walked as a graph, not path by path: a term
// reached along many paths (x + x nested sixty times) is visited once and
// its coefficient is the sum over the paths, so the work stays linear in the
// expressions under the root.
//
// `marking`: the marking pass descends into every nested operator of the
// same kind; the node creation pass stops at those that became nodes of
// their own. A nested product is seen through only when it is reached once
// (a product reached twice is a power, kept as a node of its own); a nested
// minimum or maximum only with the coefficient 1.
class TermFlattener {
public:
    void flatten(ModelExpr root, const DagDefinitionBuilder& builder, bool marking,
                 FlatTerms& out);

private:
    // What the walk does with one expression.
    enum Role : uint8_t { ConstantRole, ThroughRole, NestedRole, TermRole };
    Role roleOf(ModelExpr expr, QXOperator op, const DagDefinitionBuilder& builder,
                bool marking, long long& factor, ModelExpr& single) const;

    void flattenLinear(ModelExpr root, const DagDefinitionBuilder& builder,
                       bool marking, FlatTerms& out);
    void flattenExtremum(ModelExpr root, const DagDefinitionBuilder& builder,
                         bool marking, FlatTerms& out);
    void ensureSize(std::size_t count);

    // Scratch by expression index, valid where stamp == the walk's stamp:
    // reused from one root to the next without clearing. One record per
    // expression, so that a visit to an expression far from the last one
    // (the columns of a board) costs one cache line, not one per field.
    struct Scratch {
        long long weight;
        long long factor;  // of ThroughRole expressions
        int32_t single;    // the operand they stand for
        uint32_t stamp;
        uint8_t role;
        uint8_t reached;
    };
    std::vector<Scratch> scratch;
    uint32_t stamp = 0;
    std::vector<ModelExpr> order;
    struct Frame {
        ModelExpr expr;
        int next;
    };
    std::vector<Frame> stack;
    std::vector<std::pair<ModelExpr, long long>> pending;
    std::set<std::pair<int, long long>> seen;
};
