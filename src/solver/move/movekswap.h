#pragma once

#include "solver/kernel/move.h"

class AutonomousFixedFields;

// Flips k mono-constrained booleans, each paired with an opposite flip in
// its constrained sum so that the sum tends to keep its value.
class MoveKSwap : public MoveK {
public:
    MoveKSwap(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int k, unsigned int utilRate,
              unsigned int targeting);
    static bool isValidK(unsigned int k, const AutonomousFixedFields& fixed);
    bool modify() override;

private:
    // Flips the boolean and a boolean of opposite effect in its constrained
    // sum (any sum when it has none); alone when the sum offers none.
    void flipWithOpposite(unsigned int variable);
    unsigned int oppositeOf(unsigned int variable);
};
