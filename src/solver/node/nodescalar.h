#pragma once

#include "solver/node/nodefixedaritytemplate.h"

// factor x child, wrapping; the factor is the node's single coefficient.
class NodeScalar : public NodeFixedArityTemplate<NodeScalar> {
public:
    static constexpr NodeType TYPE = Scalar;
    static long long compute(const DagFixedFields& fixed, ValueView values, unsigned int node,
                             const char*) {
        return WrapArith::mul(fixed.constant(node), childValue(fixed, values, node, 0));
    }
    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        return find(dag, rand, boolean, node, true);
    }
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        return find(dag, rand, boolean, node, false);
    }
    static void computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min, long long& max);

private:
    static bool find(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int node, bool increase);
};
