#include "solver/node/nodeabs.h"

#include "solver/kernel/mathoverflow.h"

bool NodeAbs::findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                    unsigned int node) const {
    if (dag.currentValue(node) >= dag.getFixedFields().upperBound(node)) return false;
    long long x = currentChild(dag, node, 0);
    bool up = x > 0 || (x == 0 && rand.nextInt(2) == 0);
    return findChildBoolean(dag, rand, boolean, childNode(dag, node, 0), up);
}

bool NodeAbs::findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                    unsigned int node) const {
    long long x = currentChild(dag, node, 0);
    if (x == 0) return false;
    return findChildBoolean(dag, rand, boolean, childNode(dag, node, 0), x < 0);
}

void NodeAbs::computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min,
                            long long& max) {
    unsigned int a = t.nodeChild(node, 0);
    MathOverflow::absRange(t.min(a), t.max(a), min, max);
}
