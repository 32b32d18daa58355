#pragma once

#include "../kernel/testgraph.h"

#include <vector>

// Small models shared by the search tests, built directly as kernel graphs.
namespace SearchModels {

// Knapsack: maximise sum(values[i] x_i) subject to sum(weights[i] x_i) <= capacity.
struct Knapsack {
    Knapsack(const std::vector<long long>& weights, const std::vector<long long>& values, long long capacity) {
        for (std::size_t i = 0; i < weights.size(); ++i) items.push_back(g.boolean());
        unsigned int limit = g.constant(capacity);
        weight = g.add(ScalarSum, items, weights);
        value = g.add(ScalarSum, items, values);
        g.constraint(g.add(Leq, {weight, limit}));
        g.objective(value, Maximize);
        g.close();
    }
    TestGraph g;
    std::vector<unsigned int> items;
    unsigned int weight, value;
};

// Set cover: every row covered by one of its columns (a boolean sum >= 1),
// minimise the number of columns chosen.
struct SetCover {
    explicit SetCover(const std::vector<std::vector<unsigned int>>& rows, unsigned int nbColumns) {
        for (unsigned int j = 0; j < nbColumns; ++j) columns.push_back(g.boolean());
        unsigned int one = g.constant(1);
        for (const std::vector<unsigned int>& row : rows) {
            std::vector<unsigned int> cover;
            for (unsigned int j : row) cover.push_back(columns[j]);
            g.constraint(g.add(Geq, {g.add(Sum, cover), one}));
        }
        cost = g.add(Sum, columns);
        g.objective(cost, Minimize);
        g.close();
    }
    TestGraph g;
    std::vector<unsigned int> columns;
    unsigned int cost;
};

}  // namespace SearchModels
