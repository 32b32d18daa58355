#pragma once

#include "solver/kernel/dagfixedfields.h"

#include <cmath>
#include <cstdint>
#include <vector>

// From-scratch values of a whole graph, written from the operators'
// definitions independently of the kernel's node classes, in 128-bit
// arithmetic reduced to 64 bits at each node (the kernel wraps around).
namespace ReferenceEvaluator {

inline long long wrap(__int128 v) { return static_cast<long long>(static_cast<uint64_t>(v)); }

inline long long value(const DagFixedFields& f, unsigned int node, const std::vector<long long>& v) {
    unsigned int n = f.nbChilds(node);
    auto c = [&](unsigned int i) { return static_cast<__int128>(v[f.child(node, i)]); };
    auto k = [&](unsigned int i) { return static_cast<__int128>(f.coefficient(node, i)); };
    __int128 r = 0;
    switch (f.type(node)) {
        case Boolean: case Integer: return v[node];
        case Constant: return f.constant(node);
        case Abs: r = c(0) < 0 ? -c(0) : c(0); break;
        case Distance: r = wrap(c(1) - c(0)); r = r < 0 ? -r : r; break;  // the difference wraps first
        case Not: r = c(0) == 0; break;
        case Lt: r = c(0) < c(1); break;
        case Leq: r = c(0) <= c(1); break;
        case Gt: r = c(0) > c(1); break;
        case Geq: r = c(0) >= c(1); break;
        case Eq: r = c(0) == c(1); break;
        case Neq: r = c(0) != c(1); break;
        case If: r = c(0) != 0 ? c(1) : c(2); break;
        case Scalar: r = static_cast<__int128>(f.constant(node)) * c(0); break;
        case Divide: r = c(1) == -1 ? -c(0) : c(0) / c(1); break;
        case Modulo: r = c(1) == -1 ? 0 : c(0) % c(1); break;
        case Sqrt: r = static_cast<long long>(std::sqrt(static_cast<double>(c(0)))); break;
        case Sum: case BooleanSum:
            for (unsigned int i = 0; i < n; ++i) r += c(i);
            break;
        case ScalarSum:
            for (unsigned int i = 0; i < n; ++i) r += k(i) * c(i);
            break;
        case Product: case ScalarProduct:
            r = 1;
            for (unsigned int i = 0; i < n; ++i) r = wrap(r * (f.type(node) == Product ? c(i) : wrap(k(i) * c(i))));
            break;
        case Max: case Min: case ScalarMax: case ScalarMin: {
            bool isMax = f.type(node) == Max || f.type(node) == ScalarMax;
            bool scaled = f.type(node) == ScalarMax || f.type(node) == ScalarMin;
            for (unsigned int i = 0; i < n; ++i) {
                __int128 t = scaled ? k(i) * c(i) : c(i);
                if (i == 0 || (isMax ? t > r : t < r)) r = t;
            }
            break;
        }
        case And: r = 1; for (unsigned int i = 0; i < n; ++i) r = r && c(i) != 0; break;
        case Or: for (unsigned int i = 0; i < n; ++i) r = r || c(i) != 0; break;
        case Xor: for (unsigned int i = 0; i < n; ++i) r ^= c(i) != 0; break;
    }
    return wrap(r);
}

// Values of every node, children before parents (node order), from the
// variables' values in `v` (other entries are overwritten).
inline void evaluate(const DagFixedFields& f, std::vector<long long>& v) {
    for (unsigned int node = 0; node < f.nbNodes(); ++node) v[node] = value(f, node, v);
}

// The cost of a constraint node as the search measures violation: how far
// a comparison is from holding, 1 for any other false constraint.
inline long long violation(const DagFixedFields& f, unsigned int node, const std::vector<long long>& v) {
    __int128 a = 0, b = 0;
    if (f.nbChilds(node) == 2) {
        a = v[f.child(node, 0)];
        b = v[f.child(node, 1)];
    }
    auto positive = [](__int128 x) { return static_cast<long long>(x > 0 ? x : 0); };
    switch (f.type(node)) {
        case Lt: return positive(a + 1 - b);
        case Leq: return positive(a - b);
        case Gt: return positive(b + 1 - a);
        case Geq: return positive(b - a);
        case Eq: return positive(a > b ? a - b : b - a);
        default: return v[node] == 0 ? 1 : 0;
    }
}

}  // namespace ReferenceEvaluator
