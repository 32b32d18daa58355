#include "builder/dagdefinitionbuilder.h"

#include "api/kernelexception.h"
#include "builder/dagdefinitionbuildertools.h"
#include "builder/expressiontools.h"
#include "solver/kernel/dagfixedfields.h"
#include "solver/kernel/kernelconstants.h"

#include <string>

namespace {
const char* const UNIT = "src/builder/dagdefinitionbuilder";
}

void DagDefinitionBuilder::createDagDefinition(ModelGraph& model, DagFixedFields& fixed,
                                               std::vector<unsigned int>& expressionNodes) {
    DagDefinitionBuilder builder(model, fixed, expressionNodes);
}

DagDefinitionBuilder::DagDefinitionBuilder(ModelGraph& model_, DagFixedFields& fixed,
                                           std::vector<unsigned int>& expressionNodes)
    : model(model_), nodes(expressionNodes), sorted(model_) {
    findConstantExpressions();
    markExpressions();
    createAllNodes();
    addConstraints();
    addObjectives();
    releaseScratch();
    temporary.close();
    fixed.init(temporary);
}

// Operands come first in the sorted order, so one pass folds every constant
// subexpression. A folded value equal to NOT_CONSTANT counts as not constant.
void DagDefinitionBuilder::findConstantExpressions() {
    constants.assign(model.getNbExpressions(), KernelConstants::NOT_CONSTANT);
    ExpressionTools::Values values;
    for (int32_t index : sorted.expressions()) {
        const ModelExpr expr = model.getExpression(index);
        const QXOperator op = expr.getOperator();
        if (ExpressionTools::isDecision(op)) continue;
        if (op == QXOperator::Const) {
            associateConstant(expr, expr.getValue());
            continue;
        }
        values.clear();
        bool allConstant = true;
        for (int i = 0; i < expr.getNbOperands() && allConstant; ++i) {
            allConstant = isConstant(expr.getOperand(i));
            if (allConstant) values.push_back(getConstant(expr.getOperand(i)));
        }
        if (allConstant) associateConstant(expr, ExpressionTools::evaluate(expr, values));
    }
}

void DagDefinitionBuilder::markExpressions() {
    const int count = model.getNbExpressions();
    marks.assign(count, 0);
    markLeaves();
    // Users first: an expression is visited once every expression using it
    // has been, so its mark counts all its absorbing parents. Expressions
    // made after their operands (as the language makes them) are in that
    // order from the last down, read in place; otherwise the order is found
    // by counting users.
    if (model.operandsPrecedeUsers()) {
        for (int i = count - 1; i >= 0; --i) markExpression(model.getExpression(i));
        return;
    }
    std::vector<unsigned int> users(count, 0);
    for (int i = 0; i < count; ++i) {
        ModelExpr expr = model.getExpression(i);
        for (int k = 0; k < expr.getNbOperands(); ++k) ++users[expr.getOperand(k).getIndex()];
    }
    std::vector<ModelExpr> queue;
    queue.reserve(count);
    for (int i = 0; i < count; ++i)
        if (users[i] == 0) queue.push_back(model.getExpression(i));
    for (std::size_t head = 0; head < queue.size(); ++head) {
        ModelExpr expr = queue[head];
        markExpression(expr);
        for (int k = 0; k < expr.getNbOperands(); ++k) {
            ModelExpr operand = expr.getOperand(k);
            if (--users[operand.getIndex()] == 0) queue.push_back(operand);
        }
    }
}

void DagDefinitionBuilder::markLeaves() {
    for (int i = 0; i < model.getNbDecisions(); ++i) setMark(model.getDecision(i), NODE_MARK);
    for (int i = 0; i < model.getNbConstraints(); ++i) setMark(model.getConstraint(i), NODE_MARK);
    for (int i = 0; i < model.getNbObjectives(); ++i) setMark(model.getObjective(i), NODE_MARK);
}

void DagDefinitionBuilder::markExpression(ModelExpr expr) {
    if (getMark(expr) < 2) {
        setMark(expr, 0);
        return;
    }
    setMark(expr, NODE_MARK);
    // Becomes a Constant node: its operands need no node for it.
    if (foldsToConstant(expr)) return;
    const QXOperator op = expr.getOperator();
    if (!isValidOperator(op))
        throw KernelException("Operator " + std::to_string(static_cast<unsigned>(op)) + " unknown.",
                              QX_HERE);
    DagDefinitionBuilderTools::callMarker(op, expr, *this);
}

void DagDefinitionBuilder::createAllNodes() {
    nodes.assign(model.getNbExpressions(), KernelConstants::NO_NODE);
    for (int32_t index : sorted.expressions())
        DagDefinitionBuilderTools::createNode(temporary, model.getExpression(index), *this);
}

void DagDefinitionBuilder::addConstraints() {
    for (int i = 0; i < model.getNbConstraints(); ++i)
        temporary.addConstraint(getNode(model.getConstraint(i)));
}

// Directions other than 0 and 1 can only come from a cast; such an
// objective is left out.
void DagDefinitionBuilder::addObjectives() {
    for (int i = 0; i < model.getNbObjectives(); ++i) {
        const uint8_t direction = model.getObjectiveDirection(i);
        if (direction == Minimize)
            temporary.addObjective(getNode(model.getObjective(i)), Minimize);
        else if (direction == Maximize)
            temporary.addObjective(getNode(model.getObjective(i)), Maximize);
    }
}

// The closing and the fixed fields are the peak of the build: what only
// the node creation needed is freed first (a third of the memory of a build
// over a million expressions).
void DagDefinitionBuilder::releaseScratch() {
    sorted.release();
    model.release();
    std::vector<int32_t>().swap(marks);
    std::vector<long long>().swap(constants);
    constantNodes.clear();
    scalarNodes.clear();
    flattener = TermFlattener();
}

unsigned int DagDefinitionBuilder::getNode(ModelExpr expr) const {
    return nodes[expr.getIndex()];
}

void DagDefinitionBuilder::setNode(ModelExpr expr, unsigned int node) {
    nodes[expr.getIndex()] = node;
}

bool DagDefinitionBuilder::isConstant(ModelExpr expr) const {
    return constants[expr.getIndex()] != KernelConstants::NOT_CONSTANT;
}

bool DagDefinitionBuilder::foldsToConstant(ModelExpr expr) const {
    return isConstant(expr) && !expr.isConstraint();
}

long long DagDefinitionBuilder::getConstant(ModelExpr expr) const {
    return constants[expr.getIndex()];
}

void DagDefinitionBuilder::associateConstant(ModelExpr expr, long long value) {
    constants[expr.getIndex()] = value;
}

int32_t DagDefinitionBuilder::getMark(ModelExpr expr) const { return marks[expr.getIndex()]; }

void DagDefinitionBuilder::setMark(ModelExpr expr, int32_t mark) {
    marks[expr.getIndex()] = mark;
}

void DagDefinitionBuilder::incrementMark(ModelExpr expr) {
    int32_t& mark = marks[expr.getIndex()];
    if (mark != NODE_MARK) ++mark;
}

unsigned int DagDefinitionBuilder::createConstant(TemporaryDagFixedFields& t, long long value) {
    auto found = constantNodes.find(value);
    if (found != constantNodes.end()) return found->second;
    const unsigned int node = t.typeSize();
    t.setNodeType(node, Constant);
    t.setNodeConstant(node, value);
    constantNodes.emplace(value, node);
    return node;
}

unsigned int DagDefinitionBuilder::createConstantWithExpression(TemporaryDagFixedFields& t,
                                                                ModelExpr expr) {
    return createConstant(t, getConstant(expr));
}

unsigned int DagDefinitionBuilder::createScalar(TemporaryDagFixedFields& t, long long coefficient,
                                                unsigned int child) {
    auto found = scalarNodes.find({child, coefficient});
    if (found != scalarNodes.end()) return found->second;
    const unsigned int node = createInnerNode(t, Scalar, {child});
    t.setNodeScalar(node, coefficient);
    scalarNodes.emplace(std::make_pair(child, coefficient), node);
    return node;
}

unsigned int DagDefinitionBuilder::createInnerNode(TemporaryDagFixedFields& t, NodeType type,
                                                   const std::vector<unsigned int>& childs,
                                                   const std::vector<long long>& coefficients) {
    const unsigned int node = t.typeSize();
    t.setNodeType(node, type);
    if (!childs.empty()) t.setNodeChilds(node, childs);
    if (!coefficients.empty()) t.setNodeCoefficients(node, coefficients);
    return node;
}

bool DagDefinitionBuilder::isScalar(ModelExpr expr, long long& coefficient,
                                    ModelExpr& operand) const {
    if (expr.getOperator() != QXOperator::Prod) return false;
    long long k = 1;
    ModelExpr found;
    for (int i = 0; i < expr.getNbOperands(); ++i) {
        ModelExpr e = expr.getOperand(i);
        if (isConstant(e)) {
            k = WrapArith::mul(k, getConstant(e));
        } else {
            if (!found.isNull()) return false;
            found = e;
        }
    }
    if (found.isNull()) return false;
    coefficient = k;
    operand = found;
    return true;
}

unsigned int DagDefinitionBuilder::getVariable(ModelExpr expr) const {
    if (!ExpressionTools::isDecision(expr.getOperator()))
        throw KernelException("This operator is not a variable", QX_HERE);
    return getNode(expr);
}
