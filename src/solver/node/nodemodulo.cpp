#include "solver/node/nodemodulo.h"

#include "api/kernelexception.h"
#include "solver/kernel/mathoverflow.h"

#include <limits>

long long NodeModulo::compute(const DagFixedFields& fixed, ValueView values, unsigned int node,
                              const char* operation) {
    long long a = childValue(fixed, values, node, 0), b = childValue(fixed, values, node, 1);
    if (b == 0) throw KernelException("src/solver/node/nodemodulo", __LINE__, operation, "Division by zero.");
    return WrapArith::modulo(a, b);
}

// A remainder is not monotone in either child: any child, either way.
bool NodeModulo::findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                       unsigned int node) const {
    if (dag.currentValue(node) >= dag.getFixedFields().upperBound(node)) return false;
    return findRandomBoolean(dag, rand, boolean, node);
}

bool NodeModulo::findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                       unsigned int node) const {
    if (dag.currentValue(node) <= dag.getFixedFields().lowerBound(node)) return false;
    return findRandomBoolean(dag, rand, boolean, node);
}

// |a % b| < |b| and |a % b| <= |a|, with the sign of a.
void NodeModulo::computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min,
                               long long& max) {
    unsigned int a = t.nodeChild(node, 0), b = t.nodeChild(node, 1);
    long long divisor = std::max(MathOverflow::abs(t.min(b)), MathOverflow::abs(t.max(b)));
    long long limit = divisor > 0 ? divisor - 1 : 0;
    // |min| is one more than max: a remainder by it can reach max.
    if (t.min(b) == std::numeric_limits<long long>::min()) limit = std::numeric_limits<long long>::max();
    min = t.min(a) >= 0 ? 0 : std::max(t.min(a), -limit);
    max = t.max(a) <= 0 ? 0 : std::min(t.max(a), limit);
}
