// Kernel benchmark: large graphs built directly through the fixed fields'
// filling interface, then millions of random one- and three-variable moves,
// half committed and half rolled back. Prints moves per second and the
// time per evaluated node (commit or rollback included).
//
// Usage: bench_kernel [moves per model, default 2000000] [model name]

#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"
#include "graphfiller.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

// x[i] booleans; cut(u, v) = xor(x[u], x[v]); maximise the sum of cuts.
void buildMaxCut(GraphFiller& g, Quickrand& rand) {
    const unsigned int nbVertices = 10000, nbEdges = 100000;
    std::vector<unsigned int> x(nbVertices), cuts;
    for (unsigned int& v : x) v = g.add(Boolean);
    for (unsigned int e = 0; e < nbEdges; ++e) {
        unsigned int u = rand.nextInt(nbVertices), v = rand.nextInt(nbVertices, u);
        cuts.push_back(g.add(Xor, {x[u], x[v]}));
    }
    g.t.addObjective(g.add(Sum, cuts), Maximize);
}

// 100,000 items, three capacity constraints sum(w x) <= C, maximise value.
void buildKnapsack(GraphFiller& g, Quickrand& rand) {
    const unsigned int nbItems = 100000;
    std::vector<unsigned int> x(nbItems);
    for (unsigned int& v : x) v = g.add(Boolean);
    for (int k = 0; k < 3; ++k) {
        std::vector<long long> weights;
        long long total = 0;
        for (unsigned int i = 0; i < nbItems; ++i) {
            weights.push_back(1 + rand.nextInt(100));
            total += weights.back();
        }
        unsigned int load = g.add(ScalarSum, x, weights);
        g.t.addConstraint(g.add(Leq, {load, g.constant(total / 4)}));
    }
    std::vector<long long> values;
    for (unsigned int i = 0; i < nbItems; ++i) values.push_back(1 + rand.nextInt(1000));
    g.t.addObjective(g.add(ScalarSum, x, values), Maximize);
}

// Maxima, minima and products of small sums over random booleans, summed.
void buildMinMaxProduct(GraphFiller& g, Quickrand& rand) {
    const unsigned int nbBooleans = 20000;
    std::vector<unsigned int> x(nbBooleans), terms;
    for (unsigned int& v : x) v = g.add(Boolean);
    unsigned int one = g.constant(1);
    auto randomBooleans = [&](unsigned int n) {
        std::vector<unsigned int> childs;
        for (unsigned int i = 0; i < n; ++i) childs.push_back(x[rand.nextInt(nbBooleans)]);
        return childs;
    };
    for (int k = 0; k < 5000; ++k) terms.push_back(g.add(Max, randomBooleans(10)));
    for (int k = 0; k < 5000; ++k) terms.push_back(g.add(Min, randomBooleans(10)));
    for (int k = 0; k < 4000; ++k) {
        std::vector<unsigned int> factors;
        for (int f = 0; f < 4; ++f) {
            std::vector<unsigned int> childs = randomBooleans(2);
            childs.push_back(one);
            factors.push_back(g.add(Sum, childs));
        }
        terms.push_back(g.add(Product, factors));
    }
    g.t.addObjective(g.add(Sum, terms), Maximize);
    g.t.addObjective(g.add(Max, std::vector<unsigned int>(terms.end() - 4000, terms.end())), Minimize);
}

void run(const std::string& name, void (*build)(GraphFiller&, Quickrand&), unsigned long long nbMoves) {
    Quickrand rand(12345);
    Clock::time_point start = Clock::now();
    GraphFiller g;
    build(g, rand);
    g.t.close();
    DagFixedFields fixed;
    fixed.init(g.t);
    Dag dag(fixed);
    dag.init();
    double buildSeconds = secondsSince(start);

    Propagation& p = dag.getPropagation();
    const std::vector<unsigned int>& variables = fixed.variables();
    unsigned int nbVariables = fixed.nbVariables();
    unsigned long long evaluatedBefore = p.getNbEvaluatedNodes();
    unsigned long long refused = 0;
    start = Clock::now();
    for (unsigned long long move = 0; move < nbMoves; ++move) {
        unsigned int k = rand.nextInt(2) == 0 ? 1 : 3;
        for (unsigned int i = 0; i < k; ++i) {
            unsigned int v = variables[rand.nextInt(nbVariables)];
            p.modifyVariable(dag, v, 1 - dag.currentValue(v));
        }
        bool ok = p.eval(dag);
        if (!ok) ++refused;
        if (ok && rand.nextInt(2) == 0) p.commit(dag); else p.rollback(dag);
    }
    double seconds = secondsSince(start);
    unsigned long long evaluated = p.getNbEvaluatedNodes() - evaluatedBefore;
    std::printf("%-16s nodes %9u  build %6.2f s  moves %llu in %6.2f s: %10.0f moves/s  "
                "%6.1f nodes/move  %6.1f ns/node  (refused %llu)\n",
                name.c_str(), fixed.nbNodes(), buildSeconds, nbMoves, seconds, nbMoves / seconds,
                static_cast<double>(evaluated) / nbMoves, seconds * 1e9 / evaluated, refused);
}

}  // namespace

int main(int argc, char** argv) {
    unsigned long long nbMoves = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 2000000;
    std::string only = argc > 2 ? argv[2] : "";
    if (only.empty() || only == "max-cut") run("max-cut", buildMaxCut, nbMoves);
    if (only.empty() || only == "knapsack") run("knapsack", buildKnapsack, nbMoves);
    if (only.empty() || only == "min-max-product") run("min-max-product", buildMinMaxProduct, nbMoves);
    return 0;
}
