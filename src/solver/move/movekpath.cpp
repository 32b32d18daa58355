#include "solver/move/movekpath.h"

#include "solver/move/autonomousfixedfields.h"

MoveKPath::MoveKPath(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int k,
                     unsigned int utilRate, unsigned int targeting)
    : MoveChain(dag, quickrand, structure, k, "Path", utilRate, targeting, 1, false) {}

bool MoveKPath::isValidK(unsigned int k, const AutonomousFixedFields& fixed) {
    return k >= 2 && fixed.getNbFreeRootSums() != 0;
}
