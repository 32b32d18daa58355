#pragma once

#include "../kernel/testgraph.h"

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

// Textbook 0-1 models whose booleans gate others, built as kernel graphs:
// n items each put in one of m places (x[i][j], a row summing to exactly 1
// per item), an item in a place only while the place's gate is 1.
// - Colouring: links x[i][j] <= gate[j], conflicts x[u][j] + x[v][j] <= 1,
//   minimise the gates at 1.
// - PMedian: links, exactly p gates at 1, minimise sum cost[i][j] x[i][j].
// - BinPacking: capacity rows sum size[i] x[i][j] <= C * gate[j], minimise
//   the gates at 1.
// Reversed writes every gate constraint the other way round (gate >= x);
// Grouped has no gate booleans: a place is open while the max of its
// column is 1 (the objective counts those maxima; the packing's capacities
// are constants), and `gates` holds the max nodes.
namespace GatedModels {

enum Shape { Colouring, PMedian, BinPacking };
enum Form { Linked, Reversed, Grouped };

struct GatedModel {
    GatedModel(Shape shape, unsigned int n, unsigned int m, unsigned int seed, Form form = Linked)
        : shape(shape), form(form), n(n), m(m) {
        const bool reversed = form == Reversed, grouped = form == Grouped && shape != PMedian;
        std::mt19937 random(seed);
        auto pick = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
        for (unsigned int i = 0; i < n * m; ++i) x.push_back(g.boolean());
        if (!grouped)
            for (unsigned int j = 0; j < m; ++j) gates.push_back(g.boolean());
        unsigned int one = g.constant(1);
        for (unsigned int i = 0; i < n; ++i) {
            std::vector<unsigned int> row(x.begin() + i * m, x.begin() + (i + 1) * m);
            rows.push_back(g.add(BooleanSum, row));
            g.constraint(g.add(Eq, {rows.back(), one}));
        }
        auto atMost = [&](unsigned int low, unsigned int high) {
            g.constraint(reversed ? g.add(Geq, {high, low}) : g.add(Leq, {low, high}));
        };
        if (shape == BinPacking) {
            capacity = 100;
            for (unsigned int i = 0; i < n; ++i) sizes.push_back(pick(10, 60));
            for (unsigned int j = 0; j < m; ++j) {
                std::vector<unsigned int> column;
                for (unsigned int i = 0; i < n; ++i) column.push_back(x[i * m + j]);
                loads.push_back(g.add(ScalarSum, column, sizes));
                atMost(loads.back(), grouped ? g.constant(capacity) : g.scalar(capacity, gates[j]));
            }
        } else if (!grouped) {
            for (unsigned int i = 0; i < n; ++i)
                for (unsigned int j = 0; j < m; ++j) atMost(x[i * m + j], gates[j]);
        }
        if (shape == Colouring) {
            for (unsigned int u = 0; u < n; ++u)
                for (unsigned int v = u + 1; v < n; ++v)
                    if (pick(0, 9) < 3) edges.emplace_back(u, v);
            for (const auto& e : edges)
                for (unsigned int j = 0; j < m; ++j)
                    g.constraint(g.add(Leq, {g.add(BooleanSum, {x[e.first * m + j], x[e.second * m + j]}), one}));
        }
        if (shape == PMedian) {
            p = std::max(1u, m / 3);
            g.constraint(g.add(Eq, {g.add(BooleanSum, gates), g.constant(p)}));
            for (unsigned int i = 0; i < n * m; ++i) costs.push_back(pick(1, 50));
            g.objective(g.add(ScalarSum, x, costs), Minimize);
        } else {
            if (grouped)
                for (unsigned int j = 0; j < m; ++j) {
                    std::vector<unsigned int> column;
                    for (unsigned int i = 0; i < n; ++i) column.push_back(x[i * m + j]);
                    gates.push_back(g.add(Max, column));
                }
            g.objective(g.add(Sum, gates), Minimize);
        }
        g.close();
        // A feasible start: each item in a place of its own (the colouring
        // and the packing need m >= n), or at the cheapest of the first p.
        start.assign(g.fixed.nbVariables(), 0);
        for (unsigned int i = 0; i < n; ++i) {
            unsigned int j = shape == PMedian ? 0 : i % m;
            if (shape == PMedian)
                for (unsigned int k = 1; k < p; ++k)
                    if (costs[i * m + k] < costs[i * m + j]) j = k;
            set(x[i * m + j], 1);
            if (!grouped) set(gates[j], 1);
        }
        if (shape == PMedian)
            for (unsigned int k = 0; k < p; ++k) set(gates[k], 1);
    }

    void set(unsigned int node, long long value) { start[g.fixed.variableIndex(node)] = value; }
    unsigned int rank(unsigned int node) const { return g.fixed.variableIndex(node); }

    // Whether the values (by node) keep every row, link, capacity, conflict
    // and count of the model.
    bool holds(const std::vector<long long>& v) const {
        unsigned int open = 0;
        for (unsigned int j = 0; j < m; ++j) {
            // A group's max is not a decision: its column is always allowed.
            long long gate = form == Grouped && shape != PMedian ? 1 : v[gates[j]];
            open += gate != 0;
            long long load = 0;
            for (unsigned int i = 0; i < n; ++i) {
                long long in = v[x[i * m + j]];
                if (in > gate) return false;
                if (shape == BinPacking) load += in * sizes[i];
            }
            if (load > capacity * gate) return false;
            for (const auto& e : edges)
                if (v[x[e.first * m + j]] + v[x[e.second * m + j]] > 1) return false;
        }
        for (unsigned int i = 0; i < n; ++i) {
            long long placed = 0;
            for (unsigned int j = 0; j < m; ++j) placed += v[x[i * m + j]];
            if (placed != 1) return false;
        }
        return shape != PMedian || open == p;
    }

    Shape shape;
    Form form;
    unsigned int n, m, p = 0;
    long long capacity = 0;
    TestGraph g;
    std::vector<unsigned int> x, gates, rows, loads;
    std::vector<std::pair<unsigned int, unsigned int>> edges;
    std::vector<long long> sizes, costs;
    // In variable order.
    std::vector<long long> start;
};

}  // namespace GatedModels
