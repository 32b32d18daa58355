// Builds a model of one million decisions the way users write sums, reads it
// back, and prints the time of each step and the peak memory.
//
//   bench_model [chain|wide] [decisions]
//
// chain: s = s + x[i] in a loop, a chain of nested two-operand sums as deep
// as the model; wide: one sum with every decision as operand. Without a mode
// both run, chain first (the peak memory is then the larger of the two).

#include "api/quarrix.h"
#include "api/qxmodel.h"
#include "api/qxsolution.h"

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

long peakMemoryKb() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

class Timer {
public:
    void lap(const char* step) {
        const Clock::time_point now = Clock::now();
        std::printf("  %-28s %8.3f s\n", step, std::chrono::duration<double>(now - last).count());
        last = now;
    }

private:
    Clock::time_point last = Clock::now();
};

bool run(const std::string& mode, int n) {
    std::printf("%s, %d decisions\n", mode.c_str(), n);
    const Clock::time_point start = Clock::now();
    Timer timer;
    Quarrix solver;
    QXModel* model = solver.getModel();
    std::vector<QXExpression*> x(n);
    for (int i = 0; i < n; ++i) x[i] = model->createExpression(QXOperator::Bool);
    QXExpression* total;
    if (mode == "chain") {
        total = x[0];
        for (int i = 1; i < n; ++i) total = model->createExpression(QXOperator::Sum, total, x[i]);
    } else {
        total = model->createExpression(QXOperator::Sum);
        for (int i = 0; i < n; ++i) total->addOperand(x[i]);
    }
    model->addConstraint(model->createExpression(QXOperator::Geq, total, 1));
    model->addObjective(total, QXObjectiveDirection::Minimize);
    timer.lap("build");
    model->close();
    timer.lap("close");

    QXSolution* solution = solver.getSolution();
    for (int i = 0; i < n; i += 3) solution->setValue(x[i], 1);
    const int64_t value = solution->getValue(total);
    const QXSolutionStatus status = solution->getStatus();
    timer.lap("set values, read back");

    // Every expression's text and value: a walk over the whole model.
    size_t textLength = 0;
    int64_t checksum = 0;
    for (int i = 0; i < model->getNbExpressions(); ++i) {
        const QXExpression* expr = model->getExpression(i);
        textLength += expr->toString().size();
        checksum += solution->getValue(expr);
    }
    timer.lap("walk: text and values");

    const int64_t expected = (n + 2) / 3;
    const bool ok = value == expected && status == QXSolutionStatus::Feasible;
    std::printf("  total %lld (expected %lld), status %d, %zu text bytes, checksum %lld\n",
                static_cast<long long>(value), static_cast<long long>(expected),
                static_cast<int>(status), textLength, static_cast<long long>(checksum));
    std::printf("  %-28s %8.3f s\n", "all",
                std::chrono::duration<double>(Clock::now() - start).count());
    std::printf("  peak memory so far            %8.1f MB\n", peakMemoryKb() / 1024.0);
    return ok;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string mode = argc > 1 ? argv[1] : "";
    const int n = argc > 2 ? std::atoi(argv[2]) : 1000000;
    bool ok = true;
    if (mode.empty() || mode == "chain") ok = run("chain", n) && ok;
    if (mode.empty() || mode == "wide") ok = run("wide", n) && ok;
    if (!ok) std::printf("WRONG RESULT\n");
    return ok ? 0 : 1;
}
