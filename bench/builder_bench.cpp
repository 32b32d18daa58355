// The graph compiler at scale: a model of one million decisions summed by a
// chain of nested two-operand sums as deep as the model (s = s + x[i] in a
// loop), compiled, copied for a second thread and written out as a program.
// Prints the time of each step and the peak memory after it.
//
//   bench_builder [decisions] [file to write, default: none]

#include "api/quarrix.h"
#include "api/qxmodel.h"
#include "builder/dagbuilder.h"
#include "builder/modelgraph.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/dagfixedfields.h"

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

// Seconds since the previous step and the peak resident memory so far.
void step(const char* name, Clock::time_point& last) {
    const Clock::time_point now = Clock::now();
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("  %-34s %7.3f s   peak %7.1f MB\n", name,
                std::chrono::duration<double>(now - last).count(), usage.ru_maxrss / 1024.0);
    last = Clock::now();
}

}  // namespace

int main(int argc, char** argv) {
    const int n = argc > 1 ? std::atoi(argv[1]) : 1000000;
    const std::string file = argc > 2 ? argv[2] : "";
    std::printf("chain of %d decisions\n", n);
    Clock::time_point last = Clock::now();
    const Clock::time_point start = last;

    Quarrix solver;
    QXModel* model = solver.getModel();
    std::vector<QXExpression*> x(n);
    for (int i = 0; i < n; ++i) x[i] = model->createExpression(QXOperator::Bool);
    QXExpression* total = x[0];
    for (int i = 1; i < n; ++i) total = model->createExpression(QXOperator::Sum, total, x[i]);
    model->addConstraint(model->createExpression(QXOperator::Leq, total, n / 2));
    model->addObjective(total, QXObjectiveDirection::Maximize);
    step("build the model", last);

    model->close();
    step("close (compile, first Dag)", last);

    // The compilation alone, a second time on the closed model.
    ModelGraph graph;
    model->fillGraph(graph, false);
    DagBuilder again(std::move(graph));
    step("compile again", last);
    again.createCopies(1);
    step("one copy for a second thread", last);

    if (!file.empty()) {
        model->write(file);
        step("write the model", last);
    }

    // The chain is one sum node over every decision, plus the bound's
    // constant and the comparison.
    const DagFixedFields& fixed = model->getDagBuilder()->getFixedFields();
    const unsigned int sum = model->getDagBuilder()->getNode(total->getIndex());
    const bool ok = fixed.nbNodes() == static_cast<unsigned int>(n) + 3 &&
                    fixed.nbChilds(sum) == static_cast<unsigned int>(n);
    std::printf("  %u nodes, the sum has %u children, %u ranks\n", fixed.nbNodes(),
                fixed.nbChilds(sum), fixed.nbRanks());
    std::printf("  %-34s %7.3f s\n", "all", std::chrono::duration<double>(Clock::now() - start).count());
    if (!ok) std::printf("WRONG RESULT\n");
    return ok ? 0 : 1;
}
