#pragma once

#include "modeler/value.h"

#include <map>
#include <string>
#include <vector>

// The language's only container. Integer keys 0, 1, 2, ... live in dense
// slots; other integer keys and string keys in two ordered trees. Storing
// nil removes the key, so a key present always holds a non-nil value.
class VMap : public Reference {
public:
    VMap();
    ~VMap() override;

    size_t size() const { return count + intKeys.size() + stringKeys.size(); }
    unsigned getVersionId() const { return versionId; }

    Value get(qxint key) const;
    Value get(const std::string& key) const;
    Value get(const Value& key) const;
    bool contains(qxint key) const;
    bool contains(const std::string& key) const;
    bool contains(const Value& key) const;
    void set(qxint key, const Value& v);
    void set(const std::string& key, const Value& v);
    void set(const Value& key, const Value& v);
    void unset(qxint key);
    void unset(const std::string& key);
    void unset(const Value& key);
    // Appends under nextIntKey().
    void add(const Value& v);
    void clear();
    // Appends this map's keys (values) in iteration order to out.
    void keys(VMap* out) const;
    void values(VMap* out) const;
    // One more than the greatest integer key, or 0 without integer keys.
    qxint nextIntKey() const;

    // Empties every map still alive, breaking the reference cycles a program
    // may build (a map stored in itself); called when a run ends.
    static void clearAllMaps();

private:
    friend class VMapIterator;
    void findNextIndexedKey();

    unsigned versionId;
    size_t count;  // non-nil dense slots
    std::map<qxint, Value> intKeys;
    std::map<std::string, Value> stringKeys;
    std::vector<Value> indexed;
    // Intrusive list of live maps, for clearAllMaps.
    VMap* prevLive;
    VMap* nextLive;
};
