#include "modeler/value/vmapiterator.h"

#include "modeler/modelerexception.h"
#include "modeler/value/vmap.h"

namespace {
const char* const UNIT = "src/modeler/value/vmapiterator";
}  // namespace

VMapIterator::VMapIterator(VMap* map_)
    : map(map_), versionId(map_->getVersionId()), phase(Start), lastInt(0), denseIndex(0) {
    map->reference();
}

VMapIterator::~VMapIterator() { map->unreference(); }

bool VMapIterator::next() {
    if (phase == End) return false;
    if (map->getVersionId() != versionId)
        throw ModelerException("Cannot iterate on a modified map", QX_HERE);
    auto& ints = map->intKeys;
    auto takeInt = [this](std::map<qxint, Value>::const_iterator it) {
        lastInt = it->first;
        key = Value(it->first);
        value = it->second;
        return true;
    };
    if (phase == Start || phase == Negative) {
        auto it = phase == Start ? ints.begin() : ints.upper_bound(lastInt);
        phase = Negative;
        if (it != ints.end() && it->first < 0) return takeInt(it);
        phase = Dense;
        denseIndex = 0;
    } else if (phase == Dense) {
        ++denseIndex;
    }
    if (phase == Dense) {
        while (denseIndex < map->indexed.size() && map->indexed[denseIndex].isVoid()) ++denseIndex;
        if (denseIndex < map->indexed.size()) {
            key = Value((qxint)denseIndex);
            value = map->indexed[denseIndex];
            return true;
        }
        phase = Positive;
        lastInt = (qxint)denseIndex - 1;
    }
    if (phase == Positive) {
        // Positive tree keys always lie beyond the dense slots seen so far.
        auto it = ints.upper_bound(lastInt);
        if (it != ints.end()) return takeInt(it);
    }
    auto& strings = map->stringKeys;
    auto s = phase == Positive ? strings.begin() : strings.upper_bound(lastString);
    phase = Strings;
    if (s != strings.end()) {
        lastString = s->first;
        key = Value(s->first);
        value = s->second;
        return true;
    }
    phase = End;
    key = Value();
    value = Value();
    return false;
}
