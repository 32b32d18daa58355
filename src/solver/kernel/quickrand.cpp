#include "solver/kernel/quickrand.h"

#include "solver/kernel/bipartition.h"

void Quickrand::nextKInt(unsigned int n, unsigned int k, std::vector<unsigned int>& out) {
    // Virtual array a[0..n-1] starting as the identity; only the positions
    // that were written differ from their index.
    touchedPositions.clear();
    touchedValues.clear();
    for (unsigned int i = 0; i < k; ++i) {
        unsigned int m = n - i;
        unsigned int r = nextInt(m);
        unsigned int count = static_cast<unsigned int>(touchedPositions.size());
        unsigned int posR, posLast;
        find(r, m - 1, touchedPositions, count, posR, posLast);
        unsigned int valueR = posR < count ? touchedValues[posR] : r;
        unsigned int valueLast = posLast < count ? touchedValues[posLast] : m - 1;
        out[i] = valueR;
        if (posR < count) {
            touchedValues[posR] = valueLast;
        } else {
            touchedPositions.push_back(r);
            touchedValues.push_back(valueLast);
        }
    }
}

void Quickrand::nextKInt_LinearInN(unsigned int n, unsigned int k,
                                   std::vector<unsigned int>& out) {
    Bipartition remaining(n);
    remaining.clearOut();
    for (unsigned int i = 0; i < k; ++i) {
        unsigned int r = nextInt(remaining.sizeIn());
        unsigned int value = remaining[r];
        out[i] = value;
        // Moving the value Out swaps it with the last In element, which is
        // exactly the top-down Fisher-Yates step of nextKInt.
        remaining.setOut(value);
    }
}

unsigned int Quickrand::find(unsigned int value, const std::vector<unsigned int>& values,
                             unsigned int count) {
    for (unsigned int i = 0; i < count; ++i)
        if (values[i] == value) return i;
    return count;
}

void Quickrand::find(unsigned int a, unsigned int b, const std::vector<unsigned int>& values,
                     unsigned int count, unsigned int& posA, unsigned int& posB) {
    posA = count;
    posB = count;
    for (unsigned int i = 0; i < count; ++i) {
        if (posA == count && values[i] == a) posA = i;
        if (posB == count && values[i] == b) posB = i;
    }
}
