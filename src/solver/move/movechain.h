#pragma once

#include "solver/kernel/move.h"
#include "solver/move/autonomousfixedfields.h"
#include "solver/move/autonomousstructure.h"

#include <limits>
#include <utility>
#include <vector>

// One side of a root sum: the sum and whether a flip pushed it up.
struct SumSide {
    unsigned int sum;
    bool up;
};

// Chains of flips that cross root sums through the booleans they share and
// leave every constrained sum they cross where its constraints allow it.
//
// While a chain is built it keeps the shift of every sum it touched. A
// constrained sum is unsettled when its shifted value breaks a constraint
// that the committed value keeps, or breaks it further: for a sum compared
// with constants that is leaving its range (a row of a set cover dropping
// to 0 coverage, a knapsack capacity exceeded); for a sum watched through
// other expressions any shift, so those are kept level. Each step settles
// one unsettled sum with an "opposite" boolean of that sum, one that moves
// it back; among its opposites (all of them when they are few, else a few
// random ones) it takes the one that repairs the most and breaks the least
// over all the sums it is in (a column covering several uncovered rows, an
// item whose removal frees every exceeded capacity), and among those the
// one best for the objectives that are root sums themselves (the cheapest
// such column, the least valuable such item). Trades and forks take the
// first of equal repairs instead: they are the chain's random part, and
// weighing worth there makes small candidate sets always give the same
// answer. When nothing is unsettled
// the chain may end, or trade through a free sum that its last flip moved:
// an opposite there moves the objective back the other way (in a knapsack:
// add A, remove B, add C), and the chain goes on settling what that trade
// broke.
//
// A cycle leaves its start sum out of the reckoning until it closes: a walk
// that settled it at the first chance would only ever close the shortest
// loops (in car sequencing, swaps of two cars where rotations of several
// are needed).
//
// The unsettled sum settled next is the one with the fewest opposites to
// draw from, so that a boolean settling two sums at once (the closing of a
// cycle through an assignment) is likelier to come up.
//
// A path starts on a free sum (the objective, usually with a boolean that
// improves it) and must end settled. A cycle starts on a constrained sum of
// its first boolean (any root sum when the boolean has none), leaves that
// sum aside while it walks and settles it last, so that with unit
// coefficients and booleans in two constrained sums (assignments) a cycle
// moves a closed loop of exchanges. Forks split after the first boolean: l
// opposites in one sum share the cancelling (one big item against two or
// three small ones), and the walk then settles what they moved.
//
// k counts the steps: for paths and cycles the start and k - 1 steps after
// it; for forks the start, the fork, then l (k - 3) steps. The end may add
// two more flips to settle what remains. Nothing allocates while a move is
// built: the shifts belong to the thread's structure, reserved once.
class MoveChain : public MoveK {
public:
    // The shapes, each named by its kind word: "Cycle" (from any root
    // sum back to it, k >= 2), "Path" (from a free root sum to free sums
    // only, k >= 2), and their forks "ForkCycle" and "ForkPath" (k >= 3),
    // whose first boolean is cancelled by l branches in one of its sums.
    // "Fill" (k = 1 or 2) gives up k booleans of an objective sum, then
    // takes every flip that the room they left makes possible, the most
    // valuable first: drop an item and pack the best that now fit, or buy
    // a column and sell the dearest ones it makes redundant.
    // "DeepFill" (k = 2 to MAX_DEEP_ROUNDS) repeats a fill of one up to k
    // times and keeps the rounds up to the one that ends best.
    enum Shape { Cycle, Path, ForkCycle, ForkPath, Fill, DeepFill };
    static constexpr unsigned int MAX_DEEP_ROUNDS = 8;

    // `nbBranches`, the l of a fork (2 or 3), is 1 for the plain shapes;
    // anything else is refused.
    MoveChain(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, Shape shape, unsigned int k,
              unsigned int utilRate, unsigned int targeting, unsigned int nbBranches = 1);

    bool modify() override;
    // Cycles targeted while the solution is infeasible start from a
    // violated constraint's sum (min-conflicts) rather than from the
    // objective.
    void setViolationTargeting(bool on) { violationTargeting = on; }
    // The rounds of the last deep fill built, in order: the move's flips
    // after each, the objectives' gain so far, whether it left every
    // constraint kept. The move kept the rounds up to the first settled one
    // of the best gain.
    struct Round {
        std::size_t end;
        long long worth;
        bool settled;
    };
    const std::vector<Round>& getRounds() const { return rounds; }
    // Whether the shape has a chain of size k in these fields.
    static bool isValidK(Shape shape, unsigned int k, const AutonomousFixedFields& fixed);

protected:
    enum Step { Settled, Moved, Stuck };

    // A flipped first boolean and its sum, targeted at an improving boolean
    // with the targeting probability, else random.
    bool startPath(bool freeOnly);
    bool pickImprovingRootSum(bool freeOnly, unsigned int& sum, RootBool& boolean);
    // While some constraint is violated: a violated constraint on a ranged
    // root sum, and a boolean of that sum whose flip moves it back toward
    // its range.
    bool pickViolatedRootSum(unsigned int& sum, RootBool& boolean);
    bool pickRandomRootSum(bool freeOnly, unsigned int& sum, RootBool& boolean);

    // One flip settling an unsettled sum (the start sum of a cycle only with
    // `withStart`); Settled when there is none, Stuck when no opposite is
    // found.
    Step settle(bool withStart);
    // One flip through a free sum that the last flip moved; false when
    // there is none or it offers no opposite.
    bool trade();
    // A random free sum of the boolean, as moved by its flip.
    bool pickFreeSide(RootBool boolean, SumSide& side);
    // l opposites in one sum of the first boolean.
    bool fork();
    // Up to two more flips to settle what remains; false when a constraint
    // is still broken.
    bool finish();
    // Whether some family of sums sharing no boolean has more broken sums
    // than the flips left could settle (each settles at most one of them):
    // the move would be refused at its end, and is given up at once.
    bool isDoomed(unsigned int flipsLeft) const;
    // The Fill shapes; false when nothing could be taken.
    bool fill();
    // Flips a random unflipped opposite of the side among its n; false
    // when a few draws found none.
    bool giveUp(SumSide gaining, unsigned int n);
    // Every flip that fits in the room the move's shifts left (the room
    // that `opened` left, when given), the most valuable per room first;
    // how many.
    unsigned int fillRoom(const RootBool* opened);
    // Takes back the move's last flip.
    void unflipLast();
    void shiftSum(unsigned int sum, long long delta);
    // Whether the flip of the boolean of committed value `value` breaks no
    // constraint further.
    bool fits(RootBool rootBool, long long value) const;
    double usage(RootBool rootBool, long long value) const;

    // flip of the unflipped boolean of committed value `value`, recording
    // the shifts.
    void flipStep(RootBool boolean, long long value);
    // How much further the sum's constraints are broken after the shift
    // than before the move; 0 when settled.
    long long excess(unsigned int sum, long long shift) const { return structure.excess(sum, shift); }
    // What flipping the boolean now does to the objectives that are root
    // sums, positive when it improves them.
    long long worthOf(RootBool rootBool, long long value) const;
    // What flipping the boolean of committed value `value` now repairs
    // minus what it breaks.
    long long repair(RootBool rootBool, long long value) const;
    // The best unflipped opposite of the side among all of them when they
    // are few, else among a few random ones; none when none comes up.
    // One whose repair reaches `enough` is taken at once. With `weighWorth`
    // ties go to the one best for the objectives, else to the first.
    // An opposite and its committed value.
    struct Opposite {
        RootBool rootBool;
        long long value = 0;
    };
    Opposite bestOpposite(SumSide side, long long enough, bool weighWorth);
    unsigned int nbOpposites(SumSide side) const;
    // The i-th opposite of the side (i below nbOpposites).
    RootBool oppositeAt(SumSide side, unsigned int i) const;
    // The opposites bestOpposite weighs, in its order.
    void drawOpposites(SumSide side, unsigned int first, unsigned int n, unsigned int offset, RootBool* drawn) const;
    // Whether the boolean was flipped in this move.
    bool isFlipped(RootBool rootBool) const;
    long long valueAsOpposite(RootBool rootBool, SumSide side) const;
    // Which way flipping the boolean moves the sum.
    SumSide sideOf(const RootBool::Entry& entry) const;
    // What flipping a boolean of committed value `value` does to the sum of
    // the entry (saturated rather than negating the 64-bit minimum).
    static long long shiftOf(const RootBool::Entry& entry, long long value) {
        if (value == 0) return entry.coefficient;
        return entry.coefficient == std::numeric_limits<long long>::min() ? std::numeric_limits<long long>::max()
                                                                           : -entry.coefficient;
    }
    RootBool rootBoolOf(unsigned int boolean) const;
    bool isFreeSum(unsigned int sum) const { return sum < fixedFields.getNbFreeRootSums(); }

    const AutonomousFixedFields& fixedFields;
    bool violationTargeting = false;
    SumShifts& shifts;
    unsigned int startSum = 0;
    // Whether repair() counts the start sum: always for paths, for cycles
    // only when closing.
    bool weighStart = true;
    RootBool lastFlipped;
    unsigned int nbBranches;
    bool returnsToStart;
    bool fills;
    bool deepFills;
    // Fill only: the objective sums, the candidates with their worth, and a
    // mark per boolean rank so that a boolean of several sums is weighed
    // once (marked when marks[rank] == stamp).
    std::vector<unsigned int> objectiveSums;
    struct Candidate {
        double ratio;  // worth per room used
        RootBool rootBool;
        long long value;
    };
    std::vector<Candidate> candidates;
    std::vector<Round> rounds;
    std::vector<unsigned int> marks;
    unsigned int stamp = 0;
    // The booleans this move flipped, a handful but for fills: scanned
    // rather than the graph's flags, which would cost a load per weighed
    // boolean.
    std::vector<RootBool> flipped;
    unsigned int brokenInFamily[AutonomousFixedFields::MAX_FAMILIES] = {};
};
