#include "solver/move/movekflip.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"
#include "solver/move/autonomousstructure.h"

MoveKFlip::MoveKFlip(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int k,
                     unsigned int utilRate, unsigned int targeting)
    : MoveK(dag, quickrand, structure, k, "Flip", utilRate, targeting) {}

bool MoveKFlip::isValidK(unsigned int k, const AutonomousFixedFields& fixed) {
    return k <= fixed.getFreeBooleans().size();
}

bool MoveKFlip::modify() {
    const AutonomousFixedFields& fixedFields = structure.getFixedFields();
    const std::vector<unsigned int>& freeBooleans = fixedFields.getFreeBooleans();
    unsigned int nbFree = static_cast<unsigned int>(freeBooleans.size());
    if (k > nbFree) return false;
    bool oneLess = false;
    unsigned int boolean = 0;
    if (targeting != 0 && quickrand.nextInt(100) < targeting &&
        structure.pickImprovingBoolean(dag, quickrand, boolean)) {
        oneLess = fixedFields.getRootBool(dag.getFixedFields().variableIndex(boolean)).isFree();
    }
    pickOtherNodesToFlip(oneLess, nbFree);
    if (oneLess) flip(boolean);
    for (unsigned int index : picked) flip(freeBooleans[index]);
    return true;
}
