#include "solver/node/nodesqrt.h"

#include "api/kernelexception.h"

#include <cmath>

long long NodeSqrt::root(long long x) { return static_cast<long long>(std::sqrt(static_cast<double>(x))); }

long long NodeSqrt::compute(const DagFixedFields& fixed, ValueView values, unsigned int node,
                            const char* operation) {
    long long x = childValue(fixed, values, node, 0);
    if (x < 0)
        throw KernelException("src/solver/node/nodesqrt", __LINE__, operation,
                              "Square root of a negative number");
    return root(x);
}

bool NodeSqrt::findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                     unsigned int node) const {
    if (dag.currentValue(node) >= dag.getFixedFields().upperBound(node)) return false;
    return findChildBoolean(dag, rand, boolean, childNode(dag, node, 0), true);
}

bool NodeSqrt::findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                     unsigned int node) const {
    if (dag.currentValue(node) <= dag.getFixedFields().lowerBound(node)) return false;
    return findChildBoolean(dag, rand, boolean, childNode(dag, node, 0), false);
}

// The root is non-decreasing, so the clamped range's ends bound it.
void NodeSqrt::computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min,
                             long long& max) {
    unsigned int x = t.nodeChild(node, 0);
    min = root(std::max(t.min(x), 0LL));
    max = root(std::max(t.max(x), 0LL));
}
