#pragma once

#include "solver/kernel/bitsutils.h"

#include <vector>

// A subset of the positions 0..n-1 as ceil(n/64) words, for operators too
// wide for one word but narrow enough (<= 256) that walking every word stays
// cheaper than maintaining a sparse set.
class SubsetBits {
public:
    explicit SubsetBits(unsigned int n) : words((n + 63) / 64, 0) {}

    void add(unsigned int i) { words[i >> 6] |= 1ull << (i & 63); }
    void remove(unsigned int i) { words[i >> 6] &= ~(1ull << (i & 63)); }
    bool contains(unsigned int i) const { return (words[i >> 6] >> (i & 63)) & 1; }
    void clear() {
        for (unsigned long long& w : words) w = 0;
    }
    bool empty() const {
        for (unsigned long long w : words)
            if (w != 0) return false;
        return true;
    }
    unsigned int size() const {
        unsigned int count = 0;
        for (unsigned long long w : words) count += BitsUtils::popcount(w);
        return count;
    }
    unsigned int nth(unsigned int r) const {
        for (unsigned int k = 0;; ++k) {
            unsigned int c = BitsUtils::popcount(words[k]);
            if (r < c) return (k << 6) + BitsUtils::nthSetBit(words[k], r);
            r -= c;
        }
    }

    template <class F>
    void forEach(F f) const {
        for (unsigned int k = 0; k < words.size(); ++k)
            for (unsigned long long w = words[k]; w != 0; w &= w - 1) f((k << 6) + BitsUtils::ffs(w));
    }

private:
    std::vector<unsigned long long> words;
};
