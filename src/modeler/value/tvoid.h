#pragma once

#include "modeler/value.h"

// nil: equal to nil only; every other operator is the dispatch error.
class TVoid : public Type {
public:
    constexpr TVoid() : Type("nil", Kind::Void, false) {}
    std::string toString(Context*, const Value&, int) const override { return "nil"; }
    Value eq(Context*, const Value& a, const Value& b) const override {
        return Value(a.isVoid() && b.isVoid());
    }
    Value neq(Context*, const Value& a, const Value& b) const override {
        return Value(!(a.isVoid() && b.isVoid()));
    }
};
