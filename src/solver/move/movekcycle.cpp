#include "solver/move/movekcycle.h"

#include "solver/move/autonomousfixedfields.h"

MoveKCycle::MoveKCycle(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int k,
                       unsigned int utilRate, unsigned int targeting)
    : MoveChain(dag, quickrand, structure, k, "Cycle", utilRate, targeting, 1, true) {}

bool MoveKCycle::isValidK(unsigned int k, const AutonomousFixedFields& fixed) {
    return k >= 2 && fixed.getNbRootSums() != 0;
}
