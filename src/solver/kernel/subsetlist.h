#pragma once

#include "solver/kernel/subset.h"

#include <vector>

// The positions of a wide operator's children that changed during one
// evaluation. A child reports at most a few times per move and the set is
// only walked and emptied, never shrunk one member at a time, so the members
// are appended to a list and a bit per position (an eighth of a byte per
// child, small enough to stay in the first-level cache) rejects repeats.
// Adding touches the bit and the list's end instead of two random entries
// of a permutation.
template <class T>
class SubsetList {
public:
    explicit SubsetList(unsigned int n) : words((n + 63) / 64, 0), members(n) {}

    void add(unsigned int i) {
        unsigned long long bit = 1ull << (i & 63);
        unsigned long long& word = words[i >> 6];
        if (word & bit) return;
        word |= bit;
        members[count++] = static_cast<T>(i);
    }
    bool contains(unsigned int i) const { return (words[i >> 6] >> (i & 63)) & 1; }
    void clear() {
        for (unsigned int k = 0; k < count; ++k) words[members[k] >> 6] = 0;
        count = 0;
    }
    bool empty() const { return count == 0; }
    unsigned int size() const { return count; }
    unsigned int nth(unsigned int r) const { return members[r]; }

    template <class F>
    void forEach(F f) const {
        for (unsigned int k = 0; k < count; ++k) f(static_cast<unsigned int>(members[k]));
    }

private:
    std::vector<unsigned long long> words;
    std::vector<T> members;
    unsigned int count = 0;
};

// The representation of an operator's modified children for its subset
// representation S: the sparse permutation gives way to the list above;
// the word-sized representations are already cheap.
template <class S>
struct ModifiedSetOf {
    using type = S;
};
template <class T>
struct ModifiedSetOf<Subset<T>> {
    using type = SubsetList<T>;
};
