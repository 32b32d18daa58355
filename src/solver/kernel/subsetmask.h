#pragma once

#include "solver/kernel/bitsutils.h"

// A subset of the positions 0..n-1 (n <= bits of W) held in one machine
// word: adding is an OR, emptying a store. Members are visited in increasing
// order.
template <class W>
class SubsetMASK {
public:
    explicit SubsetMASK(unsigned int /*n*/) {}

    void add(unsigned int i) { bits = static_cast<W>(bits | bit(i)); }
    void remove(unsigned int i) { bits = static_cast<W>(bits & ~bit(i)); }
    bool contains(unsigned int i) const { return (bits & bit(i)) != 0; }
    void clear() { bits = 0; }
    bool empty() const { return bits == 0; }
    unsigned int size() const { return BitsUtils::popcount(bits); }
    // The r-th member (r < size()) in increasing order.
    unsigned int nth(unsigned int r) const { return BitsUtils::nthSetBit(bits, r); }

    template <class F>
    void forEach(F f) const {
        for (unsigned long long w = bits; w != 0; w &= w - 1) f(BitsUtils::ffs(w));
    }

private:
    static W bit(unsigned int i) { return static_cast<W>(W(1) << i); }
    W bits = 0;
};
