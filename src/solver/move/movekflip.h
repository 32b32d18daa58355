#pragma once

#include "solver/kernel/move.h"

class AutonomousFixedFields;

// Flips k free booleans (in no constrained sum), the first one asked of the
// objective when targeting says so.
class MoveKFlip : public MoveK {
public:
    MoveKFlip(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int k, unsigned int utilRate,
              unsigned int targeting);
    static bool isValidK(unsigned int k, const AutonomousFixedFields& fixed);
    bool modify() override;
};
