#include "solver/node/nodecomparison.h"

#include "solver/node/comparisonutils.h"

#include <limits>

long long NodeComparison::excess(long long x, long long y, long long margin) {
    __int128 d = static_cast<__int128>(x) - y + margin;
    if (d <= 0) return 0;
    constexpr long long MAX = std::numeric_limits<long long>::max();
    return d > MAX ? MAX : static_cast<long long>(d);
}

long long NodeComparison::violationOf(NodeType type, long long a, long long b) {
    switch (type) {
        case Lt: return excess(a, b, 1);
        case Leq: return excess(a, b, 0);
        case Gt: return excess(b, a, 1);
        case Geq: return excess(b, a, 0);
        case Eq: return excess(a, b, 0) + excess(b, a, 0);
        default: return a != b ? 0 : 1;
    }
}

template <NodeType T>
bool NodeComparisonTemplate<T>::findIncreasingBoolean(const Dag& dag, Quickrand& rand,
                                                      unsigned int& boolean, unsigned int node) const {
    // Geq looks at the new value where the others look at the committed one.
    long long value = T == Geq ? dag.newValue(node) : dag.currentValue(node);
    if (value == 1) return false;
    switch (T) {
        case Lt:
        case Leq: return ComparisonUtils::decreaseFirstOrIncreaseSecond(dag, rand, boolean, node);
        case Gt:
        case Geq: return ComparisonUtils::increaseFirstOrDecreaseSecond(dag, rand, boolean, node);
        case Eq: return ComparisonUtils::decreaseDistance(dag, rand, boolean, node);
        default: return findRandomBoolean(dag, rand, boolean, node);
    }
}

template <NodeType T>
bool NodeComparisonTemplate<T>::findDecreasingBoolean(const Dag& dag, Quickrand& rand,
                                                      unsigned int& boolean, unsigned int node) const {
    if (dag.currentValue(node) == 0) return false;
    switch (T) {
        case Lt:
        case Leq: return ComparisonUtils::increaseFirstOrDecreaseSecond(dag, rand, boolean, node);
        case Gt:
        case Geq: return ComparisonUtils::decreaseFirstOrIncreaseSecond(dag, rand, boolean, node);
        case Eq: return findRandomBoolean(dag, rand, boolean, node);
        default: return ComparisonUtils::decreaseDistance(dag, rand, boolean, node);
    }
}

template <NodeType T>
void NodeComparisonTemplate<T>::computeBounds(const TemporaryDagFixedFields& t, unsigned int node,
                                              long long& min, long long& max) {
    unsigned int a = t.nodeChild(node, 0), b = t.nodeChild(node, 1);
    long long lowA = t.min(a), highA = t.max(a), lowB = t.min(b), highB = t.max(b);
    bool disjoint = highA < lowB || highB < lowA;
    bool singleEqual = lowA == highA && lowB == highB && lowA == lowB;
    switch (T) {
        case Lt: comparisonBounds(highA < lowB, lowA >= highB, min, max); break;
        case Leq: comparisonBounds(highA <= lowB, lowA > highB, min, max); break;
        case Gt: comparisonBounds(lowA > highB, highA <= lowB, min, max); break;
        case Geq: comparisonBounds(lowA >= highB, highA < lowB, min, max); break;
        case Eq: comparisonBounds(singleEqual, disjoint, min, max); break;
        default: comparisonBounds(disjoint, singleEqual, min, max); break;
    }
}

template class NodeComparisonTemplate<Lt>;
template class NodeComparisonTemplate<Leq>;
template class NodeComparisonTemplate<Gt>;
template class NodeComparisonTemplate<Geq>;
template class NodeComparisonTemplate<Eq>;
template class NodeComparisonTemplate<Neq>;
