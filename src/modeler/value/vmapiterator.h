#pragma once

#include "modeler/value.h"

#include <string>

class VMap;

// Walks a map: negative integer keys, dense keys, other positive integer keys,
// then string keys, each ascending. It remembers the last key rather than a
// tree position, so adding or removing keys meanwhile is safe; clearing the
// map is reported at the next step.
class VMapIterator {
public:
    explicit VMapIterator(VMap* map);
    ~VMapIterator();
    VMapIterator(const VMapIterator&) = delete;
    VMapIterator& operator=(const VMapIterator&) = delete;

    bool next();
    const Value& getKey() const { return key; }
    const Value& getValue() const { return value; }

private:
    enum Phase { Start, Negative, Dense, Positive, Strings, End };
    VMap* map;
    unsigned versionId;
    Phase phase;
    qxint lastInt;
    size_t denseIndex;
    std::string lastString;
    Value key;
    Value value;
};
