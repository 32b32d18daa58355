#include "solver/node/nodeconstant.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/temporarydagfixedfields.h"
#include "solver/node/nodevariable.h"

void NodeConstant::init(Dag& dag, unsigned int node) {
    long long value = dag.getFixedFields().constant(node);
    dag.setCurrentValue(node, value);
    dag.setNewValue(node, value);
}

bool NodeConstant::findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                         unsigned int node) const {
    return findNoBoolean(dag, rand, boolean, node);
}

bool NodeConstant::findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                         unsigned int node) const {
    return findNoBoolean(dag, rand, boolean, node);
}

void NodeConstant::computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min,
                                 long long& max) {
    min = max = t.constant(node);
}
