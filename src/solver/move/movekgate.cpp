#include "solver/move/movekgate.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"
#include "solver/move/autonomousstructure.h"

#include <algorithm>

namespace {
// Draws of a gate in the wanted state before giving up: enough to find one
// of ten open sites among a hundred almost always.
const int GATE_DRAWS = 32;
// Draws of a gate to balance a sum of gates.
const int PARTNER_DRAWS = 16;
// Gates one move may flip (a few sums of gates to balance at most).
const std::size_t MAX_FLIPPED = 16;
// Open gates compared when a gate to close is targeted.
const unsigned int TARGET_DRAWS = 3;
const long long MAX_LL = 9223372036854775807LL;

long long clamp(__int128 v) { return v > MAX_LL ? MAX_LL : v < -MAX_LL ? -MAX_LL : static_cast<long long>(v); }
}  // namespace

MoveKGate::MoveKGate(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, Kind kind,
                     unsigned int utilRate, unsigned int targeting)
    : MoveK(dag, quickrand, structure, 1, kind == Close ? "GateClose" : kind == Open ? "GateOpen" : "GateSwap",
            utilRate, targeting),
      kind(kind), fixedFields(structure.getFixedFields()), gates(fixedFields.getGates()),
      shifts(structure.getShifts()) {
    flipped.reserve(MAX_FLIPPED);
}

bool MoveKGate::isValidSwap(const AutonomousFixedFields& fixed) {
    const GateLinks& gates = fixed.getGates();
    if (!isValid(fixed)) return false;
    for (unsigned int gate = 0; gate < gates.size(); ++gate) {
        if (gates.isGroup(gate)) continue;
        unsigned int rank = fixed.getFixedFields().variableIndex(gates.gateNode(gate));
        for (const RootBool::Entry& entry : fixed.getRootBool(rank).constrainedEntries())
            if (gates.capacityOf(entry.sum) == nullptr) return false;
    }
    return true;
}

RootBool MoveKGate::rootBoolOf(unsigned int boolean) const {
    return fixedFields.getRootBool(dag.getFixedFields().variableIndex(boolean));
}

bool MoveKGate::isFeasible() const { return dag.getPropagation().getActiveConstraints().sizeOut() == 0; }

unsigned int MoveKGate::drawGate(bool open) {
    // Targeted, a gate to close is the one that holds the fewest of a few
    // drawn: the emptiest bin or site, the smallest colour class, whose
    // contents are the likeliest to find room elsewhere.
    const unsigned int wanted = open && decideToTarget() ? TARGET_DRAWS : 1;
    unsigned int best = KernelConstants::NO_NODE, bestHeld = 0, found = 0;
    for (int draw = 0; draw < GATE_DRAWS && found < wanted; ++draw) {
        unsigned int gate = quickrand.nextInt(gates.size());
        if ((dag.currentValue(gates.gateNode(gate)) != 0) != open) continue;
        ++found;
        unsigned int held = 0;
        if (wanted > 1)
            for (unsigned int boolean : gates.gated(gate)) held += dag.currentValue(boolean) != 0;
        if (best == KernelConstants::NO_NODE || held < bestHeld) {
            best = gate;
            bestHeld = held;
        }
    }
    return best;
}

bool MoveKGate::set(unsigned int boolean, long long value) {
    if (dag.newValue(boolean) == value) return true;
    if (dag.isModified(boolean)) return false;
    flip(boolean);
    for (const RootBool::Entry& entry : rootBoolOf(boolean).constrainedEntries())
        shifts.add(entry.sum, value != 0 ? entry.coefficient : -entry.coefficient);
    return true;
}

long long MoveKGate::excessChange(const RootBool::Entry& entry, long long delta) const {
    long long shift = shifts[entry.sum];
    if (const GateLinks::Capacity* capacity = gates.capacityOf(entry.sum)) {
        // Its constraint compares it with the gate's value in the move, not
        // with a constant.
        __int128 limit = static_cast<__int128>(capacity->capacity) * dag.newValue(gates.gateNode(capacity->gate));
        __int128 value = static_cast<__int128>(dag.currentValue(fixedFields.getRootSums()[entry.sum].node)) + shift;
        __int128 before = std::max<__int128>(0, value - limit), after = std::max<__int128>(0, value + delta - limit);
        return clamp(after - before);
    }
    long long moved = 0;
    if (__builtin_add_overflow(shift, delta, &moved)) moved = delta > 0 ? MAX_LL : -MAX_LL;
    return structure.excess(entry.sum, moved) - structure.excess(entry.sum, shift);
}

long long MoveKGate::roomLeft(const RootBool::Entry& entry, long long delta) const {
    __int128 limit = 0;
    if (const GateLinks::Capacity* capacity = gates.capacityOf(entry.sum)) {
        limit = static_cast<__int128>(capacity->capacity) * dag.newValue(gates.gateNode(capacity->gate));
    } else {
        const SumRange& range = fixedFields.getRange(entry.sum);
        if (!range.ranged || !range.followsBooleans || range.highest == MAX_LL) return 0;
        limit = range.highest;
    }
    __int128 value = static_cast<__int128>(dag.currentValue(fixedFields.getRootSums()[entry.sum].node)) +
                     shifts[entry.sum] + delta;
    return clamp(std::max<__int128>(0, limit - value));
}

long long MoveKGate::gainOf(const RootBool& rootBool) const {
    __int128 gain = 0;
    for (const RootBool::Entry& entry : rootBool.freeEntries())
        gain += static_cast<__int128>(fixedFields.objectiveSign(entry.sum)) * entry.coefficient;
    return clamp(gain);
}

bool MoveKGate::isOpen(unsigned int gate) const {
    if (!gates.isGroup(gate)) return dag.newValue(gates.gateNode(gate)) != 0;
    // A group's node is evaluated only later: open as committed, but for
    // the group the move empties or fills.
    return gate == openedGroup || (gate != closedGroup && dag.currentValue(gates.gateNode(gate)) != 0);
}

bool MoveKGate::gatesOpen(unsigned int booleanRank) const {
    for (unsigned int gate : gates.gatesOf(booleanRank))
        if (!isOpen(gate)) return false;
    return true;
}

bool MoveKGate::balanceGate(unsigned int gate) {
    const unsigned int node = gates.gateNode(gate);
    const bool opening = dag.newValue(node) != 0;
    for (const RootBool::Entry& entry : rootBoolOf(node).constrainedEntries()) {
        if (gates.capacityOf(entry.sum) != nullptr) continue;
        long long delta = opening ? entry.coefficient : -entry.coefficient;
        if (excessChange(entry, -delta) >= 0) continue;  // the flip did not break it
        // A gate moving the sum back: one at 0 when the flip lowered a
        // sum of positive coefficients, and so on.
        const Bipartition& bools = structure.increasingBools(entry.sum);
        const std::vector<unsigned int>& members = fixedFields.getRootSums()[entry.sum].booleans;
        unsigned int partner = KernelConstants::NO_NODE;
        for (int draw = 0; draw < PARTNER_DRAWS && partner == KernelConstants::NO_NODE; ++draw) {
            unsigned int position = delta < 0 ? bools.getRandomIn(quickrand) : bools.getRandomOut(quickrand);
            if (position == Bipartition::NONE) break;
            unsigned int candidate = gates.gateOf(dag.getFixedFields().variableIndex(members[position]));
            if (candidate != KernelConstants::NO_NODE && !dag.isModified(members[position])) partner = candidate;
        }
        if (partner == KernelConstants::NO_NODE || flipped.size() == flipped.capacity()) return false;
        set(gates.gateNode(partner), 1 - dag.currentValue(gates.gateNode(partner)));
        flipped.push_back(partner);
    }
    return true;
}

bool MoveKGate::replace(unsigned int boolean) {
    for (const RootBool::Entry& entry : rootBoolOf(boolean).constrainedEntries()) {
        // Only a sum that the boolean's leaving broke, and for a boolean that
        // counted in it.
        if (entry.coefficient <= 0 || gates.capacityOf(entry.sum) != nullptr) continue;
        if (excessChange(entry, entry.coefficient) >= 0) continue;
        const Bipartition& bools = structure.increasingBools(entry.sum);
        const RootSum& sum = fixedFields.getRootSums()[entry.sum];
        unsigned int best = KernelConstants::NO_NODE, ties = 0;
        long long bestExcess = 0, bestGain = 0, bestRoom = 0;
        for (unsigned int i = 0; i < bools.sizeIn(); ++i) {
            unsigned int position = bools[i];
            unsigned int candidate = sum.booleans[position];
            if (sum.coefficientAt(position) <= 0 || dag.isModified(candidate)) continue;
            unsigned int rank = dag.getFixedFields().variableIndex(candidate);
            if (!gatesOpen(rank)) continue;
            const RootBool& rootBool = fixedFields.getRootBool(rank);
            __int128 excess = 0, room = 0;
            // The sum being refilled is left out: what counts is what the
            // candidate breaks elsewhere.
            for (const RootBool::Entry& other : rootBool.constrainedEntries()) {
                if (other.sum != entry.sum) excess += excessChange(other, other.coefficient);
                room += roomLeft(other, other.coefficient);
            }
            long long added = clamp(excess), gain = gainOf(rootBool), left = clamp(room);
            // Fewest broken constraints, then the best objective, then the
            // fullest capacity (best fit: the room left stays in one piece).
            int order = best == KernelConstants::NO_NODE ? -1
                        : added != bestExcess        ? (added < bestExcess ? -1 : 1)
                        : gain != bestGain           ? (gain > bestGain ? -1 : 1)
                        : left != bestRoom           ? (left < bestRoom ? -1 : 1)
                                                     : 0;
            if (order > 0) continue;
            if (order < 0) ties = 0;
            if (quickrand.nextInt(++ties) != 0) continue;
            best = candidate;
            bestExcess = added;
            bestGain = gain;
            bestRoom = left;
        }
        if (best == KernelConstants::NO_NODE) return false;
        set(best, 1);
        if (bestExcess > 0) return false;
    }
    return true;
}

bool MoveKGate::empty(unsigned int gate) {
    bool whole = true;
    for (unsigned int boolean : gates.gated(gate))
        if (dag.newValue(boolean) != 0 && set(boolean, 0)) whole = replace(boolean) && whole;
    return whole;
}

unsigned int MoveKGate::takeOver(unsigned int gate) {
    unsigned int taken = 0;
    const DagFixedFields& fixed = dag.getFixedFields();
    for (unsigned int boolean : gates.gated(gate)) {
        if (dag.newValue(boolean) != 0 || dag.isModified(boolean)) continue;
        unsigned int rank = fixed.variableIndex(boolean);
        if (!gatesOpen(rank)) continue;
        const RootBool& rootBool = fixedFields.getRootBool(rank);
        // The boolean it displaces: a holder of the first sum that its
        // arrival overfills and that must hold some (the other choice of a
        // one-of-many row).
        unsigned int holder = KernelConstants::NO_NODE;
        for (const RootBool::Entry& entry : rootBool.constrainedEntries()) {
            if (entry.coefficient <= 0 || gates.capacityOf(entry.sum) != nullptr) continue;
            // A row that must keep some boolean: not a conflict between two.
            if (fixedFields.getRange(entry.sum).lowest <= 0 || excessChange(entry, entry.coefficient) <= 0) continue;
            const Bipartition& bools = structure.increasingBools(entry.sum);
            const RootSum& sum = fixedFields.getRootSums()[entry.sum];
            for (unsigned int i = bools.sizeIn(); i < bools.size() && holder == KernelConstants::NO_NODE; ++i) {
                unsigned int other = sum.booleans[bools[i]];
                if (sum.coefficientAt(bools[i]) > 0 && !dag.isModified(other)) holder = other;
            }
            break;
        }
        __int128 change = 0, gain = gainOf(rootBool);
        // Weighed with the holder gone, then the holder is put back.
        if (holder != KernelConstants::NO_NODE) {
            const RootBool& held = rootBoolOf(holder);
            for (const RootBool::Entry& entry : held.constrainedEntries()) {
                change += excessChange(entry, -entry.coefficient);
                shifts.add(entry.sum, -entry.coefficient);
            }
            gain -= gainOf(held);
        }
        for (const RootBool::Entry& entry : rootBool.constrainedEntries())
            change += excessChange(entry, entry.coefficient);
        if (holder != KernelConstants::NO_NODE)
            for (const RootBool::Entry& entry : rootBoolOf(holder).constrainedEntries())
                shifts.add(entry.sum, entry.coefficient);
        if (change > 0 || (change == 0 && gain <= 0)) continue;
        if (holder != KernelConstants::NO_NODE) set(holder, 0);
        set(boolean, 1);
        ++taken;
    }
    return taken;
}

bool MoveKGate::flipGates() {
    const unsigned int none = KernelConstants::NO_NODE;
    const unsigned int closed = kind != Open ? drawGate(true) : none;
    const unsigned int opened = kind != Close ? drawGate(false) : none;
    if ((kind != Open && closed == none) || (kind != Close && opened == none)) return false;
    for (unsigned int gate : {closed, opened}) {
        if (gate == none) continue;
        const bool opening = gate == opened;
        if (gates.isGroup(gate)) {
            // No boolean of its own: the move only empties or fills it.
            (opening ? openedGroup : closedGroup) = gate;
            continue;
        }
        set(gates.gateNode(gate), opening ? 1 : 0);
        flipped.push_back(gate);
    }
    // The sums of gates that the flips leave broken get gates flipping the
    // other way (they join the list).
    for (std::size_t i = 0, n = flipped.size(); i < n; ++i)
        if (!balanceGate(flipped[i])) return false;
    return true;
}

bool MoveKGate::moveContents() {
    // Closed gates are emptied first, so that what they held may go to the
    // opened ones; then the opened ones take over.
    bool whole = true, closedSome = closedGroup != KernelConstants::NO_NODE;
    for (unsigned int gate : flipped)
        if (dag.newValue(gates.gateNode(gate)) == 0) {
            whole = empty(gate) && whole;
            closedSome = true;
        }
    if (closedGroup != KernelConstants::NO_NODE) whole = empty(closedGroup) && whole;
    unsigned int taken = 0;
    for (unsigned int gate : flipped)
        if (dag.newValue(gates.gateNode(gate)) != 0) taken += takeOver(gate);
    if (openedGroup != KernelConstants::NO_NODE) taken += takeOver(openedGroup);
    // Opening alone, to take nothing over, only costs. While every
    // constraint is hard, a short or overfilled sum would only be refused
    // by the evaluation.
    return (closedSome || taken > 0) && (whole || !isFeasible());
}

bool MoveKGate::modify() {
    // A swap trades a gate for a gate, mostly at no cost: while infeasible
    // such moves are all accepted and crowd out the repairs.
    if (kind == Swap && !isFeasible()) return false;
    shifts.clear();
    flipped.clear();
    closedGroup = openedGroup = KernelConstants::NO_NODE;
    // Every gate flips before anything is re-placed, so that the choices
    // see which gates stay open.
    const bool built = flipGates() && moveContents();
    shifts.clear();
    return built;
}
