#pragma once

#include <string>
#include <vector>

class Quickrand;

// The integers 0..n-1 split into an In part and an Out part, stored as a
// permutation (In first) with its inverse, so that membership, moves between
// the parts and random picks are all O(1). Moves are swaps: the order inside
// a part depends on the history.
class Bipartition {
public:
    static constexpr unsigned int NONE = 4294967295u;

    Bipartition() = default;
    explicit Bipartition(unsigned int n) { init(n); }

    // Identity permutation, everything Out.
    void init(unsigned int n);

    bool isIn(unsigned int e) const { return positions[e] < nbIn; }
    bool isOut(unsigned int e) const { return positions[e] >= nbIn; }
    void setIn(unsigned int e) {
        unsigned int p = positions[e];
        if (p >= nbIn) swap(p, nbIn++);
    }
    void setOut(unsigned int e) {
        unsigned int p = positions[e];
        if (p < nbIn) swap(p, --nbIn);
    }
    void clearIn() { nbIn = 0; }
    void clearOut() { nbIn = total; }

    unsigned int sizeIn() const { return nbIn; }
    unsigned int sizeOut() const { return total - nbIn; }
    unsigned int size() const { return total; }
    unsigned int operator[](unsigned int i) const { return elements[i]; }
    unsigned int getPosition(unsigned int e) const { return positions[e]; }

    void swap(unsigned int i, unsigned int j) {
        unsigned int ei = elements[i], ej = elements[j];
        elements[i] = ej;
        elements[j] = ei;
        positions[ej] = i;
        positions[ei] = j;
    }

    // A random In element, NONE when the In part is empty.
    unsigned int getRandomIn(Quickrand& rand) const;
    // A random Out element, NONE when the Out part is empty.
    unsigned int getRandomOut(Quickrand& rand) const;

    void copy(const Bipartition& other) { *this = other; }
    std::string toString() const;

private:
    std::vector<unsigned int> elements;
    std::vector<unsigned int> positions;
    unsigned int nbIn = 0;
    unsigned int total = 0;
};
