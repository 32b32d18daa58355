#pragma once

#include "solver/node/nodefixedaritytemplate.h"

// The second child when the first is non-zero, else the third.
class NodeIf : public NodeFixedArityTemplate<NodeIf> {
public:
    static constexpr NodeType TYPE = If;
    static long long compute(const DagFixedFields& fixed, ValueView values, unsigned int node,
                             const char*) {
        return childValue(fixed, values, node, childValue(fixed, values, node, 0) != 0 ? 1 : 2);
    }
    // The selected branch is asked to move.
    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        return findChildBoolean(dag, rand, boolean, selected(dag, node), true);
    }
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        return findChildBoolean(dag, rand, boolean, selected(dag, node), false);
    }
    static void computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min, long long& max);

private:
    static unsigned int selected(const Dag& dag, unsigned int node) {
        return childNode(dag, node, currentChild(dag, node, 0) != 0 ? 1 : 2);
    }
};
