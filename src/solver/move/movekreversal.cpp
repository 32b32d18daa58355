#include "solver/move/movekreversal.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"
#include "solver/move/autonomousstructure.h"

#include <algorithm>

MoveKReversal::MoveKReversal(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int utilRate,
                             unsigned int targeting)
    : MoveK(dag, quickrand, structure, 1, "Reversal", utilRate, targeting), fixedFields(structure.getFixedFields()) {}

RootBool MoveKReversal::rootBoolOf(unsigned int boolean) const {
    return fixedFields.getRootBool(dag.getFixedFields().variableIndex(boolean));
}

bool MoveKReversal::targetColumn(unsigned int& sequence, unsigned int& place) {
    unsigned int boolean = 0;
    if (!decideToTarget() || !structure.pickImprovingBoolean(dag, quickrand, boolean)) return false;
    // A boolean may be a cell of two sequences (a row and a column): one
    // of them at random.
    unsigned int count = 0, chosen = 0;
    for (const RootBool::Entry& entry : rootBoolOf(boolean).constrainedEntries()) {
        unsigned int found = fixedFields.sequenceOf(entry.sum);
        if (found == KernelConstants::NO_NODE || (sequence != KernelConstants::NO_NODE && found != sequence))
            continue;
        if (quickrand.nextInt(++count) == 0) chosen = entry.sum;
    }
    if (count == 0) return false;
    sequence = fixedFields.sequenceOf(chosen);
    place = fixedFields.placeOf(chosen);
    return true;
}

// Each end is targeted on its own: a block between two places that an
// improvement needs changed, or between one and anywhere.
bool MoveKReversal::modify() {
    const std::vector<SumSequence>& sequences = fixedFields.getSequences();
    unsigned int sequence = KernelConstants::NO_NODE, place = 0;
    if (!targetColumn(sequence, place)) {
        sequence = quickrand.nextInt(static_cast<unsigned int>(sequences.size()));
        place = quickrand.nextInt(static_cast<unsigned int>(sequences[sequence].columns.size()));
    }
    const SumSequence& chosen = sequences[sequence];
    unsigned int other = 0;
    if (!targetColumn(sequence, other) || other == place) {
        other = quickrand.nextInt(static_cast<unsigned int>(chosen.columns.size()) - 1);
        if (other >= place) ++other;
    }
    unsigned int low = std::min(place, other), high = std::max(place, other);
    bool changed = false;
    for (; low < high; ++low, --high) changed = exchangeColumns(chosen, low, high) || changed;
    return changed;
}

bool MoveKReversal::exchangeColumns(const SumSequence& sequence, unsigned int a, unsigned int b) {
    bool changed = false;
    for (int pass = 0; pass < 2; ++pass) {
        unsigned int from = pass == 0 ? a : b, to = pass == 0 ? b : a;
        const std::vector<unsigned int>& source = fixedFields.getRootSums()[sequence.columns[from]].booleans;
        const std::vector<unsigned int>& target = fixedFields.getRootSums()[sequence.columns[to]].booleans;
        // Unit coefficients: the booleans at 1 are those whose flip lowers
        // the sum.
        const Bipartition& bools = structure.increasingBools(sequence.columns[from]);
        for (unsigned int i = bools.sizeIn(); i < bools.size(); ++i) {
            unsigned int j = bools[i];
            unsigned int row = sequence.rowAt[from * sequence.nbRows + j];
            unsigned int counterpart = target[sequence.cellAt[to * sequence.nbRows + row]];
            if (dag.currentValue(counterpart) != 0) continue;
            flip(source[j]);
            flip(counterpart);
            changed = true;
        }
    }
    return changed;
}
