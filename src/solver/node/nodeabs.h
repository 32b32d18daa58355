#pragma once

#include "solver/node/nodefixedaritytemplate.h"

// |x|, wrapping: the most negative value stays itself.
class NodeAbs : public NodeFixedArityTemplate<NodeAbs> {
public:
    static constexpr NodeType TYPE = Abs;
    static long long compute(const DagFixedFields& fixed, ValueView values, unsigned int node,
                             const char*) {
        long long x = childValue(fixed, values, node, 0);
        return x < 0 ? WrapArith::neg(x) : x;
    }
    // Moving away from 0 raises |x|; towards 0 lowers it.
    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    static void computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min, long long& max);
};
