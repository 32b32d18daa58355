#pragma once

#include "solver/node/nodefixedaritytemplate.h"

// 1 when the child is 0, else 0.
class NodeNot : public NodeFixedArityTemplate<NodeNot> {
public:
    static constexpr NodeType TYPE = Not;
    static long long compute(const DagFixedFields& fixed, ValueView values, unsigned int node,
                             const char*) {
        return childValue(fixed, values, node, 0) == 0 ? 1 : 0;
    }
    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        return dag.currentValue(node) == 0 &&
               findChildBoolean(dag, rand, boolean, childNode(dag, node, 0), false);
    }
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        return dag.currentValue(node) != 0 &&
               findChildBoolean(dag, rand, boolean, childNode(dag, node, 0), true);
    }
    static void computeBounds(const TemporaryDagFixedFields&, unsigned int, long long& min, long long& max) {
        min = 0;
        max = 1;
    }
};
