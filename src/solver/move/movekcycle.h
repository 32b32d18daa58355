#pragma once

#include "solver/move/movechain.h"

// A chain from a random root sum back to it (k >= 2 steps).
class MoveKCycle : public MoveChain {
public:
    MoveKCycle(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int k,
               unsigned int utilRate, unsigned int targeting);
    static bool isValidK(unsigned int k, const AutonomousFixedFields& fixed);
};
