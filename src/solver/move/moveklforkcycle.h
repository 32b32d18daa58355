#pragma once

#include "solver/move/movechain.h"

// A cycle whose first boolean is cancelled by l branches (2 or 3) in one
// of its sums, each branch closing back on the start sum.
class MoveKLForkCycle : public MoveChain {
public:
    MoveKLForkCycle(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int l, unsigned int k,
                    unsigned int utilRate, unsigned int targeting);
    static bool isValidK(unsigned int k, const AutonomousFixedFields& fixed);
};
