#pragma once

#include "solver/node/nodefixedaritytemplate.h"

// The square root of x >= 0 in double precision, truncated toward zero;
// x < 0 throws "Square root of a negative number".
class NodeSqrt : public NodeFixedArityTemplate<NodeSqrt> {
public:
    static constexpr NodeType TYPE = Sqrt;
    static long long compute(const DagFixedFields& fixed, ValueView values, unsigned int node,
                             const char* operation);
    static long long root(long long x);
    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    static void computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min, long long& max);
};
