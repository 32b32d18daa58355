#pragma once

#include <vector>

// A sparse subset of the positions 0..n-1 for wide operators: the members
// (first `count` entries of a permutation) and each position's place in it,
// so adding, removing and testing are O(1) and emptying resets the count.
// Members are visited in member order, not in increasing order. T must hold
// n (unsigned short while n + 1 < 65536).
template <class T>
class Subset {
public:
    explicit Subset(unsigned int n) : members(n), places(n) {
        for (unsigned int i = 0; i < n; ++i) members[i] = places[i] = static_cast<T>(i);
    }

    void add(unsigned int i) {
        unsigned int p = places[i];
        if (p >= count) swapPlaces(p, count++);
    }
    void remove(unsigned int i) {
        unsigned int p = places[i];
        if (p < count) swapPlaces(p, --count);
    }
    bool contains(unsigned int i) const { return places[i] < count; }
    void clear() { count = 0; }
    bool empty() const { return count == 0; }
    unsigned int size() const { return count; }
    unsigned int nth(unsigned int r) const { return members[r]; }

    template <class F>
    void forEach(F f) const {
        for (unsigned int k = 0; k < count; ++k) f(static_cast<unsigned int>(members[k]));
    }

private:
    void swapPlaces(unsigned int p, unsigned int q) {
        T a = members[p], b = members[q];
        members[p] = b;
        members[q] = a;
        places[b] = static_cast<T>(p);
        places[a] = static_cast<T>(q);
    }

    std::vector<T> members;
    std::vector<T> places;
    unsigned int count = 0;
};
