#include "solver/move/movechain.h"

#include "api/kernelexception.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"
#include "solver/move/autonomousstructure.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {
// Random opposites weighed per step: enough to find one that repairs
// several sums when the sum offers a few, few enough to stay cheap.
const unsigned int OPPOSITE_DRAWS = 6;
// Flips the end of a chain may add to settle what remains.
const unsigned int FINISHING_FLIPS = 2;
// Booleans a fill looks at: a sum over many booleans offers a window of
// them from a random place, so that a fill costs the same in a knapsack of
// a hundred items or of thousands.
const unsigned int FILL_SCAN = 64;
// Flips a move usually stays within; more only grow the list once.
const unsigned int RESERVED_FLIPS = 128;
// Up to this many flips, whether a boolean is among them is found from
// the list at hand; beyond, from the graph's flags.
const std::size_t SCANNED_FLIPS = 8;

const char* const KIND_WORDS[] = {"Cycle", "Path", "ForkCycle", "ForkPath", "Fill", "DeepFill"};

long long clamp(__int128 value) {
    if (value > std::numeric_limits<long long>::max()) return std::numeric_limits<long long>::max();
    if (value < std::numeric_limits<long long>::min()) return std::numeric_limits<long long>::min();
    return static_cast<long long>(value);
}
}  // namespace

MoveChain::MoveChain(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, Shape shape, unsigned int k,
                     unsigned int utilRate, unsigned int targeting, unsigned int nbBranches)
    : MoveK(dag, quickrand, structure, k, KIND_WORDS[shape], utilRate, targeting),
      fixedFields(structure.getFixedFields()),
      shifts(structure.getShifts()),
      nbBranches(nbBranches),
      returnsToStart(shape == Cycle || shape == ForkCycle),
      fills(shape == Fill || shape == DeepFill),
      deepFills(shape == DeepFill) {
    flipped.reserve(RESERVED_FLIPS);
    bool forked = shape == ForkCycle || shape == ForkPath;
    if (forked ? nbBranches < 2 : nbBranches != 1)
        throw KernelException("src/solver/move/movechain", __LINE__, "MoveChain", "Bad argument value.");
    if (!fills) return;
    for (unsigned int sum = 0; sum < fixedFields.getNbRootSums(); ++sum)
        if (fixedFields.objectiveSign(sum) != 0) objectiveSums.push_back(sum);
    marks.assign(dag.getFixedFields().nbBooleans(), 0);
    candidates.reserve(FILL_SCAN);
    rounds.reserve(MAX_DEEP_ROUNDS);
}

bool MoveChain::isValidK(Shape shape, unsigned int k, const AutonomousFixedFields& fixed) {
    if (shape == Fill || shape == DeepFill) {
        // Fills pay where the constrained sums are wide (capacities, covers).
        // Where they are pairs on average (conflicts: x + y <= 1), a fill is
        // a swap that the chains make already, and taking the best fitting
        // boolean every time narrowed the search (maximum cliques).
        std::size_t booleans = 0;
        const unsigned int nbFree = fixed.getNbFreeRootSums(), nbSums = fixed.getNbRootSums();
        for (unsigned int sum = nbFree; sum < nbSums; ++sum) booleans += fixed.getRootSums()[sum].booleans.size();
        const bool sized = shape == Fill ? k == 1 || k == 2 : k >= 2 && k <= MAX_DEEP_ROUNDS;
        return sized && fixed.hasObjectiveSums() && nbSums > nbFree &&
               booleans >= 3 * static_cast<std::size_t>(nbSums - nbFree);
    }
    bool forked = shape == ForkCycle || shape == ForkPath;
    unsigned int sums = shape == Cycle || shape == ForkCycle ? fixed.getNbRootSums() : fixed.getNbFreeRootSums();
    return k >= (forked ? 3u : 2u) && sums != 0;
}

bool MoveChain::modify() {
    shifts.clear();
    flipped.clear();
    std::fill(brokenInFamily, brokenInFamily + AutonomousFixedFields::MAX_FAMILIES, 0u);
    if (fills) return fill();
    if (!startPath(!returnsToStart)) return false;
    unsigned int steps = k - 1;
    if (nbBranches > 1) {
        if (!fork()) return false;
        steps = nbBranches * (k - 3);
    }
    for (unsigned int step = 0; step < steps; ++step) {
        if (isDoomed(steps - step + FINISHING_FLIPS)) return false;
        Step done = settle(false);
        if (done == Stuck) return false;
        // Settled: end here half of the time, so that chains of every
        // length up to k come up, else trade and go on.
        if (done == Settled && (quickrand.nextInt(2) == 0 || !trade())) break;
    }
    return finish();
}

RootBool MoveChain::rootBoolOf(unsigned int boolean) const {
    return fixedFields.getRootBool(dag.getFixedFields().variableIndex(boolean));
}

// The bipartition holds committed values and a chain flips each boolean at
// most once, so it tells the direction of the flip of this move too.
SumSide MoveChain::sideOf(const RootBool::Entry& entry) const {
    return {entry.sum, structure.increasingBools(entry.sum).isIn(entry.position)};
}

// --- Starts --------------------------------------------------------------

bool MoveChain::pickImprovingRootSum(bool freeOnly, unsigned int& sum, RootBool& boolean) {
    unsigned int node = 0;
    if (!structure.pickImprovingBoolean(dag, quickrand, node)) return false;
    boolean = rootBoolOf(node);
    const RootBool::Entries entries = boolean.getEntries();
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

bool MoveChain::pickRandomRootSum(bool freeOnly, unsigned int& sum, RootBool& boolean) {
    unsigned int n = freeOnly ? fixedFields.getNbFreeRootSums() : fixedFields.getNbRootSums();
    if (n == 0) return false;
    sum = quickrand.nextInt(n);
    const unsigned int size = static_cast<unsigned int>(fixedFields.getRootSums()[sum].booleans.size());
    boolean = fixedFields.rootBoolAt(structure.blocksInOrder(sum)[quickrand.nextInt(size)]);
    return true;
}

bool MoveChain::pickViolatedRootSum(unsigned int& sum, RootBool& boolean) {
    const Bipartition& violated = dag.getPropagation().getViolatedConstraints();
    if (violated.sizeIn() == 0) return false;
    const DagFixedFields& fixed = dag.getFixedFields();
    const unsigned int constraint = fixed.constraints()[violated.getRandomIn(quickrand)];
    const unsigned int* children = fixed.childs(constraint);
    for (unsigned int c = 0; c < fixed.nbChilds(constraint); ++c) {
        const unsigned int index = fixedFields.rootSumIndex(children[c]);
        if (index == KernelConstants::NO_NODE || isFreeSum(index)) continue;
        const SumRange& range = fixedFields.getRange(index);
        if (!range.ranged) continue;
        const long long value = dag.currentValue(children[c]);
        if (value >= range.lowest && value <= range.highest) continue;
        // A boolean moving the sum toward its range: from the increasing
        // part below it, from the other above.
        const Bipartition& bools = structure.increasingBools(index);
        const bool below = value < range.lowest;
        const unsigned int n = below ? bools.sizeIn() : bools.sizeOut();
        if (n == 0) continue;
        sum = index;
        boolean = fixedFields.rootBoolAt(structure.blocksInOrder(index)[(below ? 0 : bools.sizeIn()) + quickrand.nextInt(n)]);
        return true;
    }
    return false;
}

bool MoveChain::startPath(bool freeOnly) {
    unsigned int sum = 0;
    RootBool boolean;
    const bool targeted = decideToTarget();
    const bool repairing = targeted && violationTargeting && !freeOnly && pickViolatedRootSum(sum, boolean);
    if (!repairing && !(targeted && pickImprovingRootSum(freeOnly, sum, boolean)) &&
        !pickRandomRootSum(freeOnly, sum, boolean))
        return false;
    // A cycle that starts on a free sum would never come back to the
    // constrained sums of its first boolean: it is anchored on one of them.
    if (!freeOnly && isFreeSum(sum)) {
        const RootBool::Entries entries = boolean.getEntries();
        unsigned int constrained = 0;
        for (const RootBool::Entry& entry : entries) constrained += !isFreeSum(entry.sum);
        if (constrained > 0) {
            unsigned int chosen = quickrand.nextInt(constrained);
            for (const RootBool::Entry& entry : entries)
                if (!isFreeSum(entry.sum) && chosen-- == 0) sum = entry.sum;
        }
    }
    startSum = sum;
    flipStep(boolean, dag.currentValue(boolean.getNode()));
    return true;
}

// --- Steps ---------------------------------------------------------------

void MoveChain::flipStep(RootBool rootBool, long long value) {
    flipFrom(rootBool.getNode(), value);
    lastFlipped = rootBool;
    flipped.push_back(rootBool);
    // Free sums are never unsettled: only the constrained ones are tracked.
    for (const RootBool::Entry& entry : rootBool.constrainedEntries()) shiftSum(entry.sum, shiftOf(entry, value));
}

void MoveChain::shiftSum(unsigned int sum, long long delta) {
    shifts.add(sum, delta);
    const long long broken = excess(sum, shifts[sum]);
    shifts.setExcess(sum, broken);
    if (shifts.setUnsettled(sum, broken > 0)) {
        const unsigned char family = fixedFields.familyOf(sum);
        if (family != AutonomousFixedFields::NO_FAMILY) {
            if (broken > 0) ++brokenInFamily[family];
            else --brokenInFamily[family];
        }
    }
}

long long MoveChain::repair(RootBool rootBool, long long value) const {
    __int128 gain = 0;
    unsigned int skipped = weighStart ? KernelConstants::NO_NODE : startSum;
    for (const RootBool::Entry& entry : rootBool.constrainedEntries()) {
        if (entry.sum == skipped) continue;
        long long shift = shifts[entry.sum], step = shiftOf(entry, value), moved = 0;
        if (__builtin_add_overflow(shift, step, &moved))
            moved = step > 0 ? std::numeric_limits<long long>::max() : std::numeric_limits<long long>::min();
        gain += static_cast<__int128>(shifts.excessOf(entry.sum)) - excess(entry.sum, moved);
    }
    return clamp(gain);
}

long long MoveChain::worthOf(RootBool rootBool, long long value) const {
    __int128 worth = 0;
    for (const RootBool::Entry& entry : rootBool.freeEntries())
        worth += static_cast<__int128>(fixedFields.objectiveSign(entry.sum)) * shiftOf(entry, value);
    return clamp(worth);
}

unsigned int MoveChain::nbOpposites(SumSide side) const {
    const Bipartition& bools = structure.increasingBools(side.sum);
    return side.up ? bools.sizeOut() : bools.sizeIn();
}

RootBool MoveChain::oppositeAt(SumSide side, unsigned int i) const {
    const Bipartition& bools = structure.increasingBools(side.sum);
    return fixedFields.rootBoolAt(structure.blocksInOrder(side.sum)[(side.up ? bools.sizeIn() : 0) + i]);
}

bool MoveChain::isFlipped(RootBool rootBool) const {
    // A long move (a fill) asks the graph rather than scan its flips.
    if (flipped.size() > SCANNED_FLIPS) return dag.isModified(rootBool.getNode());
    for (RootBool other : flipped)
        if (other.isSame(rootBool)) return true;
    return false;
}

// An unflipped opposite's committed value follows from the way its flip
// moves the side's sum, which the bipartition told: reading it here spares
// a load from the graph.
long long MoveChain::valueAsOpposite(RootBool rootBool, SumSide side) const {
    // Where the sum's coefficients share a sign, the side alone tells.
    const int sign = fixedFields.coefficientSign(side.sum);
    if (sign != 0) return (sign > 0) == side.up ? 1 : 0;
    for (const RootBool::Entry& entry : rootBool.getEntries())
        if (entry.sum == side.sum) return (entry.coefficient > 0) == side.up ? 1 : 0;
    return 0;
}

MoveChain::Opposite MoveChain::bestOpposite(SumSide side, long long enough, bool weighWorth) {
    const Bipartition& bools = structure.increasingBools(side.sum);
    unsigned int n = nbOpposites(side);
    if (n == 0) return Opposite();
    // Few opposites are all weighed, from a random one on so that ties do
    // not always go the same way; many are sampled. Among those repairing
    // as much, the one best for the objectives wins (the cheaper column,
    // the item of less value).
    const bool all = n <= OPPOSITE_DRAWS;
    const unsigned int first = side.up ? bools.sizeIn() : 0, offset = quickrand.nextInt(n);
    const unsigned int nbDraws = all ? n : OPPOSITE_DRAWS;
    RootBool drawn[OPPOSITE_DRAWS];
    drawOpposites(side, first, n, offset, drawn);
    Opposite best;
    long long bestGain = std::numeric_limits<long long>::min(), bestWorth = 0;
    weighWorth = weighWorth && fixedFields.hasObjectiveSums();
    for (unsigned int draw = 0; draw < nbDraws; ++draw) {
        // The weighing loop draws as it goes, the same values as drawn
        // ahead: the generator ends where a loop stopping early leaves it.
        if (!all && draw != 0) quickrand.nextInt(n);
        const RootBool rootBool = drawn[draw];
        if (isFlipped(rootBool)) continue;
        const long long value = valueAsOpposite(rootBool, side);
        long long gain = repair(rootBool, value);
        if (best.rootBool.exists() && gain < bestGain) continue;
        long long worth = weighWorth ? worthOf(rootBool, value) : 0;
        if (!best.rootBool.exists() || gain > bestGain || worth > bestWorth) {
            best = {rootBool, value};
            bestGain = gain;
            bestWorth = worth;
            // Nothing repairs more; one that costs the objectives nothing
            // either cannot be bettered.
            if (gain >= enough && worth >= 0) break;
        }
    }
    return best;
}

// The opposites weighed lie anywhere in the graph. Gathered before any is
// weighed (the sampled ones drawn on a copy of the generator, the same
// values the weighing loop draws next), their blocks are asked for
// together, so that the misses overlap instead of queueing.
void MoveChain::drawOpposites(SumSide side, unsigned int first, unsigned int n, unsigned int offset,
                              RootBool* drawn) const {
    const unsigned int* blocks = structure.blocksInOrder(side.sum) + first;
    if (n <= OPPOSITE_DRAWS) {
        for (unsigned int draw = 0; draw < n; ++draw) {
            drawn[draw] = fixedFields.rootBoolAt(blocks[(offset + draw) % n]);
            drawn[draw].prefetch();
        }
        return;
    }
    // The state alone: copying the generator would copy its scratch lists.
    Quickrand ahead(quickrand.getState());
    for (unsigned int draw = 0; draw < OPPOSITE_DRAWS; ++draw) {
        drawn[draw] = fixedFields.rootBoolAt(blocks[draw == 0 ? offset : ahead.nextInt(n)]);
        drawn[draw].prefetch();
    }
}

MoveChain::Step MoveChain::settle(bool withStart) {
    weighStart = withStart || !returnsToStart;
    const std::vector<unsigned int>& unsettled = shifts.getUnsettled();
    unsigned int n = static_cast<unsigned int>(unsettled.size());
    // The scan starts at a random place so that ties do not always go to
    // the sums touched first.
    unsigned int offset = n > 1 ? quickrand.nextInt(n) : 0;
    SumSide chosen{0, false};
    unsigned int fewest = std::numeric_limits<unsigned int>::max();
    // No flip repairs more than everything unsettled: an opposite that
    // does ends the search for one.
    __int128 total = 0;
    for (unsigned int i = 0; i < n; ++i) {
        unsigned int sum = unsettled[(i + offset) % n];
        if (returnsToStart && !withStart && sum == startSum) continue;
        total += shifts.excessOf(sum);
        SumSide side{sum, shifts[sum] > 0};
        unsigned int count = nbOpposites(side);
        if (count < fewest) {
            fewest = count;
            chosen = side;
        }
    }
    if (fewest == std::numeric_limits<unsigned int>::max()) return Settled;
    const Opposite opposite = bestOpposite(chosen, clamp(total), true);
    if (!opposite.rootBool.exists()) return Stuck;
    flipStep(opposite.rootBool, opposite.value);
    return Moved;
}

bool MoveChain::pickFreeSide(RootBool boolean, SumSide& side) {
    RootBool::Entries entries = boolean.freeEntries();
    unsigned int n = entries.size();
    if (n == 0) return false;
    unsigned int i = quickrand.nextInt(n);
    // A cycle never crosses its start sum before closing.
    if (returnsToStart && entries.first[i].sum == startSum) {
        if (n == 1) return false;
        i = (i + 1) % n;
    }
    side = sideOf(entries.first[i]);
    return true;
}

bool MoveChain::trade() {
    weighStart = !returnsToStart;
    SumSide side{0, false};
    if (!pickFreeSide(lastFlipped, side)) return false;
    const Opposite opposite = bestOpposite(side, 0, false);
    if (!opposite.rootBool.exists()) return false;
    flipStep(opposite.rootBool, opposite.value);
    return true;
}

// The fork goes through the unsettled sum with the fewest opposites, or
// through a free sum when the first boolean broke nothing.
bool MoveChain::fork() {
    weighStart = !returnsToStart;
    SumSide side{0, false};
    unsigned int fewest = std::numeric_limits<unsigned int>::max();
    for (const RootBool::Entry& entry : lastFlipped.constrainedEntries()) {
        if ((returnsToStart && entry.sum == startSum) || shifts.excessOf(entry.sum) <= 0) continue;
        unsigned int count = nbOpposites(sideOf(entry));
        if (count < fewest) {
            fewest = count;
            side = sideOf(entry);
        }
    }
    if (fewest == std::numeric_limits<unsigned int>::max() && !pickFreeSide(lastFlipped, side)) return false;
    for (unsigned int b = 0; b < nbBranches; ++b) {
        const Opposite opposite = bestOpposite(side, std::numeric_limits<long long>::max(), false);
        if (!opposite.rootBool.exists()) return false;
        flipStep(opposite.rootBool, opposite.value);
    }
    return true;
}

bool MoveChain::isDoomed(unsigned int flipsLeft) const {
    for (unsigned int family = 0; family < fixedFields.getNbFamilies(); ++family)
        if (brokenInFamily[family] > flipsLeft) return true;
    return false;
}

bool MoveChain::finish() {
    if (isDoomed(FINISHING_FLIPS)) return false;
    for (unsigned int extra = 0; extra < FINISHING_FLIPS; ++extra) {
        Step done = settle(true);
        if (done == Settled) return true;
        if (done == Stuck) break;
    }
    // Sums kept level only for want of a known range may have moved: the
    // evaluation judges those. A broken range is refused here.
    for (unsigned int sum : shifts.getUnsettled())
        if (fixedFields.getRange(sum).ranged) return false;
    return true;
}

// --- Fill ----------------------------------------------------------------

bool MoveChain::fill() {
    if (objectiveSums.empty()) return false;
    const unsigned int sum = objectiveSums[quickrand.nextInt(static_cast<unsigned int>(objectiveSums.size()))];
    // The opposites of the side that gains on the objective are the
    // booleans whose flip loses: the packed items of a maximised sum.
    const SumSide gaining{sum, fixedFields.objectiveSign(sum) > 0};
    const unsigned int n = nbOpposites(gaining);
    if (n == 0 || (!deepFills && n < k)) return false;
    if (!deepFills) {
        for (unsigned int opened = 0; opened < k; ++opened) giveUp(gaining, n);
        return fillRoom(nullptr) != 0 && finish();
    }
    // Rounds of giving one up and filling, as far as k of them; the move
    // keeps the rounds up to the one that ends best. A round may lose (the
    // item given up worth more than what its room takes in) and the next
    // gain more than that back: an exchange of several items for several
    // that no single round finds from a local optimum.
    rounds.clear();
    __int128 worth = 0, bestWorth = 0;
    std::size_t bestEnd = 0;
    for (unsigned int round = 0; round < k; ++round) {
        const std::size_t before = flipped.size();
        if (!giveUp(gaining, n)) break;
        const RootBool opened = flipped.back();
        fillRoom(&opened);
        for (std::size_t f = before; f < flipped.size(); ++f)
            worth += worthOf(flipped[f], dag.currentValue(flipped[f].getNode()));
        const bool settled = shifts.getUnsettled().empty();
        rounds.push_back({flipped.size(), clamp(worth), settled});
        if (settled && (bestEnd == 0 || worth > bestWorth)) {
            bestWorth = worth;
            bestEnd = flipped.size();
        }
    }
    if (bestEnd == 0) return false;
    while (flipped.size() > bestEnd) unflipLast();
    return finish();
}

bool MoveChain::giveUp(SumSide gaining, unsigned int n) {
    // Drawn again while flipped already; a few times only, since deep fills
    // may have given up most of a small sum.
    for (unsigned int draw = 0; draw < 8; ++draw) {
        const RootBool boolean = oppositeAt(gaining, quickrand.nextInt(n));
        if (isFlipped(boolean)) continue;
        flipStep(boolean, valueAsOpposite(boolean, gaining));
        return true;
    }
    return false;
}

void MoveChain::unflipLast() {
    const RootBool rootBool = flipped.back();
    const long long value = dag.currentValue(rootBool.getNode());
    flipped.pop_back();
    dag.getPropagation().unmodifyLastVariable(dag);
    for (const RootBool::Entry& entry : rootBool.constrainedEntries()) {
        const long long step = shiftOf(entry, value);
        shiftSum(entry.sum, step == std::numeric_limits<long long>::min() ? std::numeric_limits<long long>::max() : -step);
    }
    if (!flipped.empty()) lastFlipped = flipped.back();
}

unsigned int MoveChain::fillRoom(const RootBool* opened) {
    // The candidates move a sum that the opening moved back the other way
    // (they use the room it left) and gain on the objectives; a boolean of
    // several such sums is weighed once.
    if (++stamp == 0) {
        std::fill(marks.begin(), marks.end(), 0);
        stamp = 1;
    }
    candidates.clear();
    const DagFixedFields& fixed = dag.getFixedFields();
    unsigned int scanned = 0;
    auto scan = [&](SumSide side) {
        const unsigned int m = nbOpposites(side);
        if (m == 0) return;
        const unsigned int offset = quickrand.nextInt(m);
        for (unsigned int i = 0; i < m && scanned < FILL_SCAN; ++i) {
            const RootBool rootBool = oppositeAt(side, (offset + i) % m);
            unsigned int& mark = marks[fixed.variableIndex(rootBool.getNode())];
            if (mark == stamp) continue;
            mark = stamp;
            ++scanned;
            if (isFlipped(rootBool)) continue;
            const long long value = valueAsOpposite(rootBool, side);
            const long long worth = worthOf(rootBool, value);
            if (worth > 0 && fits(rootBool, value))
                candidates.push_back({static_cast<double>(worth) / usage(rootBool, value), rootBool, value});
        }
    };
    if (opened == nullptr) {
        for (unsigned int touched : shifts.getTouched())
            if (shifts[touched] != 0) scan({touched, shifts[touched] > 0});
    } else {
        // A deep fill's later rounds: the sums may have moved either way in
        // all, and the room is the one this give-up left.
        const long long value = dag.currentValue(opened->getNode());
        for (const RootBool::Entry& entry : opened->constrainedEntries()) scan({entry.sum, shiftOf(entry, value) > 0});
    }
    // The best worth per room used that still fits, again and again. The
    // room only shrinks as the fill goes (in a knapsack, a set cover), so
    // a candidate that no longer fits is dropped for good.
    unsigned int taken = 0;
    while (!candidates.empty()) {
        unsigned int best = 0;
        for (unsigned int c = 0; c < candidates.size();) {
            if (taken != 0 && !fits(candidates[c].rootBool, candidates[c].value)) {
                candidates[c] = candidates.back();
                candidates.pop_back();
                continue;
            }
            if (candidates[c].ratio > candidates[best].ratio) best = c;
            ++c;
        }
        if (candidates.empty()) break;
        flipStep(candidates[best].rootBool, candidates[best].value);
        ++taken;
        candidates[best] = candidates.back();
        candidates.pop_back();
    }
    return taken;
}

// The share of the room left in each sum that the flip would take, summed:
// a flip filling a tight sum costs more than one filling a loose one.
double MoveChain::usage(RootBool rootBool, long long value) const {
    double used = 1e-9;
    for (const RootBool::Entry& entry : rootBool.constrainedEntries()) {
        const long long step = shiftOf(entry, value);
        const long long room = structure.roomBeyond(entry.sum, shifts[entry.sum], step > 0);
        used += std::fabs(static_cast<double>(step)) / static_cast<double>(room > 0 ? room : 1);
    }
    return used;
}

bool MoveChain::fits(RootBool rootBool, long long value) const {
    for (const RootBool::Entry& entry : rootBool.constrainedEntries()) {
        long long moved = 0;
        if (__builtin_add_overflow(shifts[entry.sum], shiftOf(entry, value), &moved)) return false;
        if (excess(entry.sum, moved) > shifts.excessOf(entry.sum)) return false;
    }
    return true;
}
