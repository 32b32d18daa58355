#pragma once

#include "../kernel/testgraph.h"

#include <algorithm>
#include <random>
#include <vector>

// The time-indexed single-machine schedule of textbooks as a kernel graph:
// x[j][t] says that job j starts at t (t = 0..H - p(j), H the sum of the
// lengths plus `slack`), a row per job summing to exactly 1, a machine row
// per time unit u (the starts running at u sum to at most 1), and the
// weighted tardiness sum of w(j) max(0, t + p(j) - d(j)) x[j][t] to
// minimise.
namespace ScheduleModels {

struct Schedule {
    Schedule(unsigned int n, unsigned int maxLength, unsigned int slack, unsigned int seed) : n(n) {
        std::mt19937 random(seed);
        auto pick = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
        horizon = slack;
        for (unsigned int j = 0; j < n; ++j) {
            lengths.push_back(pick(1, static_cast<int>(maxLength)));
            horizon += lengths.back();
        }
        std::vector<unsigned int> terms;
        std::vector<long long> costs;
        for (unsigned int j = 0; j < n; ++j) {
            long long weight = pick(1, 10), due = pick(0, static_cast<int>(horizon));
            first.push_back(static_cast<unsigned int>(x.size()));
            std::vector<unsigned int> row;
            for (unsigned int t = 0; t + lengths[j] <= horizon; ++t) {
                x.push_back(g.boolean());
                row.push_back(x.back());
                long long late = static_cast<long long>(t + lengths[j]) - due;
                if (late > 0) {
                    terms.push_back(x.back());
                    costs.push_back(weight * late);
                }
            }
            rows.push_back(g.add(BooleanSum, row));
            g.constraint(g.add(Eq, {rows.back(), g.constant(1)}));
        }
        for (unsigned int u = 0; u < horizon; ++u) {
            std::vector<unsigned int> running;
            for (unsigned int j = 0; j < n; ++j)
                for (unsigned int t = u + 1 > lengths[j] ? u + 1 - lengths[j] : 0; t <= u && t + lengths[j] <= horizon;
                     ++t)
                    running.push_back(at(j, t));
            machine.push_back(g.add(BooleanSum, running));
            g.constraint(g.add(Leq, {machine.back(), g.constant(1)}));
        }
        g.objective(g.add(ScalarSum, terms, costs), Minimize);
        g.close();
        // A feasible start: the jobs back to back in their order, the slack
        // left at the end.
        start.assign(g.fixed.nbVariables(), 0);
        unsigned int clock = 0;
        for (unsigned int j = 0; j < n; ++j) {
            start[g.fixed.variableIndex(at(j, clock))] = 1;
            clock += lengths[j];
        }
    }

    unsigned int at(unsigned int job, unsigned int t) const { return x[first[job] + t]; }

    // The start of each job in the values (by node), -1 when it is not
    // started exactly once.
    std::vector<long long> starts(const std::vector<long long>& v) const {
        std::vector<long long> out(n, -1);
        for (unsigned int j = 0; j < n; ++j) {
            unsigned int count = 0;
            for (unsigned int t = 0; t + lengths[j] <= horizon; ++t)
                if (v[at(j, t)] != 0) {
                    ++count;
                    out[j] = t;
                }
            if (count != 1) out[j] = -1;
        }
        return out;
    }
    // The number of jobs running at each time unit, empty when some job is
    // not started exactly once.
    std::vector<unsigned int> load(const std::vector<long long>& v) const {
        std::vector<long long> at = starts(v);
        if (std::find(at.begin(), at.end(), -1) != at.end()) return {};
        std::vector<unsigned int> running(horizon, 0);
        for (unsigned int j = 0; j < n; ++j)
            for (unsigned int u = 0; u < lengths[j]; ++u) ++running[at[j] + u];
        return running;
    }
    bool holds(const std::vector<long long>& v) const {
        std::vector<unsigned int> running = load(v);
        return !running.empty() && *std::max_element(running.begin(), running.end()) <= 1;
    }

    unsigned int n, horizon = 0;
    TestGraph g;
    std::vector<unsigned int> lengths, first, x, rows, machine;
    // In variable order.
    std::vector<long long> start;
};

}  // namespace ScheduleModels
