// Search benchmark: generated instances of three families built directly as
// kernel graphs, searched by one thread (as a solve sets it up: greedy start,
// default moves and annealing) for a fixed number of iterations. Prints
// iterations per second, the share of accepted and improving moves, the
// nodes evaluated through the graph per iteration (none where the kept
// scores judge and commit every move) and the time per iteration, and the
// objective reached beside a simple constructive reference.
//
// Usage: bench_search [iterations per instance, default 2000000] [family:
//        max-cut, knapsack, set-cover, or queens, which runs only when named]
//        [annealing level, default 1] [advanced parameter=value ...]

#include "solver/kernel/dag.h"
#include "solver/kernel/greedysolution.h"
#include "solver/kernel/heuristic.h"
#include "solver/kernel/largepages.h"
#include "solver/kernel/quickrand.h"
#include "graphfiller.h"
#include "solver/kernel/searchparams.h"
#include "solver/kernel/solution.h"
#include "solver/kernel/threadenv.h"
#include "solver/move/autonomousfixedfields.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

namespace {

// Max-cut on a random graph of 800 vertices, each pair an edge with
// probability 6%: about 19,000 edges. Reference: the cut of a random side
// assignment improved by single moves until none helps.
long long buildMaxCut(GraphFiller& g, Quickrand& rand) {
    const unsigned int n = 800;
    std::vector<unsigned int> x(n), cuts;
    std::vector<std::vector<unsigned int>> adjacent(n);
    for (unsigned int& v : x) v = g.add(Boolean);
    for (unsigned int u = 0; u < n; ++u)
        for (unsigned int v = u + 1; v < n; ++v)
            if (rand.nextInt(1000) < 60) {
                cuts.push_back(g.add(Neq, {x[u], x[v]}));
                adjacent[u].push_back(v);
                adjacent[v].push_back(u);
            }
    g.t.addObjective(g.add(Sum, cuts), Maximize);
    std::vector<int> side(n);
    for (int& s : side) s = static_cast<int>(rand.nextInt(2));
    for (bool improved = true; improved;) {
        improved = false;
        for (unsigned int u = 0; u < n; ++u) {
            int same = 0;
            for (unsigned int v : adjacent[u]) same += side[v] == side[u];
            if (2 * same > static_cast<int>(adjacent[u].size())) side[u] ^= 1, improved = true;
        }
    }
    long long cut = 0;
    for (unsigned int u = 0; u < n; ++u)
        for (unsigned int v : adjacent[u]) cut += u < v && side[u] != side[v];
    std::printf("max-cut: %zu edges\n", cuts.size());
    return cut;
}

// Multidimensional knapsack: 500 items, 10 constraints at half the total
// weight. Reference: items by value over summed relative weight, taken
// while they fit.
long long buildKnapsack(GraphFiller& g, Quickrand& rand) {
    const unsigned int n = 500, m = 10;
    std::vector<unsigned int> x(n);
    for (unsigned int& v : x) v = g.add(Boolean);
    std::vector<std::vector<long long>> weights(m);
    std::vector<long long> capacities;
    for (unsigned int k = 0; k < m; ++k) {
        for (unsigned int i = 0; i < n; ++i) weights[k].push_back(1 + rand.nextInt(1000));
        capacities.push_back(std::accumulate(weights[k].begin(), weights[k].end(), 0LL) / 2);
        g.t.addConstraint(g.add(Leq, {g.add(ScalarSum, x, weights[k]), g.constant(capacities[k])}));
    }
    std::vector<long long> values;
    for (unsigned int i = 0; i < n; ++i) {
        long long w = 0;
        for (unsigned int k = 0; k < m; ++k) w += weights[k][i];
        values.push_back(w / m + rand.nextInt(500));  // correlated with the weights
    }
    g.t.addObjective(g.add(ScalarSum, x, values), Maximize);
    std::vector<unsigned int> order(n);
    std::iota(order.begin(), order.end(), 0);
    auto density = [&](unsigned int i) {
        double w = 0;
        for (unsigned int k = 0; k < m; ++k) w += static_cast<double>(weights[k][i]) / capacities[k];
        return values[i] / w;
    };
    std::sort(order.begin(), order.end(), [&](unsigned int a, unsigned int b) { return density(a) > density(b); });
    std::vector<long long> load(m, 0);
    long long total = 0;
    for (unsigned int i : order) {
        bool fits = true;
        for (unsigned int k = 0; k < m; ++k) fits = fits && load[k] + weights[k][i] <= capacities[k];
        if (!fits) continue;
        for (unsigned int k = 0; k < m; ++k) load[k] += weights[k][i];
        total += values[i];
    }
    return total;
}

// Set cover: 1,000 columns of cost 1..100, 200 rows, each row covered by 20
// random columns. Reference: the classic greedy by cost per newly covered
// row.
long long buildSetCover(GraphFiller& g, Quickrand& rand) {
    const unsigned int n = 1000, rows = 200, perRow = 20;
    std::vector<unsigned int> x(n);
    for (unsigned int& v : x) v = g.add(Boolean);
    std::vector<long long> costs;
    for (unsigned int j = 0; j < n; ++j) costs.push_back(1 + rand.nextInt(100));
    unsigned int one = g.constant(1);
    std::vector<std::vector<unsigned int>> covers(n);
    std::vector<unsigned int> picked(perRow);
    for (unsigned int r = 0; r < rows; ++r) {
        rand.nextKInt(n, perRow, picked);
        std::vector<unsigned int> childs;
        for (unsigned int j : picked) {
            childs.push_back(x[j]);
            covers[j].push_back(r);
        }
        g.t.addConstraint(g.add(Geq, {g.add(Sum, childs), one}));
    }
    g.t.addObjective(g.add(ScalarSum, x, costs), Minimize);
    std::vector<char> covered(rows, 0);
    unsigned int nbCovered = 0;
    long long total = 0;
    while (nbCovered < rows) {
        double bestRatio = 1e300;
        unsigned int best = 0;
        for (unsigned int j = 0; j < n; ++j) {
            unsigned int fresh = 0;
            for (unsigned int r : covers[j]) fresh += !covered[r];
            if (fresh != 0 && static_cast<double>(costs[j]) / fresh < bestRatio)
                bestRatio = static_cast<double>(costs[j]) / fresh, best = j;
        }
        for (unsigned int r : covers[best]) nbCovered += !covered[r], covered[r] = 1;
        total += costs[best];
    }
    return total;
}

// n-queens at n = 1000 as users write it: a boolean per square, each row
// and column summing to 1, each diagonal to at most 1, a constant
// objective. A million booleans: the moves' data lies far beyond the
// caches, so this measures what a move costs on a large model. Reference:
// 0 (the search looks for a feasible board).
long long buildQueens(GraphFiller& g, Quickrand&) {
    const unsigned int n = 1000;
    std::vector<unsigned int> q(n * n);
    for (unsigned int& v : q) v = g.add(Boolean);
    const unsigned int one = g.constant(1);
    for (unsigned int i = 0; i < n; ++i) {
        std::vector<unsigned int> row, column;
        for (unsigned int j = 0; j < n; ++j) {
            row.push_back(q[i * n + j]);
            column.push_back(q[j * n + i]);
        }
        g.t.addConstraint(g.add(Eq, {g.add(Sum, row), one}));
        g.t.addConstraint(g.add(Eq, {g.add(Sum, column), one}));
    }
    // Diagonal d: the squares with r - c = d - (n - 1) (down) or r + c = d (up).
    for (unsigned int d = 1; d + 2 < 2 * n; ++d) {
        std::vector<unsigned int> down, up;
        for (unsigned int r = 0; r < n; ++r) {
            const long long c = static_cast<long long>(r) - (static_cast<long long>(d) - (n - 1));
            if (c >= 0 && c < n) down.push_back(q[r * n + static_cast<unsigned int>(c)]);
            if (d >= r && d - r < n) up.push_back(q[r * n + (d - r)]);
        }
        g.t.addConstraint(g.add(Leq, {g.add(Sum, down), one}));
        g.t.addConstraint(g.add(Leq, {g.add(Sum, up), one}));
    }
    g.t.addObjective(g.add(Scalar, {q[0]}, {0}), Minimize);
    return 0;
}

void run(const char* name, long long (*build)(GraphFiller&, Quickrand&), unsigned long long nbIterations,
         int annealingLevel, const std::vector<std::pair<std::string, int>>& advanced) {
    SearchParams params;
    params.annealingLevel = annealingLevel;
    for (const std::pair<std::string, int>& setting : advanced)
        for (unsigned int p = 0; p < NB_ADVANCED_PARAMS; ++p)
            if (setting.first == ADVANCED_PARAMS[p].name) params.set(static_cast<AdvancedParam>(p), setting.second);
    largepages::setEnabled(params.get(LargePagesEnabled) != 0);
    Quickrand rand(20240601);
    GraphFiller g;
    long long reference = build(g, rand);
    g.t.close();
    DagFixedFields fixed;
    fixed.init(g.t);
    Dag dag(fixed);
    dag.init();
    GreedySolution greedy(&rand);
    bool feasibleStart = greedy.computeSolution(&dag);
    if (!feasibleStart) dag.getPropagation().desactivateAllConstraints();
    AutonomousFixedFields autonomous(fixed);
    // QX_BENCH_SEEDS=n runs n searches from the same start with seeds
    // 12345, 12346, ... and prints their sums: short searches (the queens
    // solve in a fraction of a second) give steadier figures together.
    const char* seedsWord = std::getenv("QX_BENCH_SEEDS");
    const unsigned int nbSeeds = seedsWord ? std::max(1, std::atoi(seedsWord)) : 1;
    Solution startSolution;
    dag.saveSolution(startSolution);
    long long start = dag.currentValue(fixed.objectives()[0]);
    unsigned long long iterations = 0, accepted = 0, improvements = 0, evaluated = 0;
    double seconds = 0;
    std::unique_ptr<ThreadEnv> env;
    for (unsigned int seed = 0; seed < nbSeeds; ++seed) {
        if (seed > 0) {
            env.reset();
            dag.loadSolution(startSolution);
        }
        env = std::make_unique<ThreadEnv>(params, &dag, &autonomous, 12345 + seed);
        Heuristic& h = *env->getHeuristic();
        h.setIterationLimit(nbIterations);
        unsigned long long evaluatedBefore = dag.getPropagation().getNbEvaluatedNodes();
        Clock::time_point begin = Clock::now();
        h.run();
        seconds += secondsSince(begin);
        evaluated += dag.getPropagation().getNbEvaluatedNodes() - evaluatedBefore;
        iterations += h.getNbIterations();
        accepted += h.getNbAccepted();
        improvements += h.getNbImprovements();
    }
    Heuristic& h = *env->getHeuristic();
    const double n = static_cast<double>(iterations);
    std::printf("%-9s nodes %6u moves %2u  %llu itr in %5.2f s: %9.0f itr/s  accepted %5.1f%%  improving %6.3f%%  "
                "%5.1f graph nodes/itr  %6.0f ns/itr  objective %lld (start %lld, reference %lld)%s\n",
                name, fixed.nbNodes(), h.getNbMoves(), iterations, seconds, n / seconds, 100.0 * accepted / n,
                100.0 * improvements / n, evaluated / n, seconds * 1e9 / n, h.getBestSolution().getObjectiveValues()[0],
                start, reference, h.getBestSolution().getNbViolatedConstraints() ? " INFEASIBLE" : "");
    if (std::getenv("QX_BENCH_STATS")) h.printStats(&std::cout);
}

}  // namespace

int main(int argc, char** argv) {
    unsigned long long nbIterations = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 2000000;
    std::string only = argc > 2 ? argv[2] : "";
    int level = argc > 3 ? std::atoi(argv[3]) : 1;
    // Advanced parameters as name=value words after the level (a switch
    // measured off: kFillEnabled=0).
    std::vector<std::pair<std::string, int>> advanced;
    for (int a = 4; a < argc; ++a) {
        std::string word = argv[a];
        std::size_t equals = word.find('=');
        if (equals == std::string::npos) {
            std::fprintf(stderr, "expected name=value: %s\n", argv[a]);
            return 1;
        }
        advanced.emplace_back(word.substr(0, equals), std::atoi(word.c_str() + equals + 1));
    }
    if (only.empty() || only == "max-cut") run("max-cut", buildMaxCut, nbIterations, level, advanced);
    if (only.empty() || only == "knapsack") run("knapsack", buildKnapsack, nbIterations, level, advanced);
    if (only.empty() || only == "set-cover") run("set-cover", buildSetCover, nbIterations, level, advanced);
    // Not among the defaults: building it takes seconds and a gigabyte.
    if (only == "queens") run("queens", buildQueens, nbIterations, level, advanced);
    return 0;
}
