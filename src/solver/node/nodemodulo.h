#pragma once

#include "solver/node/nodefixedaritytemplate.h"

// a % b with the sign of a; b = -1 gives 0; b = 0 throws "Division by zero.".
class NodeModulo : public NodeFixedArityTemplate<NodeModulo> {
public:
    static constexpr NodeType TYPE = Modulo;
    static long long compute(const DagFixedFields& fixed, ValueView values, unsigned int node,
                             const char* operation);
    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    static void computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min, long long& max);
};
