#include "solver/move/moveklforkcycle.h"

#include "solver/move/autonomousfixedfields.h"

MoveKLForkCycle::MoveKLForkCycle(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int l,
                                 unsigned int k, unsigned int utilRate, unsigned int targeting)
    : MoveChain(dag, quickrand, structure, k, "ForkCycle", utilRate, targeting, l, true) {}

bool MoveKLForkCycle::isValidK(unsigned int k, const AutonomousFixedFields& fixed) {
    return k >= 3 && fixed.getNbRootSums() != 0;
}
