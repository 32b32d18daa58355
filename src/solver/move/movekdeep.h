#pragma once

#include "solver/kernel/move.h"

#include <vector>

class KeptScores;
class KeptScoresFixed;

// A flip and the greedy flips that answer it, over an unconstrained
// quadratic objective kept by the kept scores (max-cut, QUBO): a random
// boolean flips, then, up to DEPTH_PER_K * k flips in all, the unflipped
// boolean that the flips so far made the best to flip, and the move keeps
// the prefix of that sequence that ends best (two flips at least). The
// flips see one another through the pair terms they share, so a sequence
// whose every step but the last costs may end better than it started: a
// descent that takes such moves leaves local optima that no few random
// flips escape.
class MoveKDeep : public Move {
public:
    static constexpr unsigned int DEPTH_PER_K = 8;

    MoveKDeep(Dag& dag, Quickrand& quickrand, unsigned int k, unsigned int utilRate);
    // Where some objective is a kept scores' root with pair terms, there is
    // no row and every boolean is scored; k at least 2.
    static bool isValidK(unsigned int k, const Dag& dag);
    bool modify() override;
    unsigned int getK() const { return k; }
    // The last sequence built (variable indices, in flip order) and the
    // length of the prefix that the move flipped.
    const std::vector<unsigned int>& getSequence() const { return sequence; }
    std::size_t getFlippedLength() const { return flippedLength; }

private:
    // The root of the first objective not at its bound, and its direction
    // (+1 maximised); false when that objective is not a root.
    bool optimizedRoot(unsigned int& root, long long& sign) const;
    // The boolean flips in the sequence: its neighbours' gains change.
    void take(unsigned int boolean);

    // The candidates on their gains given the flips so far, best first: in
    // buckets of equal gain where the root's gains are small integers
    // (unit weights: a change costs a few stores), else in a binary heap.
    struct Candidate {
        long long gain;
        unsigned int boolean;
    };
    void clearQueue();
    bool isQueueEmpty() const { return bucketed ? queued == 0 : heap.empty(); }
    void insert(unsigned int boolean, long long gain);
    void change(unsigned int boolean, long long by);
    Candidate popBest();
    void place(unsigned int slot, Candidate candidate);
    void raise(unsigned int slot);
    void lower(unsigned int slot);
    unsigned int bucketOf(unsigned int boolean) const { return static_cast<unsigned int>(gainOf[boolean] + bound); }
    void link(unsigned int boolean);
    void unlink(unsigned int boolean);

    unsigned int k;
    const KeptScoresFixed& kept;
    const KeptScores* scores = nullptr;
    unsigned int root = 0;
    long long sign = 1;
    // Per boolean (variable index), valid where its stamp is current: its
    // slot in the heap, or FLIPPED.
    static constexpr unsigned int FLIPPED = 0xffffffffu;
    std::vector<unsigned int> slotOf, stamps;
    unsigned int stamp = 0;
    std::vector<Candidate> heap;
    // Per root, the largest change one flip can make to it, saturated.
    std::vector<long long> bounds;
    bool bucketed = false;
    long long bound = 0;
    // Buckets: the first of each gain (from -bound), per boolean its gain
    // and neighbours in its bucket, the highest bucket that may be
    // occupied, and the booleans queued in this move.
    static constexpr unsigned int NIL = 0xffffffffu;
    std::vector<unsigned int> heads, nexts, previous;
    std::vector<long long> gainOf;
    std::vector<unsigned int> queuedBooleans;
    unsigned int queued = 0;
    unsigned int top = 0;
    std::vector<unsigned int> sequence;
    std::size_t flippedLength = 0;
};
