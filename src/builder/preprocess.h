#pragma once

#include "builder/modelgraph.h"

class DagDefinitionBuilder;
class TemporaryDagFixedFields;

// Rewriting of the n-ary sums, products, minima and maxima: nested
// operators of the same kind, one-operand operators and products by
// constants are flattened (see TermFlattener), constants folded, and the
// plain or scalar form chosen.
//
// Sum: Sum (BooleanSum when every child is boolean) when every coefficient
// is 1, else ScalarSum; constants become one term on the constant 1.
// Product: the constant factors are gathered into one coefficient K;
// Product when K = 1, Scalar for one child, else ScalarProduct whose first
// child carries K; the constant 0 when K = 0.
// Min, Max: Min/Max when every coefficient is 1, else ScalarMin/ScalarMax;
// the best constant becomes one child.
// Each may also end in a Constant node when nothing but constants is left.
struct PreprocessSum {
    static void mark(ModelExpr expr, DagDefinitionBuilder& builder);
    static void createNode(TemporaryDagFixedFields& temporary, ModelExpr expr,
                           DagDefinitionBuilder& builder);
};

struct PreprocessProduct {
    static void mark(ModelExpr expr, DagDefinitionBuilder& builder);
    static void createNode(TemporaryDagFixedFields& temporary, ModelExpr expr,
                           DagDefinitionBuilder& builder);
};

struct PreprocessMin {
    static void mark(ModelExpr expr, DagDefinitionBuilder& builder);
    static void createNode(TemporaryDagFixedFields& temporary, ModelExpr expr,
                           DagDefinitionBuilder& builder);
};

struct PreprocessMax {
    static void mark(ModelExpr expr, DagDefinitionBuilder& builder);
    static void createNode(TemporaryDagFixedFields& temporary, ModelExpr expr,
                           DagDefinitionBuilder& builder);
};
