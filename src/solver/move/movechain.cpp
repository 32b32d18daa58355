#include "solver/move/movechain.h"

#include "api/kernelexception.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"
#include "solver/move/autonomousstructure.h"

namespace {
// Random draws spent looking for an unflipped opposite before giving up: a
// sum offers many candidates or the chain is better dropped than searched.
const unsigned int OPPOSITE_DRAWS = 4;
// A closing boolean must lie in two given sums, which few do: more draws.
const unsigned int COMMON_DRAWS = 8;
}  // namespace

MoveChain::MoveChain(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int k,
                     const char* kind, unsigned int utilRate, unsigned int targeting, unsigned int nbBranches,
                     bool returnsToStart)
    : MoveK(dag, quickrand, structure, k, kind, utilRate, targeting), fixedFields(structure.getFixedFields()),
      nbBranches(nbBranches), returnsToStart(returnsToStart) {
    if (nbBranches == 0)
        throw KernelException("src/solver/move/movechain", __LINE__, "MoveChain", "Bad argument value.");
    branches.reserve(nbBranches);
    std::size_t mostSums = 0;
    for (unsigned int r = 0; r < dag.getFixedFields().nbBooleans(); ++r)
        mostSums = std::max<std::size_t>(mostSums, fixedFields.getRootBool(r).getNbRootSums());
    constrainedNext.reserve(mostSums);
    freeNext.reserve(mostSums);
}

const RootBool& MoveChain::rootBoolOf(unsigned int boolean) const {
    return fixedFields.getRootBool(dag.getFixedFields().variableIndex(boolean));
}

// The bipartition holds committed values and a chain flips each boolean at
// most once, so it tells the direction of the flip of this move too.
bool MoveChain::sideOf(unsigned int boolean, unsigned int sum, SumSide& side) const {
    for (const RootBool::Entry& entry : rootBoolOf(boolean).getEntries())
        if (entry.sum == sum) {
            side = {sum, structure.increasingBools(sum).isIn(entry.position)};
            return true;
        }
    return false;
}

// --- Starts --------------------------------------------------------------

bool MoveChain::pickImprovingRootSum(bool freeOnly, unsigned int& sum, unsigned int& boolean) {
    if (!structure.pickImprovingBoolean(dag, quickrand, boolean)) return false;
    const std::vector<RootBool::Entry>& entries = rootBoolOf(boolean).getEntries();
    unsigned int count = 0;
    for (const RootBool::Entry& entry : entries) count += !freeOnly || isFreeSum(entry.sum);
    if (count == 0) return false;
    unsigned int chosen = quickrand.nextInt(count);
    for (const RootBool::Entry& entry : entries) {
        if (freeOnly && !isFreeSum(entry.sum)) continue;
        if (chosen-- == 0) {
            sum = entry.sum;
            return true;
        }
    }
    return false;
}

bool MoveChain::pickRandomRootSum(bool freeOnly, unsigned int& sum, unsigned int& boolean) {
    unsigned int n = freeOnly ? fixedFields.getNbFreeRootSums() : fixedFields.getNbRootSums();
    if (n == 0) return false;
    sum = quickrand.nextInt(n);
    const std::vector<unsigned int>& booleans = fixedFields.getRootSums()[sum].booleans;
    boolean = booleans[quickrand.nextInt(static_cast<unsigned int>(booleans.size()))];
    return true;
}

bool MoveChain::startPathWithRandomSum() { return startPath(false); }

bool MoveChain::startPathWithFreeSum() { return startPath(true); }

bool MoveChain::startPath(bool freeOnly) {
    unsigned int sum = 0, boolean = 0;
    if (!(decideToTarget() && pickImprovingRootSum(freeOnly, sum, boolean)) &&
        !pickRandomRootSum(freeOnly, sum, boolean))
        return false;
    // A cycle that starts on a free sum would never come back to the
    // constrained sums of its first boolean: it is anchored on one of them.
    start.sum = sum;
    if (!freeOnly && isFreeSum(sum)) {
        collectNextSums(boolean, sum);
        if (!constrainedNext.empty()) sum = constrainedNext[quickrand.nextInt(size(constrainedNext))].sum;
    }
    sideOf(boolean, sum, start);
    startBalance = start.up ? 1 : -1;
    startBoolean = boolean;
    flip(boolean);
    return true;
}

// --- Steps ---------------------------------------------------------------

// A constrained sum is not crossed back the way the head came (that would
// undo the step); a free sum may be, as trades through the objective go on.
// Cycles keep their start sum for the closing. One pass over the entries.
void MoveChain::collectNextSums(unsigned int boolean, unsigned int from) {
    constrainedNext.clear();
    freeNext.clear();
    for (const RootBool::Entry& entry : rootBoolOf(boolean).getEntries()) {
        if (returnsToStart && entry.sum == start.sum) continue;
        if (isFreeSum(entry.sum)) freeNext.push_back(entry);
        else if (entry.sum != from) constrainedNext.push_back(entry);
    }
}

bool MoveChain::selectRootSumForBool(unsigned int boolean, unsigned int from, SumSide& side) {
    collectNextSums(boolean, from);
    const std::vector<RootBool::Entry>& pool = constrainedNext.empty() ? freeNext : constrainedNext;
    if (pool.empty()) return false;
    const RootBool::Entry& entry = pool[quickrand.nextInt(size(pool))];
    side = {entry.sum, structure.increasingBools(entry.sum).isIn(entry.position)};
    return true;
}

bool MoveChain::nextRootSum(const Head& head, SumSide& side) {
    return selectRootSumForBool(head.boolean, head.from, side);
}

unsigned int MoveChain::drawOpposite(SumSide side) {
    const Bipartition& bools = structure.increasingBools(side.sum);
    unsigned int position = side.up ? bools.getRandomOut(quickrand) : bools.getRandomIn(quickrand);
    if (position == Bipartition::NONE) return KernelConstants::NO_NODE;
    return fixedFields.getRootSums()[side.sum].booleans[position];
}

unsigned int MoveChain::findOppositeBool(SumSide side, bool atMostOneConstrained) {
    for (unsigned int draw = 0; draw < OPPOSITE_DRAWS; ++draw) {
        unsigned int boolean = drawOpposite(side);
        if (boolean == KernelConstants::NO_NODE) return KernelConstants::NO_NODE;
        if (dag.isModified(boolean)) continue;
        if (atMostOneConstrained) {
            const RootBool& rootBool = rootBoolOf(boolean);
            if (rootBool.getNbRootSums() - rootBool.getNbFreeRootSums() > 1) continue;
        }
        return boolean;
    }
    return KernelConstants::NO_NODE;
}

unsigned int MoveChain::findCommonBool(SumSide a, SumSide b) {
    // Draw from the smaller of the two candidate sides: a boolean in both
    // is likelier to come up there.
    const Bipartition& bitsA = structure.increasingBools(a.sum);
    const Bipartition& bitsB = structure.increasingBools(b.sum);
    unsigned int sizeA = a.up ? bitsA.sizeOut() : bitsA.sizeIn();
    unsigned int sizeB = b.up ? bitsB.sizeOut() : bitsB.sizeIn();
    if (sizeB < sizeA) std::swap(a, b);
    for (unsigned int draw = 0; draw < COMMON_DRAWS; ++draw) {
        unsigned int boolean = drawOpposite(a);
        if (boolean == KernelConstants::NO_NODE) return KernelConstants::NO_NODE;
        SumSide other{0, false};
        if (!dag.isModified(boolean) && sideOf(boolean, b.sum, other) && other.up != b.up) return boolean;
    }
    return KernelConstants::NO_NODE;
}

bool MoveChain::walkPath(Head& head, unsigned int steps) {
    for (unsigned int step = 0; step < steps; ++step) {
        SumSide side{0, false};
        if (!nextRootSum(head, side)) return false;
        // Through a free sum the chain takes a boolean that moves at most
        // one constrained sum, which its next crossing can then settle.
        unsigned int next = findOppositeBool(side, isFreeSum(side.sum));
        if (next == KernelConstants::NO_NODE) return false;
        flipStep(next);
        head = {next, side.sum};
    }
    return true;
}

// A path should leave only free sums moved. One constrained sum still moved
// is settled by a last opposite that moves no other constrained sum. A
// boolean in several more constrained sums (every item of a knapsack with
// many capacities) cannot be settled by one flip: the path ends there and
// the evaluation judges what it did to those sums, inequalities with slack
// often taking it.
bool MoveChain::endPath(const Head& head) {
    collectNextSums(head.boolean, head.from);
    if (constrainedNext.size() != 1) return true;
    const RootBool::Entry& pending = constrainedNext[0];
    SumSide side{pending.sum, structure.increasingBools(pending.sum).isIn(pending.position)};
    unsigned int last = findOppositeBool(side, true);
    if (last == KernelConstants::NO_NODE) return false;
    flipStep(last);
    return true;
}

void MoveChain::flipStep(unsigned int boolean) {
    flip(boolean);
    SumSide side{0, false};
    if (returnsToStart && sideOf(boolean, start.sum, side)) startBalance += side.up ? 1 : -1;
}

// The booleans flipped in the start sum must move it up as often as down
// (with unit coefficients: exactly level). One flip short, a closing
// boolean cancels both the head (in a sum the head moved) and that excess.
bool MoveChain::closePath(const Head& head) {
    if (startBalance == 0) return true;
    if (startBalance != 1 && startBalance != -1) return false;
    return closeThrough(head, {start.sum, startBalance > 0});
}

// A branch of a fork cycle is closed when its head moves the start sum back
// (the branches share the cancelling of the first boolean there as they
// share it in the fork sum); otherwise it needs a closing boolean.
bool MoveChain::closeBranch(const Head& head) {
    SumSide side{0, false};
    if (sideOf(head.boolean, start.sum, side)) return side.up != start.up;
    return closeThrough(head, start);
}

bool MoveChain::closeThrough(const Head& head, SumSide excess) {
    SumSide side{0, false};
    if (!nextRootSum(head, side)) return false;
    unsigned int closing = findCommonBool(side, excess);
    if (closing == KernelConstants::NO_NODE) return false;
    flipStep(closing);
    return true;
}

bool MoveChain::fork() {
    Head first{startBoolean, start.sum};
    SumSide side{0, false};
    if (!nextRootSum(first, side)) return false;
    branches.clear();
    for (unsigned int b = 0; b < nbBranches; ++b) {
        unsigned int branch = findOppositeBool(side, false);
        if (branch == KernelConstants::NO_NODE) return false;
        flipStep(branch);
        branches.push_back({branch, side.sum});
    }
    return true;
}
