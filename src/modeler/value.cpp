#include "modeler/value.h"

#include "modeler/modelerexception.h"
#include "modeler/value/tfile.h"
#include "modeler/value/tint.h"
#include "modeler/value/tmap.h"
#include "modeler/value/tstring.h"
#include "modeler/value/tvoid.h"
#include "modeler/value/vstring.h"

#include <vector>

namespace {
const char* const UNIT = "src/modeler/value";

const TVoid tVoid;
const TString tString;
const TMap tMap;
const TFile tFile;

// References whose count reached zero while another one was being deleted.
thread_local std::vector<Reference*> pendingRelease;
thread_local bool releasing = false;
}  // namespace

const TInt tInt;

const Type* const RefTypes::T_VOID = &tVoid;
const Type* const RefTypes::T_INT = &tInt;
const Type* const RefTypes::T_STRING = &tString;
const Type* const RefTypes::T_MAP = &tMap;
const Type* const RefTypes::T_FILE = &tFile;

void Reference::release(Reference* ref) {
    if (releasing) {
        pendingRelease.push_back(ref);
        return;
    }
    releasing = true;
    delete ref;
    while (!pendingRelease.empty()) {
        Reference* next = pendingRelease.back();
        pendingRelease.pop_back();
        delete next;
    }
    releasing = false;
}

// ---- Type: the base handles nothing --------------------------------------

std::string Type::toString(Context*, const Value&, int) const { return getName(); }
Value Type::opp(Context*, const Value&) const { return Value(); }
Value Type::bnot(Context*, const Value&) const { return Value(); }
Value Type::add(Context*, const Value&, const Value&) const { return Value(); }
Value Type::sub(Context*, const Value&, const Value&) const { return Value(); }
Value Type::mul(Context*, const Value&, const Value&) const { return Value(); }
Value Type::div(Context*, const Value&, const Value&) const { return Value(); }
Value Type::mod(Context*, const Value&, const Value&) const { return Value(); }
Value Type::band(Context*, const Value&, const Value&) const { return Value(); }
Value Type::bor(Context*, const Value&, const Value&) const { return Value(); }
Value Type::lt(Context*, const Value&, const Value&) const { return Value(); }
Value Type::leq(Context*, const Value&, const Value&) const { return Value(); }
Value Type::gt(Context*, const Value&, const Value&) const { return Value(); }
Value Type::geq(Context*, const Value&, const Value&) const { return Value(); }
Value Type::eq(Context*, const Value&, const Value&) const { return Value(); }
Value Type::neq(Context*, const Value&, const Value&) const { return Value(); }
Value Type::ternary(Context*, const Value&, const Value&, const Value&) const { return Value(); }
Value Type::index(Context*, const Value&, const Value&) const { return Value(); }
Value Type::modify(Context*, ModifierType, const Value&) const {
    throw ModelerException("Modifier type not supported", QX_HERE);
}
Value Type::link(Context*, const Value& v, const std::string&) const { return v; }

// ---- Value -----------------------------------------------------------------

void Value::release(Reference* ref) { ref->unreference(); }

Value::Value(const std::string& s) : type(RefTypes::T_STRING) {
    payload.ref = new VString(s);
    payload.ref->reference();
}

Value::Value(const char* s) : Value(std::string(s)) {}

Value::Value(Reference* ref) {
    if (ref) {
        type = ref->getType();
        payload.ref = ref;
        ref->reference();
    } else {
        type = RefTypes::T_VOID;
        payload.i = 0;
    }
}

const std::string& Value::asString() const {
    return static_cast<const VString*>(payload.ref)->get();
}

void throwInvalid(const char* symbol, const Value& a, const Value& b) {
    throw ModelerException(std::string("Cannot apply '") + symbol + "' operator between types '" +
                               a.getType()->getName() + "' and '" + b.getType()->getName() +
                               "'.", QX_HERE);
}

void throwInvalidUnary(const char* symbol, const Value& a) {
    throw ModelerException(std::string("Cannot apply '") + symbol + "' operator on type '" +
                               a.getType()->getName() + "'.", QX_WHERE(UNIT, "throwInvalid"));
}

void Value::checkType(const Type* t) const {
    if (type != t)
        throw ModelerException("Cannot cast '" + type->getName() + "' to '" + t->getName() + "'.",
                               QX_HERE);
}

void Value::checkKey() const {
    if (!isInt() && !isString())
        throw ModelerException("Only types 'string' and 'int' are allowed for keys. Type provided : '" +
                type->getName() + "'.", QX_HERE);
}

qxint Value::castToInt() const {
    checkType(RefTypes::T_INT);
    return payload.i;
}

const std::string& Value::castToString() const {
    checkType(RefTypes::T_STRING);
    return asString();
}

bool Value::castToBool() const {
    if (isBool()) return payload.i == 1;
    throw ModelerException("Cannot cast '" + type->getName() + "' to 'boolean'.", QX_HERE);
}

// Left type first, then the right type, then the dispatch error.
#define QX_BINARY(op, symbol)                                 \
    Value Value::op(Context* c, const Value& b) const {       \
        Value r = type->op(c, *this, b);                      \
        if (r.isVoid()) r = b.type->op(c, *this, b);          \
        if (r.isVoid()) throwInvalid(symbol, *this, b);       \
        return r;                                             \
    }
QX_BINARY(add, "+")
QX_BINARY(sub, "-")
QX_BINARY(mul, "*")
QX_BINARY(div, "/")
QX_BINARY(mod, "%")
QX_BINARY(band, "&&")
QX_BINARY(bor, "||")
QX_BINARY(lt, "<")
QX_BINARY(leq, "<=")
QX_BINARY(gt, ">")
QX_BINARY(geq, ">=")
QX_BINARY(eq, "==")
QX_BINARY(neq, "!=")
#undef QX_BINARY

Value Value::index(Context* c, const Value& key) const {
    if (!type->indexable()) throwInvalidUnary("[]", *this);
    return type->index(c, *this, key);
}

Value Value::ternary(Context* c, const Value& a, const Value& b) const {
    if (isInt()) return castToBool() ? a : b;
    Value r = type->ternary(c, *this, a, b);
    if (r.isVoid()) castToBool();  // raises the boolean cast message
    return r;
}

Value Value::opp(Context* c) const {
    Value r = type->opp(c, *this);
    if (r.isVoid()) throwInvalidUnary("-", *this);
    return r;
}

Value Value::bnot(Context* c) const {
    Value r = type->bnot(c, *this);
    if (r.isVoid()) throwInvalidUnary("!", *this);
    return r;
}

Value Value::modify(Context* c, ModifierType modifier) const {
    return type->modify(c, modifier, *this);
}

Value Value::link(Context* c, const std::string& name) const { return type->link(c, *this, name); }

std::string Value::toString(Context* c) const { return type->toString(c, *this, 0); }

std::string Value::toString(Context* c, int depth) const { return type->toString(c, *this, depth); }
