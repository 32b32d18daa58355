#include "modeler/value/tnode.h"

#include "api/qxexpression.h"
#include "api/qxmodel.h"
#include "modeler/context.h"
#include "modeler/operatorfunction.h"
#include "modeler/value/tint.h"
#include "solver/kernel/wraparith.h"

const TNode tNode;
const Type* const RefTypes::T_NODE = &tNode;

Value TNode::make(QXExpression* expr) { return Value(&tNode, expr); }

namespace {

// What an operator on expressions accepts; anything else is not handled here.
bool isOperand(const Value& v) { return v.isInt() || TNode::isNode(v); }

Value build(Context* c, QXOperator op, const Value& a, const Value& b) {
    if (!isOperand(a) || !isOperand(b)) return Value();
    const Value operands[] = {a, b};
    return OperatorFunction::callNode(c, op, operands, 2);
}

Value build(Context* c, QXOperator op, const Value& a) {
    return OperatorFunction::callNode(c, op, &a, 1);
}

}  // namespace

std::string TNode::toString(Context*, const Value& v, int) const {
    QXExpression* expr = asExpression(v);
    return expr->isNamed() ? expr->getName() : "(unnamed operator)";
}

Value TNode::opp(Context* c, const Value& a) const {
    return build(c, QXOperator::Prod, a, Value(-1));
}

Value TNode::bnot(Context* c, const Value& a) const { return build(c, QXOperator::Not, a); }

Value TNode::add(Context* c, const Value& a, const Value& b) const {
    return build(c, QXOperator::Sum, a, b);
}

// a + (-1 * b). The section is checked first so that the refusal names the
// sum the user wrote, not the inner product.
Value TNode::sub(Context* c, const Value& a, const Value& b) const {
    if (!isOperand(a) || !isOperand(b)) return Value();
    OperatorFunction::checkModelSection(c, QXOperator::Sum);
    Value negated = b.isInt() ? Value(WrapArith::sub(0, b.asInt()))
                              : build(c, QXOperator::Prod, b, Value(-1));
    return build(c, QXOperator::Sum, a, negated);
}

Value TNode::mul(Context* c, const Value& a, const Value& b) const {
    return build(c, QXOperator::Prod, a, b);
}
Value TNode::div(Context* c, const Value& a, const Value& b) const {
    return build(c, QXOperator::Div, a, b);
}
Value TNode::mod(Context* c, const Value& a, const Value& b) const {
    return build(c, QXOperator::Mod, a, b);
}
Value TNode::band(Context* c, const Value& a, const Value& b) const {
    return build(c, QXOperator::And, a, b);
}
Value TNode::bor(Context* c, const Value& a, const Value& b) const {
    return build(c, QXOperator::Or, a, b);
}
Value TNode::lt(Context* c, const Value& a, const Value& b) const {
    return build(c, QXOperator::Lt, a, b);
}
Value TNode::leq(Context* c, const Value& a, const Value& b) const {
    return build(c, QXOperator::Leq, a, b);
}
Value TNode::gt(Context* c, const Value& a, const Value& b) const {
    return build(c, QXOperator::Gt, a, b);
}
Value TNode::geq(Context* c, const Value& a, const Value& b) const {
    return build(c, QXOperator::Geq, a, b);
}
Value TNode::eq(Context* c, const Value& a, const Value& b) const {
    return build(c, QXOperator::Eq, a, b);
}
Value TNode::neq(Context* c, const Value& a, const Value& b) const {
    return build(c, QXOperator::Neq, a, b);
}

Value TNode::ternary(Context* c, const Value& cond, const Value& a, const Value& b) const {
    if (!isOperand(a) || !isOperand(b)) return Value();
    const Value operands[] = {cond, a, b};
    return OperatorFunction::callNode(c, QXOperator::Iif, operands, 3);
}

Value TNode::modify(Context* c, ModifierType modifier, const Value& v) const {
    QXExpression* expr = asExpression(v);
    switch (modifier) {
    case ModifierType::Minimize:
        c->getModel()->addObjective(expr, QXObjectiveDirection::Minimize);
        break;
    case ModifierType::Maximize:
        c->getModel()->addObjective(expr, QXObjectiveDirection::Maximize);
        break;
    case ModifierType::Constraint: c->getModel()->addConstraint(expr); break;
    }
    return v;
}

Value TNode::link(Context*, const Value& v, const std::string& name) const {
    asExpression(v)->setName(name);
    return v;
}
