#pragma once

// Shared by the benchmarks: builds kernel graphs directly through the fixed
// fields' filling interface, and times the runs.

#include "solver/kernel/temporarydagfixedfields.h"

#include <chrono>
#include <vector>

using Clock = std::chrono::steady_clock;

inline double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

class GraphFiller {
public:
    unsigned int add(NodeType type, const std::vector<unsigned int>& childs = {},
                     const std::vector<long long>& coefficients = {}) {
        unsigned int node = t.typeSize();
        t.setNodeType(node, type);
        t.setNodeChilds(node, childs);
        if (!coefficients.empty()) t.setNodeCoefficients(node, coefficients);
        return node;
    }
    unsigned int constant(long long value) {
        unsigned int node = add(Constant);
        t.setNodeConstant(node, value);
        return node;
    }
    TemporaryDagFixedFields t;
};
