// The solve lifecycle over graphs compiled on the test side: a small
// compiler for the operators used here mirrors the closed model into a
// kernel graph, the way the model compiler hands graphs to the solve.

#include "apitesting.h"

#include "api/qxexpression.h"
#include "api/qxparam.h"
#include "api/qxphase.h"
#include "api/qxsolution.h"
#include "api/qxstatistics.h"
#include "api/solvegraphs.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/solution.h"
#include "../solver/kernel/testgraph.h"

#include <iostream>
#include <map>
#include <regex>
#include <sstream>

using Op = QXOperator;

namespace {

class TestGraphs : public SolveGraphs {
public:
    explicit TestGraphs(QXModel& model) : model(model) {
        static const std::map<Op, NodeType> TYPES = {{Op::Sum, Sum}, {Op::Leq, Leq}, {Op::Geq, Geq},
                                                     {Op::Eq, Eq},   {Op::Prod, Product}, {Op::Max, Max}};
        for (int i = 0; i < model.getNbExpressions(); ++i) {
            QXExpression* e = model.getExpression(i);
            if (e->getOperator() == Op::Bool) {
                nodes.push_back(graph.boolean());
            } else if (e->getOperator() == Op::Const) {
                nodes.push_back(graph.constant(e->getValue()));
            } else {
                std::vector<unsigned int> childs;
                for (int k = 0; k < e->getNbOperands(); ++k) childs.push_back(nodes[e->getOperand(k)->getIndex()]);
                nodes.push_back(graph.add(TYPES.at(e->getOperator()), childs));
            }
        }
        for (int c = 0; c < model.getNbConstraints(); ++c) graph.constraint(nodes[model.getConstraint(c)->getIndex()]);
        for (int o = 0; o < model.getNbObjectives(); ++o)
            graph.objective(nodes[model.getObjective(o)->getIndex()],
                            model.getObjectiveDirection(o) == QXObjectiveDirection::Maximize ? Maximize : Minimize);
        graph.close();
        dags.push_back(graph.makeDag());
    }
    Dag* getDag(unsigned int i) override { return dags[i].get(); }
    void createCopies(unsigned int n) override {
        while (dags.size() < n + 1) dags.push_back(graph.makeDag());
    }
    // Decisions are created first in these models: decision d is variable d.
    void convertSolution(QXSolution* from, Solution* to) const override {
        to->variables().clear();
        for (int d = 0; d < model.getNbDecisions(); ++d) to->variables().push_back(from->getValue(model.getDecision(d)));
        to->objectives().clear();
        for (int o = 0; o < model.getNbObjectives(); ++o) to->objectives().push_back(from->getValue(model.getObjective(o)));
        unsigned long long violated = 0;
        for (int c = 0; c < model.getNbConstraints(); ++c) violated += from->getValue(model.getConstraint(c)) == 0;
        to->setNbViolatedConstraints(violated);
    }
    void convertBackSolution(const Solution* from, QXSolution* to) const override {
        for (int d = 0; d < model.getNbDecisions(); ++d) to->setValue(model.getDecision(d), from->getVariableValues()[d]);
        ++conversionsBack;
    }

    QXModel& model;
    TestGraph graph;
    std::vector<unsigned int> nodes;  // by expression index
    std::vector<std::unique_ptr<Dag>> dags;
    mutable int conversionsBack = 0;
};

const std::vector<int64_t> WEIGHTS = {23, 31, 29, 44, 53, 38, 63, 85, 89, 82};
const std::vector<int64_t> VALUES = {92, 57, 49, 68, 60, 43, 67, 84, 87, 72};
const int64_t CAPACITY = 165;
const int64_t OPTIMUM = 309;  // items 0, 1, 2, 3

// Knapsack with a second objective (fewest items), optionally starting from
// given decision values.
struct KnapsackSolve {
    KnapsackSolve(int nbThreads, int seed = 4) {
        QXModel* m = solver.getModel();
        for (size_t i = 0; i < WEIGHTS.size(); ++i) x.push_back(m->createExpression(Op::Bool));
        QXExpression* weight = m->createExpression(Op::Sum);
        QXExpression* value = m->createExpression(Op::Sum);
        QXExpression* count = m->createExpression(Op::Sum);
        for (size_t i = 0; i < WEIGHTS.size(); ++i) {
            weight->addOperand(m->createExpression(Op::Prod, x[i], WEIGHTS[i]));
            value->addOperand(m->createExpression(Op::Prod, x[i], VALUES[i]));
            count->addOperand(x[i]);
        }
        m->addConstraint(m->createExpression(Op::Leq, weight, CAPACITY));
        m->addObjective(value, QXObjectiveDirection::Maximize);
        m->addObjective(count, QXObjectiveDirection::Minimize);
        objective = value;
        items = count;
        m->close();
        solver.getParam()->setNbThreads(nbThreads);
        solver.getParam()->setSeed(seed);
        solver.getParam()->setVerbosity(0);
        solver.setDisplayCallback(nullptr, nullptr);
        graphs = std::make_unique<TestGraphs>(*m);
    }
    int64_t value() { return solver.getSolution()->getValue(objective); }
    std::vector<int64_t> decisions() {
        std::vector<int64_t> v;
        for (QXExpression* e : x) v.push_back(solver.getSolution()->getValue(e));
        return v;
    }

    Quarrix solver;
    std::vector<QXExpression*> x;
    QXExpression* objective;
    QXExpression* items;
    std::unique_ptr<TestGraphs> graphs;
};
}  // namespace

TEST(QuarrixSolve, PhasesFindTheOptimumAndReportTheirEffort) {
    KnapsackSolve k(2);
    QXPhase* first = k.solver.createPhase();
    first->setOptimizedObjective(0);
    first->setIterationLimit(20000);
    QXPhase* second = k.solver.createPhase();
    second->setIterationLimit(5000);
    EXPECT_EQ(k.solver.computePhaseIterationLimit(1), 25000);
    EXPECT_EQ(k.solver.computePhaseTimeLimit(1), 2147483647);  // no limit plus anything
    EXPECT_EQ(k.solver.computePhaseTimeLimit(-1), 0);
    k.solver.solveOn(*k.graphs);
    EXPECT_EQ(k.solver.getState(), QXState::Stopped);
    EXPECT_EQ(k.value(), OPTIMUM);
    EXPECT_EQ(k.solver.getSolution()->getValue(k.items), 4);
    EXPECT_EQ(k.solver.getSolution()->getStatus(), QXSolutionStatus::Feasible);
    // Each phase runs its own limit from the cumulative one: equal effort
    // makes both threads stop at the same count.
    EXPECT_EQ(first->getStatistics()->getNbIterations(), 20000);
    EXPECT_EQ(first->getStatistics()->getNbMoves(), 40000);
    EXPECT_EQ(second->getStatistics()->getNbIterations(), 5000);
    QXStatistics* total = k.solver.getStatistics();
    EXPECT_EQ(total->getNbIterations(), 25000);
    EXPECT_EQ(total->getNbMoves(), 50000);
    EXPECT_GT(total->getNbAcceptedMoves(), 0);
    EXPECT_EQ(k.graphs->conversionsBack, 2);  // at the end of each phase, no display
    EXPECT_EQ(k.solver.getObjectiveInfo(), "obj = (309, 4)");
    EXPECT_TRUE(std::regex_match(k.solver.getInfo(),
                                 std::regex(R"(\[\d+ sec, 25000 itr\]: obj = \(309, 4\), mov = 50000, .*imp = \d+\n)")));
    EXPECT_TRUE(std::regex_match(k.solver.getEndResolutionInfo(),
                                 std::regex(R"(25000 iterations, 50000 moves performed in \d+ seconds\n)"
                                            R"(Feasible solution: obj = \(309, 4\))")));
    // A second solve starts again from the solution the first one left.
    k.solver.solveOn(*k.graphs);
    EXPECT_EQ(k.value(), OPTIMUM);
}

TEST(QuarrixSolve, OneThreadWithAnIterationLimitIsReproducible) {
    std::vector<std::vector<int64_t>> results;
    for (int run = 0; run < 2; ++run) {
        KnapsackSolve k(1, 11);
        k.solver.getParam()->setAnnealingLevel(0);  // stops short of the optimum: the path shows
        k.solver.createPhase()->setIterationLimit(300);
        k.solver.solveOn(*k.graphs);
        std::vector<int64_t> result = k.decisions();
        result.push_back(k.solver.getStatistics()->getNbAcceptedMoves());
        results.push_back(result);
    }
    EXPECT_EQ(results[0], results[1]);
}

TEST(QuarrixSolve, StartsFromTheUserValuesOrAGreedyStart) {
    // A feasible start given with setValue and no iteration: kept as given.
    KnapsackSolve feasible(1);
    feasible.solver.getSolution()->setValue(feasible.x[9], 1);
    feasible.solver.createPhase()->setIterationLimit(1);
    feasible.solver.solveOn(*feasible.graphs);
    EXPECT_EQ(feasible.solver.getSolution()->getValue(feasible.x[9]), 1);
    EXPECT_GE(feasible.value(), 72);
    // Over capacity: the greedy start repairs nothing (it only raises), so
    // the search starts infeasible and works the constraint back in.
    KnapsackSolve infeasible(2);
    for (QXExpression* e : infeasible.x) infeasible.solver.getSolution()->setValue(e, 1);
    infeasible.solver.createPhase()->setIterationLimit(20000);
    infeasible.solver.solveOn(*infeasible.graphs);
    EXPECT_NE(infeasible.solver.getSolution()->getStatus(), QXSolutionStatus::Infeasible);
    EXPECT_EQ(infeasible.value(), OPTIMUM);
}

TEST(QuarrixSolve, DisplayPausesTheSearchAndStopEndsEveryPhase) {
    KnapsackSolve k(2);
    k.solver.getParam()->setVerbosity(1);
    k.solver.getParam()->setTimeBetweenDisplays(1);
    k.solver.createPhase()->setTimeLimit(30);
    k.solver.createPhase()->setTimeLimit(30);
    struct Seen {
        Quarrix* solver;
        int calls = 0;
        std::vector<QXState> states;
    } seen{&k.solver};
    k.solver.setDisplayCallback(
        [](void* data) {
            Seen& s = *static_cast<Seen*>(data);
            s.states.push_back(s.solver->getState());
            if (++s.calls == 2) s.solver->stop();
        },
        &seen);
    std::ostringstream out;
    std::streambuf* saved = std::cout.rdbuf(out.rdbuf());
    auto started = std::chrono::steady_clock::now();
    k.solver.solveOn(*k.graphs);
    std::cout.rdbuf(saved);
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
    // Two displays, the second stopping: the first phase ends, with its last
    // call, and the second never starts.
    EXPECT_EQ(seen.calls, 3);
    for (QXState state : seen.states) EXPECT_EQ(state, QXState::Paused);
    const std::string text = out.str();
    EXPECT_NE(text.find("Phase 0:\n\n"), std::string::npos);
    EXPECT_EQ(text.find("Phase 1:"), std::string::npos);
    EXPECT_NE(text.find(" moves performed in "), std::string::npos);
    EXPECT_NE(text.find("Feasible solution: obj = ("), std::string::npos);
    EXPECT_EQ(k.solver.getState(), QXState::Stopped);
    k.solver.stop();  // stopped: nothing to do
}

TEST(QuarrixSolve, GuardsBeforeAnySolve) {
    KnapsackSolve k(1);
    EXPECT_TRUE(raises([&] { k.solver.getInfo(); }, NeverStarted));
    EXPECT_TRUE(raises([&] { k.solver.stop(); }, NeverStarted));
    EXPECT_FALSE(k.solver.isStarted());
}
