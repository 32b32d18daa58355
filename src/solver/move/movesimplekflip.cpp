#include "solver/move/movesimplekflip.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"

MoveSimpleKFlip::MoveSimpleKFlip(Dag& dag, Quickrand& quickrand, unsigned int k, unsigned int utilRate)
    : Move(dag, quickrand, prefixName(k, "SimpleFlip"), utilRate), k(k), picked(k) {}

bool MoveSimpleKFlip::modify() {
    const DagFixedFields& fixed = dag.getFixedFields();
    if (fixed.nbBooleans() < k) return false;
    quickrand.nextKInt(fixed.nbBooleans(), k, picked);
    for (unsigned int i = 0; i < k; ++i) flip(fixed.variables()[picked[i]]);
    return true;
}
