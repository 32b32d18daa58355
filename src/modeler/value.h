#pragma once

#include "solver/kernel/constants.h"

#include <cstdint>
#include <string>
#include <vector>

class Context;
class Type;
class Value;

// What a minimize / maximize / constraint statement asks of its value.
enum class ModifierType { Minimize, Maximize, Constraint };

// Base of every heap payload of a value. Counted, never copied: two values
// holding the same map see each other's changes.
class Reference {
public:
    explicit Reference(const Type* type_) : refCount(0), type(type_) {}
    virtual ~Reference() = default;
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;

    void reference() { ++refCount; }
    // Deletion is queued while another deletion runs, so releasing a long
    // chain of nested maps never recurses once per level.
    void unreference() {
        if (--refCount == 0) release(this);
    }
    uint32_t getRefCount() const { return refCount; }
    const Type* getType() const { return type; }

private:
    static void release(Reference* ref);
    uint32_t refCount;
    const Type* type;
};

// The kinds of value.
enum class Kind : uint8_t { Void, Int, String, Map, File, Node };

// One shared instance per kind decides what every operator means. A binary
// operator returns nil when it does not handle the pair of operands; the
// caller then asks the right operand's type, then reports the error.
class Type {
public:
    constexpr Type(const char* name_, Kind kind_, bool counted_)
        : name(name_), kind(kind_), counted(counted_) {}

    std::string getName() const { return name; }
    const char* getNameChars() const { return name; }
    Kind getKind() const { return kind; }
    // True for the kinds whose payload is a counted Reference.
    bool isCounted() const { return counted; }

    virtual bool indexable() const { return false; }
    virtual std::string toString(Context* context, const Value& v, int depth) const;

    virtual Value opp(Context* context, const Value& a) const;
    virtual Value bnot(Context* context, const Value& a) const;
    virtual Value add(Context* context, const Value& a, const Value& b) const;
    virtual Value sub(Context* context, const Value& a, const Value& b) const;
    virtual Value mul(Context* context, const Value& a, const Value& b) const;
    virtual Value div(Context* context, const Value& a, const Value& b) const;
    virtual Value mod(Context* context, const Value& a, const Value& b) const;
    virtual Value band(Context* context, const Value& a, const Value& b) const;
    virtual Value bor(Context* context, const Value& a, const Value& b) const;
    virtual Value lt(Context* context, const Value& a, const Value& b) const;
    virtual Value leq(Context* context, const Value& a, const Value& b) const;
    virtual Value gt(Context* context, const Value& a, const Value& b) const;
    virtual Value geq(Context* context, const Value& a, const Value& b) const;
    virtual Value eq(Context* context, const Value& a, const Value& b) const;
    virtual Value neq(Context* context, const Value& a, const Value& b) const;
    // Only asked when the condition is not an integer (an expression).
    virtual Value ternary(Context* context, const Value& c, const Value& a, const Value& b) const;
    virtual Value index(Context* context, const Value& container, const Value& key) const;
    virtual Value modify(Context* context, ModifierType modifier, const Value& v) const;
    // The value stored by "name <- v": expressions take the name, others are
    // stored unchanged.
    virtual Value link(Context* context, const Value& v, const std::string& name) const;

private:
    const char* name;
    Kind kind;
    bool counted;
};

// The shared type instances, compared by identity.
struct RefTypes {
    static const Type* const T_VOID;
    static const Type* const T_INT;
    static const Type* const T_STRING;
    static const Type* const T_MAP;
    static const Type* const T_FILE;
    static const Type* const T_NODE;  // defined with TNode
};

// The tagged cell of the language: 16 bytes, integers inline, heap kinds by
// counted reference. Booleans are the integers 0 and 1.
class Value {
public:
    Value() : type(RefTypes::T_VOID) { payload.i = 0; }
    Value(bool b) : type(RefTypes::T_INT) { payload.i = b ? 1 : 0; }
    Value(long long i) : type(RefTypes::T_INT) { payload.i = i; }
    Value(long i) : type(RefTypes::T_INT) { payload.i = i; }
    Value(int i) : type(RefTypes::T_INT) { payload.i = i; }
    Value(const std::string& s);
    Value(const char* s);
    Value(Reference* ref);
    // A handle of a type that is not counted: the object belongs to
    // something that outlives every value naming it.
    Value(const Type* handleType, void* handle) : type(handleType) { payload.handle = handle; }
    Value(const Value& o) : type(o.type) {
        payload = o.payload;
        if (type->isCounted()) payload.ref->reference();
    }
    Value(Value&& o) noexcept : type(o.type) {
        payload = o.payload;
        o.type = RefTypes::T_VOID;
        o.payload.i = 0;
    }
    ~Value() {
        if (type->isCounted()) release(payload.ref);
    }
    Value& operator=(const Value& o) {
        if (o.type->isCounted()) o.payload.ref->reference();
        if (type->isCounted()) release(payload.ref);
        type = o.type;
        payload = o.payload;
        return *this;
    }
    Value& operator=(Value&& o) noexcept {
        if (this != &o) {
            if (type->isCounted()) release(payload.ref);
            type = o.type;
            payload = o.payload;
            o.type = RefTypes::T_VOID;
            o.payload.i = 0;
        }
        return *this;
    }

    bool isVoid() const { return type == RefTypes::T_VOID; }
    bool isInt() const { return type == RefTypes::T_INT; }
    bool isBool() const { return isInt() && (payload.i == 0 || payload.i == 1); }
    bool isString() const { return type == RefTypes::T_STRING; }
    bool isRef() const { return type->isCounted(); }
    bool isBuiltin() const { return !type->isCounted(); }

    qxint asInt() const { return payload.i; }
    bool asBool() const { return payload.i != 0; }
    const std::string& asString() const;
    Reference* getReference() const { return type->isCounted() ? payload.ref : nullptr; }
    void* getHandle() const { return payload.handle; }
    const Type* getType() const { return type; }

    qxint castToInt() const;
    const std::string& castToString() const;
    bool castToBool() const;
    void checkType(const Type* t) const;
    // Integers and strings are the only map keys.
    void checkKey() const;

    Value add(Context* c, const Value& b) const;
    Value sub(Context* c, const Value& b) const;
    Value mul(Context* c, const Value& b) const;
    Value div(Context* c, const Value& b) const;
    Value mod(Context* c, const Value& b) const;
    Value band(Context* c, const Value& b) const;
    Value bor(Context* c, const Value& b) const;
    Value lt(Context* c, const Value& b) const;
    Value leq(Context* c, const Value& b) const;
    Value gt(Context* c, const Value& b) const;
    Value geq(Context* c, const Value& b) const;
    Value eq(Context* c, const Value& b) const;
    Value neq(Context* c, const Value& b) const;
    Value index(Context* c, const Value& key) const;
    Value ternary(Context* c, const Value& a, const Value& b) const;
    Value opp(Context* c) const;
    Value bnot(Context* c) const;
    Value modify(Context* c, ModifierType modifier) const;
    Value link(Context* c, const std::string& name) const;
    std::string toString(Context* c = nullptr) const;
    // Text form used inside a map's text; depth guards self-containing maps.
    std::string toString(Context* c, int depth) const;

private:
    // Out of line: the compiler cannot see that an inline integer is never
    // taken for a reference, and warns about it.
    static void release(Reference* ref);
    union {
        int64_t i;
        Reference* ref;
        void* handle;
    } payload;
    const Type* type;
};

// Raises the dispatch error of a binary operator.
[[noreturn]] void throwInvalid(const char* symbol, const Value& a, const Value& b);
// Raises the error of a unary operator ("[]" for indexing).
[[noreturn]] void throwInvalidUnary(const char* symbol, const Value& a);
