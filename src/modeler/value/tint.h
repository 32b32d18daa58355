#pragma once

#include "modeler/value.h"

// 64-bit integers, also the booleans 0 and 1. Arithmetic wraps silently.
class TInt : public Type {
public:
    constexpr TInt() : Type("int", Kind::Int, false) {}
    std::string toString(Context*, const Value& v, int) const override;
    Value opp(Context*, const Value& a) const override;
    Value bnot(Context*, const Value& a) const override;
    Value add(Context*, const Value& a, const Value& b) const override;
    Value sub(Context*, const Value& a, const Value& b) const override;
    Value mul(Context*, const Value& a, const Value& b) const override;
    Value div(Context*, const Value& a, const Value& b) const override;
    Value mod(Context*, const Value& a, const Value& b) const override;
    Value band(Context*, const Value& a, const Value& b) const override;
    Value bor(Context*, const Value& a, const Value& b) const override;
    Value lt(Context*, const Value& a, const Value& b) const override;
    Value leq(Context*, const Value& a, const Value& b) const override;
    Value gt(Context*, const Value& a, const Value& b) const override;
    Value geq(Context*, const Value& a, const Value& b) const override;
    Value eq(Context*, const Value& a, const Value& b) const override;
    Value neq(Context*, const Value& a, const Value& b) const override;

    // Shared by the interpreter's inline integer paths; refuse a zero
    // divisor with the language's error.
    static qxint checkedDiv(qxint a, qxint b);
    static qxint checkedMod(qxint a, qxint b);
};

// The integer type instance.
extern const TInt tInt;
