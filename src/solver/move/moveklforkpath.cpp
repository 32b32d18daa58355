#include "solver/move/moveklforkpath.h"

#include "solver/move/autonomousfixedfields.h"

MoveKLForkPath::MoveKLForkPath(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int l,
                               unsigned int k, unsigned int utilRate, unsigned int targeting)
    : MoveChain(dag, quickrand, structure, k, "ForkPath", utilRate, targeting, l, false) {}

bool MoveKLForkPath::isValidK(unsigned int k, const AutonomousFixedFields& fixed) {
    return k >= 3 && fixed.getNbFreeRootSums() != 0;
}
