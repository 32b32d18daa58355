#pragma once

#include <vector>

// The search's only random generator: a 32-bit linear congruence, cheap
// enough to be drawn several times per move and reproducible from its seed.
// One instance per thread (or per move filter); not thread-safe.
class Quickrand {
public:
    Quickrand() : state(0) {}
    explicit Quickrand(unsigned int seed) : state(seed) {}

    void init(unsigned int seed) { state = seed; }
    unsigned int getState() const { return state; }

    // A value in [0, n); n < 2 gives 0 without advancing the state, so that
    // degenerate draws do not shift the sequence of the following ones.
    unsigned int nextInt(unsigned int n) {
        if (n < 2) return 0;
        advance();
        return highWord(n);
    }

    // A value in [0, n) other than `excluded` (n >= 1, excluded < n).
    unsigned int nextInt(unsigned int n, unsigned int excluded) {
        if (n <= 2) {
            unsigned int v = excluded + 1;
            return v >= n ? v - n : v;
        }
        advance();
        unsigned int v = excluded + 1 + highWord(n - 1);
        return v >= n ? v - n : v;
    }

    // A float in [0, 1).
    float nextFloat() {
        advance();
        return static_cast<float>(highWord(2147483647u) / 2147483647.0);
    }

    // k distinct values of [0, n) into out[0..k-1] (out holds at least k
    // entries): a partial Fisher-Yates shuffle from the top whose displaced
    // positions are remembered in two short lists, so memory is O(k).
    void nextKInt(unsigned int n, unsigned int k, std::vector<unsigned int>& out);

    // The same draws, in the same order, through a set of n elements: O(n)
    // memory but no linear search of the displaced positions.
    void nextKInt_LinearInN(unsigned int n, unsigned int k, std::vector<unsigned int>& out);

    // Index of the first of the first `count` entries of `values` equal to
    // `value`, or count when there is none.
    static unsigned int find(unsigned int value, const std::vector<unsigned int>& values,
                             unsigned int count);
    // Positions of a and of b among the first `count` entries (count where
    // absent), in one pass.
    static void find(unsigned int a, unsigned int b, const std::vector<unsigned int>& values,
                     unsigned int count, unsigned int& posA, unsigned int& posB);

private:
    void advance() { state = state * 1664525u + 1013904223u; }
    unsigned int highWord(unsigned int n) const {
        return static_cast<unsigned int>((static_cast<unsigned long long>(state) * n) >> 32);
    }

    unsigned int state;
    // Scratch lists of nextKInt, kept to avoid an allocation per call.
    std::vector<unsigned int> touchedPositions;
    std::vector<unsigned int> touchedValues;
};
