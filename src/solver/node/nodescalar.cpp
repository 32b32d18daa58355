#include "solver/node/nodescalar.h"

#include "solver/kernel/mathoverflow.h"

bool NodeScalar::find(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int node,
                      bool increase) {
    long long factor = dag.getFixedFields().constant(node);
    if (factor == 0) return false;
    return findChildBoolean(dag, rand, boolean, childNode(dag, node, 0), (factor > 0) == increase);
}

void NodeScalar::computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min,
                               long long& max) {
    unsigned int x = t.nodeChild(node, 0);
    MathOverflow::scaleRange(t.scalar(node), t.min(x), t.max(x), min, max);
}
