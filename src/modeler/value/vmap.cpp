#include "modeler/value/vmap.h"

#include "modeler/value/tint.h"
#include "modeler/value/vmapiterator.h"
#include "solver/kernel/wraparith.h"

namespace {
const size_t kInitialSlots = 16;
VMap* liveMaps = nullptr;
}  // namespace

VMap::VMap()
    : Reference(RefTypes::T_MAP), versionId(0), count(0), indexed(kInitialSlots),
      prevLive(nullptr), nextLive(liveMaps) {
    if (liveMaps) liveMaps->prevLive = this;
    liveMaps = this;
}

VMap::~VMap() {
    if (prevLive) prevLive->nextLive = nextLive;
    else liveMaps = nextLive;
    if (nextLive) nextLive->prevLive = prevLive;
}

void VMap::clearAllMaps() {
    std::vector<VMap*> all;
    for (VMap* m = liveMaps; m; m = m->nextLive) {
        m->reference();
        all.push_back(m);
    }
    for (VMap* m : all) m->clear();
    for (VMap* m : all) m->unreference();
}

Value VMap::get(qxint key) const {
    if (key >= 0 && (size_t)key < indexed.size()) return indexed[key];
    auto it = intKeys.find(key);
    return it == intKeys.end() ? Value() : it->second;
}

Value VMap::get(const std::string& key) const {
    auto it = stringKeys.find(key);
    return it == stringKeys.end() ? Value() : it->second;
}

Value VMap::get(const Value& key) const {
    key.checkKey();
    return key.isInt() ? get(key.asInt()) : get(key.asString());
}

bool VMap::contains(qxint key) const {
    if (key >= 0 && (size_t)key < indexed.size()) return !indexed[key].isVoid();
    return intKeys.count(key) != 0;
}

bool VMap::contains(const std::string& key) const { return stringKeys.count(key) != 0; }

bool VMap::contains(const Value& key) const {
    key.checkKey();
    return key.isInt() ? contains(key.asInt()) : contains(key.asString());
}

void VMap::set(qxint key, const Value& v) {
    if (v.isVoid()) {
        unset(key);
        return;
    }
    if (key >= 0 && (size_t)key < indexed.size()) {
        if (indexed[key].isVoid()) ++count;
        indexed[key] = v;
    } else if (key >= 0 && (size_t)key == indexed.size()) {
        ++count;
        indexed.push_back(v);
        findNextIndexedKey();
    } else {
        intKeys[key] = v;
    }
}

// Integer keys that became contiguous with the dense slots move into them.
void VMap::findNextIndexedKey() {
    auto it = intKeys.find((qxint)indexed.size());
    while (it != intKeys.end() && it->first == (qxint)indexed.size()) {
        indexed.push_back(std::move(it->second));
        ++count;
        it = intKeys.erase(it);
    }
}

void VMap::set(const std::string& key, const Value& v) {
    if (v.isVoid()) stringKeys.erase(key);
    else stringKeys[key] = v;
}

void VMap::set(const Value& key, const Value& v) {
    key.checkKey();
    if (key.isInt()) set(key.asInt(), v);
    else set(key.asString(), v);
}

void VMap::unset(qxint key) {
    if (key >= 0 && (size_t)key < indexed.size()) {
        if (!indexed[key].isVoid()) {
            --count;
            indexed[key] = Value();
        }
    } else {
        intKeys.erase(key);
    }
}

void VMap::unset(const std::string& key) { stringKeys.erase(key); }

void VMap::unset(const Value& key) {
    key.checkKey();
    if (key.isInt()) unset(key.asInt());
    else unset(key.asString());
}

qxint VMap::nextIntKey() const {
    // Positive tree keys all lie beyond the dense slots.
    if (!intKeys.empty() && intKeys.rbegin()->first >= 0)
        return WrapArith::add(intKeys.rbegin()->first, 1);
    for (size_t i = indexed.size(); i-- > 0;)
        if (!indexed[i].isVoid()) return (qxint)i + 1;
    if (!intKeys.empty()) return intKeys.rbegin()->first + 1;  // only negative keys
    return 0;
}

void VMap::add(const Value& v) { set(nextIntKey(), v); }

void VMap::clear() {
    ++versionId;
    // Moved out first: releasing the values may run other maps' destructors.
    std::map<qxint, Value> oldInts;
    std::map<std::string, Value> oldStrings;
    std::vector<Value> oldIndexed(kInitialSlots);
    oldInts.swap(intKeys);
    oldStrings.swap(stringKeys);
    oldIndexed.swap(indexed);
    count = 0;
}

void VMap::keys(VMap* out) const {
    VMapIterator it(const_cast<VMap*>(this));
    while (it.next()) out->add(it.getKey());
}

void VMap::values(VMap* out) const {
    VMapIterator it(const_cast<VMap*>(this));
    while (it.next()) out->add(it.getValue());
}
