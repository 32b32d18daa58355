// Kernel benchmark: large graphs built directly through the fixed fields'
// filling interface, then millions of random one- and three-variable moves,
// half committed and half rolled back. Each model runs twice: through the
// graph (kept scores off), printing moves per second and the time per
// evaluated node (commit or rollback included), then with the kept scores,
// which judge and commit the moves of a pseudo-Boolean model without
// propagation, printing moves per second and the time per node the
// committed moves touch.
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

// The nodes a committed move touches: its variables and their parents
// (terms, sums of rows and roots), as the graph would schedule them.
unsigned long long nodesChanged(const Dag& dag) {
    const DagFixedFields& fixed = dag.getFixedFields();
    unsigned long long count = 0;
    for (unsigned int v : dag.getPropagation().getModifiedVariables()) {
        ++count;
        for (unsigned int k = 0; k < fixed.nbParents(v); ++k) ++count;
    }
    return count;
}

void run(const std::string& name, void (*build)(GraphFiller&, Quickrand&), unsigned long long nbMoves,
         bool keptScores) {
    Quickrand rand(12345);
    Clock::time_point start = Clock::now();
    GraphFiller g;
    build(g, rand);
    g.t.close();
    DagFixedFields fixed;
    fixed.init(g.t);
    Dag dag(fixed);
    dag.init();
    Propagation& p = dag.getPropagation();
    p.setKeptScoresEnabled(dag, keptScores);
    if (keptScores && p.getKeptScores() == nullptr) return;
    double buildSeconds = secondsSince(start);

    const std::vector<unsigned int>& variables = fixed.variables();
    unsigned int nbVariables = fixed.nbVariables();
    unsigned long long evaluatedBefore = p.getNbEvaluatedNodes();
    unsigned long long refused = 0, changed = 0;
    start = Clock::now();
    for (unsigned long long move = 0; move < nbMoves; ++move) {
        unsigned int k = rand.nextInt(2) == 0 ? 1 : 3;
        for (unsigned int i = 0; i < k; ++i) {
            unsigned int v = variables[rand.nextInt(nbVariables)];
            p.modifyVariable(dag, v, 1 - dag.currentValue(v));
        }
        bool ok = p.eval(dag);
        if (!ok) ++refused;
        if (ok && rand.nextInt(2) == 0) {
            if (keptScores) changed += nodesChanged(dag);
            p.commit(dag);
        } else {
            p.rollback(dag);
        }
    }
    double seconds = secondsSince(start);
    unsigned long long evaluated = keptScores ? changed : p.getNbEvaluatedNodes() - evaluatedBefore;
    std::printf("%-16s %-5s nodes %9u  build %6.2f s  moves %llu in %6.2f s: %10.0f moves/s  "
                "%6.1f nodes/move  %6.1f ns/node  (refused %llu)\n",
                name.c_str(), keptScores ? "kept" : "graph", fixed.nbNodes(), buildSeconds, nbMoves, seconds,
                nbMoves / seconds, static_cast<double>(evaluated) / nbMoves, seconds * 1e9 / evaluated, refused);
}

}  // namespace

int main(int argc, char** argv) {
    unsigned long long nbMoves = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 2000000;
    std::string only = argc > 2 ? argv[2] : "";
    for (bool kept : {false, true}) {
        if (only.empty() || only == "max-cut") run("max-cut", buildMaxCut, nbMoves, kept);
        if (only.empty() || only == "knapsack") run("knapsack", buildKnapsack, nbMoves, kept);
        if (only.empty() || only == "min-max-product") run("min-max-product", buildMinMaxProduct, nbMoves, kept);
    }
    return 0;
}
