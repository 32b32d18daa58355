#pragma once

#include "solver/node/nodefixedaritytemplate.h"

// |b - a| with wrap-around, a and b the first and second child.
class NodeDistance : public NodeFixedArityTemplate<NodeDistance> {
public:
    static constexpr NodeType TYPE = Distance;
    static long long compute(const DagFixedFields& fixed, ValueView values, unsigned int node,
                             const char*) {
        long long d = WrapArith::sub(childValue(fixed, values, node, 1), childValue(fixed, values, node, 0));
        return d < 0 ? WrapArith::neg(d) : d;
    }
    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    static void computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min, long long& max);
};
