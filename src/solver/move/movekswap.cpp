#include "solver/move/movekswap.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"
#include "solver/move/autonomousstructure.h"

MoveKSwap::MoveKSwap(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int k,
                     unsigned int utilRate, unsigned int targeting)
    : MoveK(dag, quickrand, structure, k, "Swap", utilRate, targeting) {}

bool MoveKSwap::isValidK(unsigned int k, const AutonomousFixedFields& fixed) {
    return 2 * static_cast<unsigned long long>(k) <= fixed.getMonoConstrainedBooleans().size();
}

bool MoveKSwap::modify() {
    const AutonomousFixedFields& fixedFields = structure.getFixedFields();
    const std::vector<unsigned int>& mono = fixedFields.getMonoConstrainedBooleans();
    unsigned int nbMono = static_cast<unsigned int>(mono.size());
    if (2 * static_cast<unsigned long long>(k) > nbMono) return false;
    unsigned int boolean = KernelConstants::NO_NODE;
    if (decideToTarget() && structure.pickImprovingBoolean(dag, quickrand, boolean) &&
        fixedFields.getRootBool(dag.getFixedFields().variableIndex(boolean)).isMonoConstrained()) {
        // Node 0 as the target picks a full k: kept as the original rule has it.
        pickOtherNodesToFlip(boolean != 0, nbMono);
        if (boolean != KernelConstants::NO_NODE) flipWithOpposite(boolean);
    } else {
        pickOtherNodesToFlip(true, nbMono);
    }
    for (unsigned int index : picked) flipWithOpposite(mono[index]);
    return true;
}

void MoveKSwap::flipWithOpposite(unsigned int variable) {
    if (wholePairs && dag.isModified(variable)) return;
    unsigned int opposite = oppositeOf(variable);
    if (wholePairs && opposite != KernelConstants::NO_NODE && dag.isModified(opposite)) return;
    flip(variable);
    if (opposite != KernelConstants::NO_NODE) flip(opposite);
}

unsigned int MoveKSwap::oppositeOf(unsigned int variable) {
    const RootBool& rootBool = structure.getFixedFields().getRootBool(dag.getFixedFields().variableIndex(variable));
    unsigned int nbSums = rootBool.getNbRootSums();
    // The constrained sum comes last (free sums are listed first); with no
    // constrained sum any of them will do.
    unsigned int entry = nbSums > rootBool.getNbFreeRootSums() ? nbSums - 1 : quickrand.nextInt(nbSums);
    return structure.getOppositeBool(variable, entry, quickrand);
}
