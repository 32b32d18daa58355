#include "modeler/value/tint.h"

#include "modeler/modelerexception.h"
#include "solver/kernel/wraparith.h"

#include <limits>

namespace {
const char* const UNIT = "src/modeler/value/tint";
bool bothInt(const Value& a, const Value& b) { return a.isInt() && b.isInt(); }
}  // namespace

std::string TInt::toString(Context*, const Value& v, int) const {
    return std::to_string(v.asInt());
}

Value TInt::opp(Context*, const Value& a) const { return Value(WrapArith::sub(0, a.asInt())); }

Value TInt::bnot(Context*, const Value& a) const { return Value(!a.castToBool()); }

qxint TInt::checkedDiv(qxint a, qxint b) {
    if (b == 0) throw ModelerException("Division by zero.", QX_WHERE(UNIT, "div"));
    return WrapArith::divide(a, b);
}

qxint TInt::checkedMod(qxint a, qxint b) {
    if (b == 0) throw ModelerException("Division by zero.", QX_WHERE(UNIT, "mod"));
    return WrapArith::modulo(a, b);
}

Value TInt::add(Context*, const Value& a, const Value& b) const {
    return bothInt(a, b) ? Value(WrapArith::add(a.asInt(), b.asInt())) : Value();
}
Value TInt::sub(Context*, const Value& a, const Value& b) const {
    return bothInt(a, b) ? Value(WrapArith::sub(a.asInt(), b.asInt())) : Value();
}
Value TInt::mul(Context*, const Value& a, const Value& b) const {
    return bothInt(a, b) ? Value(WrapArith::mul(a.asInt(), b.asInt())) : Value();
}
Value TInt::div(Context*, const Value& a, const Value& b) const {
    return bothInt(a, b) ? Value(checkedDiv(a.asInt(), b.asInt())) : Value();
}
Value TInt::mod(Context*, const Value& a, const Value& b) const {
    return bothInt(a, b) ? Value(checkedMod(a.asInt(), b.asInt())) : Value();
}
Value TInt::band(Context*, const Value& a, const Value& b) const {
    if (!bothInt(a, b)) return Value();
    bool left = a.castToBool();
    bool right = b.castToBool();
    return Value(left && right);
}
Value TInt::bor(Context*, const Value& a, const Value& b) const {
    if (!bothInt(a, b)) return Value();
    bool left = a.castToBool();
    bool right = b.castToBool();
    return Value(left || right);
}
Value TInt::lt(Context*, const Value& a, const Value& b) const {
    return bothInt(a, b) ? Value(a.asInt() < b.asInt()) : Value();
}
Value TInt::leq(Context*, const Value& a, const Value& b) const {
    return bothInt(a, b) ? Value(a.asInt() <= b.asInt()) : Value();
}
Value TInt::gt(Context*, const Value& a, const Value& b) const {
    return bothInt(a, b) ? Value(a.asInt() > b.asInt()) : Value();
}
Value TInt::geq(Context*, const Value& a, const Value& b) const {
    return bothInt(a, b) ? Value(a.asInt() >= b.asInt()) : Value();
}
Value TInt::eq(Context*, const Value& a, const Value& b) const {
    return bothInt(a, b) ? Value(a.asInt() == b.asInt()) : Value();
}
Value TInt::neq(Context*, const Value& a, const Value& b) const {
    return bothInt(a, b) ? Value(a.asInt() != b.asInt()) : Value();
}
