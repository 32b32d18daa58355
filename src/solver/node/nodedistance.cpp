#include "solver/node/nodedistance.h"

#include "solver/kernel/mathoverflow.h"
#include "solver/node/comparisonutils.h"

bool NodeDistance::findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                         unsigned int node) const {
    if (dag.currentValue(node) >= dag.getFixedFields().upperBound(node)) return false;
    return ComparisonUtils::increaseDistance(dag, rand, boolean, node);
}

bool NodeDistance::findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                         unsigned int node) const {
    if (dag.currentValue(node) == 0) return false;
    return ComparisonUtils::decreaseDistance(dag, rand, boolean, node);
}

void NodeDistance::computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min,
                                 long long& max) {
    unsigned int a = t.nodeChild(node, 0), b = t.nodeChild(node, 1);
    long long low, high;
    MathOverflow::differenceRange(t.min(b), t.max(b), t.min(a), t.max(a), low, high);
    MathOverflow::absRange(low, high, min, max);
}
