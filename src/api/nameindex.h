#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

class QXExpression;

// The model's names: expression by name, for models that name millions of
// expressions (a decision per square of a board). One open-addressing table
// of {hash, name number}, probed linearly: an insertion costs about one
// cache miss, where a node-based map costs a node allocation, a bucket and a
// chain. The names are kept and numbered, so that an expression can name its
// own in four bytes, for good.
class NameIndex {
public:
    // The expression of that name, or nullptr.
    QXExpression* find(const std::string& name) const;
    static constexpr uint32_t TAKEN = 0xffffffffu;
    // Names `expr`; returns the kept name's number, or TAKEN (and changes
    // nothing) when the name is taken.
    uint32_t add(const std::string& name, QXExpression* expr);
    // A kept name, by number: it stays after its removal.
    const std::string& nameOf(uint32_t number) const { return kept[number]; }
    // Forgets the name (its kept copy stays, for whoever still points at
    // it: renames are rare).
    void remove(const std::string& name);
    size_t size() const { return count; }

private:
    static constexpr uint32_t FREE = 0xffffffffu;
    // 8 bytes: the table of a million names stays in 16 MB.
    struct Slot {
        uint32_t hash;  // the name's hash, low bits
        uint32_t kept;  // its number in `kept` and `exprs`; FREE
    };

    static uint32_t hashOf(const std::string& name);
    // The slot holding the name, or the free slot where it would go.
    size_t locate(const std::string& name, uint32_t hash) const;
    void grow();

    std::vector<Slot> slots;  // a power of two, never more than 3/4 full
    size_t count = 0;
    std::deque<std::string> kept;
    std::vector<QXExpression*> exprs;  // by name number
};
