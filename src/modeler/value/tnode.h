#pragma once

#include "modeler/value.h"

class QXExpression;

// Model expressions. Their operators build new expressions of the model
// (section "model" only), mixing freely with integers, which become the
// model's pooled constants. Any other operand is left to the other side's
// type, so an expression and a string concatenate their text forms.
class TNode : public Type {
public:
    // Not counted: the model owns its expressions, and a value only names
    // one. Copying a value then touches no memory of the expression's,
    // which matters when a model of millions of expressions is built.
    constexpr TNode() : Type("qxexpression", Kind::Node, false) {}
    // The expression's name, or "(unnamed operator)".
    std::string toString(Context* c, const Value& v, int depth) const override;
    Value opp(Context* c, const Value& a) const override;
    Value bnot(Context* c, const Value& a) const override;
    Value add(Context* c, const Value& a, const Value& b) const override;
    Value sub(Context* c, const Value& a, const Value& b) const override;
    Value mul(Context* c, const Value& a, const Value& b) const override;
    Value div(Context* c, const Value& a, const Value& b) const override;
    Value mod(Context* c, const Value& a, const Value& b) const override;
    Value band(Context* c, const Value& a, const Value& b) const override;
    Value bor(Context* c, const Value& a, const Value& b) const override;
    Value lt(Context* c, const Value& a, const Value& b) const override;
    Value leq(Context* c, const Value& a, const Value& b) const override;
    Value gt(Context* c, const Value& a, const Value& b) const override;
    Value geq(Context* c, const Value& a, const Value& b) const override;
    Value eq(Context* c, const Value& a, const Value& b) const override;
    Value neq(Context* c, const Value& a, const Value& b) const override;
    Value ternary(Context* c, const Value& cond, const Value& a, const Value& b) const override;
    // minimize / maximize declare an objective, constraint a constraint.
    Value modify(Context* c, ModifierType modifier, const Value& v) const override;
    // "name <- e" names the expression.
    Value link(Context* c, const Value& v, const std::string& name) const override;

    static bool isNode(const Value& v) { return v.getType() == RefTypes::T_NODE; }
    // v must be an expression value.
    static QXExpression* asExpression(const Value& v) { return static_cast<QXExpression*>(v.getHandle()); }
    static Value make(QXExpression* expr);
};

extern const TNode tNode;
