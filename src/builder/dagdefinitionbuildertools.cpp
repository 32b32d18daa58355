#include "builder/dagdefinitionbuildertools.h"

#include "api/kernelexception.h"
#include "builder/dagdefinitionbuilder.h"
#include "builder/expressiontools.h"
#include "builder/preprocess.h"

#include <string>

namespace {
const char* const UNIT = "src/builder/dagdefinitionbuildertools";

std::vector<unsigned int> operandNodes(ModelExpr expr, const DagDefinitionBuilder& builder) {
    std::vector<unsigned int> childs(expr.getNbOperands());
    for (int i = 0; i < expr.getNbOperands(); ++i) childs[i] = builder.getNode(expr.getOperand(i));
    return childs;
}
}  // namespace

namespace DagDefinitionBuilderTools {

void callMarker(QXOperator op, ModelExpr expr, DagDefinitionBuilder& builder) {
    switch (op) {
    case QXOperator::Max: PreprocessMax::mark(expr, builder); break;
    case QXOperator::Min: PreprocessMin::mark(expr, builder); break;
    case QXOperator::Prod: PreprocessProduct::mark(expr, builder); break;
    case QXOperator::Sum: PreprocessSum::mark(expr, builder); break;
    default: defaultMarker(expr, builder); break;
    }
}

void defaultMarker(ModelExpr expr, DagDefinitionBuilder& builder) {
    for (int i = 0; i < expr.getNbOperands(); ++i)
        builder.setMark(expr.getOperand(i), DagDefinitionBuilder::NODE_MARK);
}

void flatteningMarker(ModelExpr expr, DagDefinitionBuilder& builder) {
    if (ExpressionTools::isUnary(expr)) {
        builder.setMark(expr.getOperand(0), DagDefinitionBuilder::NODE_MARK);
        return;
    }
    FlatTerms flat;
    builder.getFlattener().flatten(expr, builder, true, flat);
    for (ModelExpr absorbed : flat.absorbed) builder.incrementMark(absorbed);
    for (const auto& term : flat.terms) builder.setMark(term.first, DagDefinitionBuilder::NODE_MARK);
}

void createNode(TemporaryDagFixedFields& temporary, ModelExpr expr,
                DagDefinitionBuilder& builder) {
    if (builder.getMark(expr) != DagDefinitionBuilder::NODE_MARK) return;
    const QXOperator op = expr.getOperator();
    if (op == QXOperator::Const) {
        builder.setNode(expr, builder.createConstant(temporary, expr.getValue()));
        return;
    }
    // A constant subexpression is its value: abs(-5) is the constant 5, as
    // the language itself computes it when it reads the model back.
    if (builder.foldsToConstant(expr)) {
        builder.setNode(expr, builder.createConstantWithExpression(temporary, expr));
        return;
    }
    if (!isValidOperator(op))
        throw KernelException("Operator " + std::to_string(static_cast<unsigned>(op)) + " unknown.",
                              QX_HERE);
    callCreateNode(op, temporary, expr, builder);
}

template <NodeType T>
void defaultCreateNode(TemporaryDagFixedFields& temporary, ModelExpr expr,
                       DagDefinitionBuilder& builder) {
    builder.setNode(expr, builder.createInnerNode(temporary, T, operandNodes(expr, builder)));
}

template <NodeType T>
void collapseCreateNode(TemporaryDagFixedFields& temporary, ModelExpr expr,
                        DagDefinitionBuilder& builder) {
    if (ExpressionTools::isUnary(expr))
        builder.setNode(expr, builder.getNode(expr.getOperand(0)));
    else
        defaultCreateNode<T>(temporary, expr, builder);
}

void noCreateNode(TemporaryDagFixedFields&, ModelExpr, DagDefinitionBuilder&) {
    throw KernelException("Cannot create this operator with a factory. Use dedicated functions instead",
                          QX_HERE);
}

void callCreateNode(QXOperator op, TemporaryDagFixedFields& t, ModelExpr e,
                    DagDefinitionBuilder& b) {
    switch (op) {
    case QXOperator::Abs: defaultCreateNode<Abs>(t, e, b); break;
    case QXOperator::And: collapseCreateNode<And>(t, e, b); break;
    case QXOperator::Bool: defaultCreateNode<Boolean>(t, e, b); break;
    case QXOperator::Const: noCreateNode(t, e, b);
    case QXOperator::Dist: defaultCreateNode<Distance>(t, e, b); break;
    case QXOperator::Div: defaultCreateNode<Divide>(t, e, b); break;
    case QXOperator::Eq: defaultCreateNode<Eq>(t, e, b); break;
    case QXOperator::Geq: defaultCreateNode<Geq>(t, e, b); break;
    case QXOperator::Gt: defaultCreateNode<Gt>(t, e, b); break;
    case QXOperator::Iif: defaultCreateNode<If>(t, e, b); break;
    case QXOperator::Leq: defaultCreateNode<Leq>(t, e, b); break;
    case QXOperator::Lt: defaultCreateNode<Lt>(t, e, b); break;
    case QXOperator::Max: PreprocessMax::createNode(t, e, b); break;
    case QXOperator::Min: PreprocessMin::createNode(t, e, b); break;
    case QXOperator::Mod: defaultCreateNode<Modulo>(t, e, b); break;
    case QXOperator::Neq: defaultCreateNode<Neq>(t, e, b); break;
    case QXOperator::Not: defaultCreateNode<Not>(t, e, b); break;
    case QXOperator::Or: collapseCreateNode<Or>(t, e, b); break;
    case QXOperator::Prod: PreprocessProduct::createNode(t, e, b); break;
    case QXOperator::Sqrt: defaultCreateNode<Sqrt>(t, e, b); break;
    case QXOperator::Sum: PreprocessSum::createNode(t, e, b); break;
    case QXOperator::Xor: collapseCreateNode<Xor>(t, e, b); break;
    }
}

}  // namespace DagDefinitionBuilderTools
