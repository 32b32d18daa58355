#pragma once

#include "solver/kernel/move.h"

// Flips k distinct booleans drawn uniformly among all of them.
class MoveSimpleKFlip : public Move {
public:
    MoveSimpleKFlip(Dag& dag, Quickrand& quickrand, unsigned int k, unsigned int utilRate);
    bool modify() override;
    unsigned int getK() const { return k; }

private:
    unsigned int k;
    std::vector<unsigned int> picked;
};
