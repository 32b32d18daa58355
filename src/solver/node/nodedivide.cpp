#include "solver/node/nodedivide.h"

#include "api/kernelexception.h"
#include "solver/kernel/mathoverflow.h"

#include <limits>

long long NodeDivide::compute(const DagFixedFields& fixed, ValueView values, unsigned int node,
                              const char* operation) {
    long long a = childValue(fixed, values, node, 0), b = childValue(fixed, values, node, 1);
    if (b == 0) throw KernelException("src/solver/node/nodedivide", __LINE__, operation, "Division by zero.");
    return WrapArith::divide(a, b);
}

bool NodeDivide::findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                       unsigned int node) const {
    if (dag.currentValue(node) >= dag.getFixedFields().upperBound(node)) return false;
    return findChildBoolean(dag, rand, boolean, childNode(dag, node, 0), currentChild(dag, node, 1) > 0);
}

bool NodeDivide::findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                       unsigned int node) const {
    if (dag.currentValue(node) <= dag.getFixedFields().lowerBound(node)) return false;
    return findChildBoolean(dag, rand, boolean, childNode(dag, node, 0), currentChild(dag, node, 1) < 0);
}

// With a divisor range of one sign the quotient is monotone in each child,
// so the corners bound it; a divisor range holding 0 (or the wrapping
// numerator minimum) falls back to the numerator's magnitude.
void NodeDivide::computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min,
                               long long& max) {
    constexpr long long MIN = std::numeric_limits<long long>::min();
    constexpr long long MAX = std::numeric_limits<long long>::max();
    unsigned int a = t.nodeChild(node, 0), b = t.nodeChild(node, 1);
    long long lowA = t.min(a), highA = t.max(a), lowB = t.min(b), highB = t.max(b);
    if (lowA == MIN) {
        min = MIN;
        max = MAX;
        return;
    }
    if (lowB <= 0 && highB >= 0) {
        long long magnitude = std::max(MathOverflow::abs(lowA), MathOverflow::abs(highA));
        min = -magnitude;
        max = magnitude;
        return;
    }
    long long corners[4] = {lowA / lowB, lowA / highB, highA / lowB, highA / highB};
    min = max = corners[0];
    for (long long c : corners) {
        min = std::min(min, c);
        max = std::max(max, c);
    }
}
