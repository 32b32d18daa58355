#include "solver/move/movekbalance.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"
#include "solver/move/autonomousstructure.h"

MoveKBalance::MoveKBalance(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int k,
                           unsigned int utilRate)
    : MoveK(dag, quickrand, structure, k, "Balance", utilRate, 0) {}

bool MoveKBalance::isValidK(unsigned int k, const AutonomousFixedFields& fixed) {
    return k <= fixed.getNbBalanceNodes();
}

bool MoveKBalance::modify() {
    const std::vector<unsigned int>& nodes = structure.getFixedFields().getBalanceNodes();
    unsigned int nbNodes = static_cast<unsigned int>(nodes.size());
    if (k > nbNodes) return false;
    pickOtherNodesToFlip(false, nbNodes);
    bool flipped = false;
    for (unsigned int index : picked) {
        unsigned int node = nodes[index];
        unsigned int down = 0, up = 0;
        Node* object = dag.getNode(node);
        if (!object->findDecreasingBoolean(dag, quickrand, down, node)) continue;
        if (!object->findIncreasingBoolean(dag, quickrand, up, node)) continue;
        if (wholePairs && (dag.isModified(down) || dag.isModified(up))) continue;
        flip(down);
        flip(up);
        flipped = true;
    }
    return flipped;
}
