#pragma once

#include "solver/kernel/move.h"
#include "solver/move/autonomousfixedfields.h"

#include <vector>

// One side of a root sum: the sum and whether a flip pushed it up.
struct SumSide {
    unsigned int sum;
    bool up;
};

// Chains of flips that cross root sums through the booleans they share, so
// that every sum a chain crosses keeps (roughly) its value: when a flip moves
// a sum one way, the next flip is an "opposite" boolean of that sum, one the
// sum's increasing bipartition says moves it back. That boolean lies in
// other sums too, which it now moves, so the chain goes on from there.
//
// A chain is a list of heads: each head is the boolean last flipped and the
// sum through which it was reached (`from`; for the first boolean, the start
// sum). From a head, the next sum to cross is one of the sums it moved: a
// constrained one other than `from` when it has any, since those are the
// sums a flip must not leave moved (even one that an inequality lets move
// that way: leaving those unsettled was measured clearly worse on set
// covering); else a free one, `from` included (a trade through an objective
// sum, which lets a chain go on past a balanced point: in a knapsack, add A,
// remove B, add C, remove D). Through a free sum the chain only takes a
// boolean in at most one constrained sum, so that a single chain can still
// settle what it moves. Cycles never cross their start sum: it is kept for
// the closing.
//
// A path starts on a free sum and should end with nothing moved but free
// sums: its last boolean may leave one constrained sum moved, which one more
// opposite boolean whose only constrained sum is that one settles. A cycle
// starts on a constrained sum of its first boolean (any root sum when the
// boolean has none) and ends where it began: the booleans it flipped in the
// start sum must move it up as often as down, one short being made up by a
// closing boolean opposite to the last boolean (in one of its sums) and to
// the excess (in the start sum). With unit coefficients and booleans in at
// most two constrained sums (assignments), a built cycle leaves every
// constrained sum exactly level. Forks split after the first boolean: l
// opposite booleans in the same sum share the cancelling (one big item
// against two or three small ones), then each branch ends as a path does or
// closes by moving the start sum back as the first boolean's opposite.
//
// k counts the steps: for paths and cycles the start and the k - 1
// crossings after it (the end or the closing may add one flip); for forks
// the start, the fork, then per branch k - 3 crossings and its end or
// closing. Nothing allocates while a move is built: the branch and scratch
// lists are reserved at construction. Each step looks only at the entries
// of the boolean it leaves and at a few random members of the sum it
// crosses.
class MoveChain : public MoveK {
public:
    // `nbBranches` is 1 for a plain chain; `returnsToStart` for cycles.
    MoveChain(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int k, const char* kind,
              unsigned int utilRate, unsigned int targeting, unsigned int nbBranches, bool returnsToStart);

protected:
    struct Head {
        unsigned int boolean;
        unsigned int from;  // root sum it was reached through
    };

    // Starts: a flipped first boolean and its sum, targeted at an improving
    // boolean with the targeting probability, else random.
    bool startPathWithRandomSum();
    bool startPathWithFreeSum();
    bool startPath(bool freeOnly);
    bool pickImprovingRootSum(bool freeOnly, unsigned int& sum, unsigned int& boolean);
    bool pickRandomRootSum(bool freeOnly, unsigned int& sum, unsigned int& boolean);

    // `steps` crossings from the head; false at a dead end.
    bool walkPath(Head& head, unsigned int steps);
    bool endPath(const Head& head);
    bool closePath(const Head& head);
    bool closeBranch(const Head& head);
    // Flips a boolean cancelling the head in its next sum and `excess` in
    // the start sum.
    bool closeThrough(const Head& head, SumSide excess);
    // flip, counting what it does to the start sum.
    void flipStep(unsigned int boolean);
    // l opposite booleans of one sum of the start boolean, into `branches`.
    bool fork();

    // The sum to cross from the head and the way the head moved it: a
    // constrained one other than `from` when there is one, else a free one;
    // false when none.
    bool nextRootSum(const Head& head, SumSide& side);
    bool selectRootSumForBool(unsigned int boolean, unsigned int from, SumSide& side);
    // The boolean's sums that a chain may cross next, by class, into
    // `constrainedNext` and `freeNext`.
    void collectNextSums(unsigned int boolean, unsigned int from);
    // An unflipped boolean of the sum that moves it against `side`, NO_NODE
    // when a few draws find none; optionally only among booleans in at most
    // one constrained sum.
    unsigned int findOppositeBool(SumSide side, bool atMostOneConstrained);
    // One random boolean moving the sum against `side`, flipped or not.
    unsigned int drawOpposite(SumSide side);
    // An unflipped boolean moving both sides back, NO_NODE when a few draws
    // find none.
    unsigned int findCommonBool(SumSide a, SumSide b);
    // Which way flipping the boolean moves the sum; false with no entry.
    bool sideOf(unsigned int boolean, unsigned int sum, SumSide& side) const;
    const RootBool& rootBoolOf(unsigned int boolean) const;
    bool isFreeSum(unsigned int sum) const { return sum < fixedFields.getNbFreeRootSums(); }
    static unsigned int size(const std::vector<RootBool::Entry>& entries) {
        return static_cast<unsigned int>(entries.size());
    }

    const AutonomousFixedFields& fixedFields;
    SumSide start{0, false};
    unsigned int startBoolean = 0;
    // Flips up minus flips down in the start sum.
    int startBalance = 0;
    unsigned int nbBranches;
    bool returnsToStart;
    std::vector<Head> branches;
    // Scratch lists of collectNextSums, reserved for the most sums a
    // boolean has.
    std::vector<RootBool::Entry> constrainedNext;
    std::vector<RootBool::Entry> freeNext;
};
