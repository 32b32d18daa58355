#pragma once

#include "solver/kernel/move.h"

class AutonomousFixedFields;

// For k constrained sums, flips one boolean that lowers the sum and one that
// raises it: the sums stay near their value while the choice moves.
class MoveKBalance : public MoveK {
public:
    MoveKBalance(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int k,
                 unsigned int utilRate);
    static bool isValidK(unsigned int k, const AutonomousFixedFields& fixed);
    bool modify() override;
};
