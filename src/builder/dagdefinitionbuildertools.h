#pragma once

#include "api/qxoperator.h"
#include "builder/modelgraph.h"
#include "solver/kernel/nodetype.h"

class DagDefinitionBuilder;
class TemporaryDagFixedFields;

// The operator-to-node table of the build: which operands an operator needs
// as nodes (markers) and which node it becomes (node factories). Coupled
// with QXOperator's order: both switches list every operator.
namespace DagDefinitionBuilderTools {
void callMarker(QXOperator op, ModelExpr expr, DagDefinitionBuilder& builder);
// Every operand becomes a node.
void defaultMarker(ModelExpr expr, DagDefinitionBuilder& builder);
// The marker of the flattened operators: the one operand of a unary one
// becomes a node; otherwise the terms become nodes and every nested operator
// seen through counts one more absorbing parent.
void flatteningMarker(ModelExpr expr, DagDefinitionBuilder& builder);

void createNode(TemporaryDagFixedFields& temporary, ModelExpr expr,
                DagDefinitionBuilder& builder);
void callCreateNode(QXOperator op, TemporaryDagFixedFields& temporary, ModelExpr expr,
                    DagDefinitionBuilder& builder);
// A node of type T over the operands' nodes, in operand order.
template <NodeType T>
void defaultCreateNode(TemporaryDagFixedFields& temporary, ModelExpr expr,
                       DagDefinitionBuilder& builder);
// And, Or, Xor: a single operand is shared, not wrapped.
template <NodeType T>
void collapseCreateNode(TemporaryDagFixedFields& temporary, ModelExpr expr,
                        DagDefinitionBuilder& builder);
[[noreturn]] void noCreateNode(TemporaryDagFixedFields& temporary, ModelExpr expr,
                               DagDefinitionBuilder& builder);
}  // namespace DagDefinitionBuilderTools
