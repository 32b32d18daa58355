#include "modeler/value/tstring.h"

namespace {
bool bothString(const Value& a, const Value& b) { return a.isString() && b.isString(); }
}  // namespace

Value TString::add(Context* c, const Value& a, const Value& b) const {
    if (!a.isString() && !b.isString()) return Value();
    return Value(a.toString(c) + b.toString(c));
}
Value TString::lt(Context*, const Value& a, const Value& b) const {
    return bothString(a, b) ? Value(a.asString() < b.asString()) : Value();
}
Value TString::leq(Context*, const Value& a, const Value& b) const {
    return bothString(a, b) ? Value(a.asString() <= b.asString()) : Value();
}
Value TString::gt(Context*, const Value& a, const Value& b) const {
    return bothString(a, b) ? Value(a.asString() > b.asString()) : Value();
}
Value TString::geq(Context*, const Value& a, const Value& b) const {
    return bothString(a, b) ? Value(a.asString() >= b.asString()) : Value();
}
Value TString::eq(Context*, const Value& a, const Value& b) const {
    return bothString(a, b) ? Value(a.asString() == b.asString()) : Value();
}
Value TString::neq(Context*, const Value& a, const Value& b) const {
    return bothString(a, b) ? Value(a.asString() != b.asString()) : Value();
}
