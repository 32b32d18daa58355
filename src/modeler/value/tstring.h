#pragma once

#include "modeler/value.h"

// Strings: concatenation with anything (the other side's text form) and
// byte-wise comparison between two strings.
class TString : public Type {
public:
    constexpr TString() : Type("string", Kind::String, true) {}
    std::string toString(Context*, const Value& v, int) const override { return v.asString(); }
    Value add(Context*, const Value& a, const Value& b) const override;
    Value lt(Context*, const Value& a, const Value& b) const override;
    Value leq(Context*, const Value& a, const Value& b) const override;
    Value gt(Context*, const Value& a, const Value& b) const override;
    Value geq(Context*, const Value& a, const Value& b) const override;
    Value eq(Context*, const Value& a, const Value& b) const override;
    Value neq(Context*, const Value& a, const Value& b) const override;
};
