#pragma once

#include "modeler/value.h"

class VMap;

// Maps: indexable; their text form is "[ " then " key => value " per entry,
// then "]".
class TMap : public Type {
public:
    constexpr TMap() : Type("map", Kind::Map, true) {}
    bool indexable() const override { return true; }
    std::string toString(Context* c, const Value& v, int depth) const override;
    Value index(Context* c, const Value& container, const Value& key) const override;

    static VMap* asMap(const Value& v);
    // Makes slot a new empty map when it is nil (an undefined target).
    static void autoCreateMap(Value& slot);
    // slot[indices[0]]...[indices[n-1]] = v, creating missing inner levels.
    static void mapAssign(Value& slot, const Value* indices, size_t n, const Value& v);
};
