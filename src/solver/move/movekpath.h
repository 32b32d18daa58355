#pragma once

#include "solver/move/movechain.h"

// A chain from a free root sum to free sums only (k >= 2 steps).
class MoveKPath : public MoveChain {
public:
    MoveKPath(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int k,
              unsigned int utilRate, unsigned int targeting);
    static bool isValidK(unsigned int k, const AutonomousFixedFields& fixed);
};
