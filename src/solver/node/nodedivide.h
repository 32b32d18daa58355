#pragma once

#include "solver/node/nodefixedaritytemplate.h"

// a / b truncated toward zero; b = -1 gives -a with wrap-around (the most
// negative value stays itself instead of trapping); b = 0 throws
// "Division by zero.".
class NodeDivide : public NodeFixedArityTemplate<NodeDivide> {
public:
    static constexpr NodeType TYPE = Divide;
    static long long compute(const DagFixedFields& fixed, ValueView values, unsigned int node,
                             const char* operation);
    // The numerator moves the quotient, in the direction given by the
    // divisor's sign.
    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    static void computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min, long long& max);
};
