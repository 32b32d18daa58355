#include "modeler/value/tmap.h"

#include "modeler/modelerexception.h"
#include "modeler/value/vmap.h"
#include "modeler/value/vmapiterator.h"

namespace {
const char* const UNIT = "src/modeler/value/tmap";
// Deeper nesting than this is a map stored in itself, or data no one prints.
const int kMaxPrintDepth = 200;
}  // namespace

std::string TMap::toString(Context* c, const Value& v, int depth) const {
    if (depth > kMaxPrintDepth)
        throw ModelerException("Cannot convert a map nested more than " +
                                   std::to_string(kMaxPrintDepth) + " levels deep to text.",
                               QX_HERE);
    std::string out = "[ ";
    VMapIterator it(asMap(v));
    while (it.next()) {
        out += ' ';
        out += it.getKey().toString(c, depth + 1);
        out += " => ";
        out += it.getValue().toString(c, depth + 1);
        out += ' ';
    }
    out += ']';
    return out;
}

Value TMap::index(Context*, const Value& container, const Value& key) const {
    return asMap(container)->get(key);
}

VMap* TMap::asMap(const Value& v) { return static_cast<VMap*>(v.getReference()); }

void TMap::autoCreateMap(Value& slot) {
    if (slot.isVoid()) slot = Value(new VMap());
}

void TMap::mapAssign(Value& slot, const Value* indices, size_t n, const Value& v) {
    autoCreateMap(slot);
    if (slot.getType() != RefTypes::T_MAP) throwInvalidUnary("[]", slot);
    VMap* map = asMap(slot);
    for (size_t i = 0; i + 1 < n; ++i) {
        Value inner = map->get(indices[i]);
        if (inner.isVoid()) {
            inner = Value(new VMap());
            map->set(indices[i], inner);
        } else if (inner.getType() != RefTypes::T_MAP) {
            throwInvalidUnary("[]", inner);
        }
        map = asMap(inner);  // kept alive by its parent map
    }
    map->set(indices[n - 1], v);
}
