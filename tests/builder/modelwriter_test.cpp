// The model writer: the exact text of a small model, and random models
// written, run again through the language and compiled, which must give the
// same graph, the same settings and the same objective values.

#include "api/kernelexception.h"
#include "api/quarrix.h"
#include "api/qxexpression.h"
#include "api/qxmodel.h"
#include "api/qxparam.h"
#include "api/qxsolution.h"
#include "api/compiledmodel.h"
#include "builder/dagbuilder.h"
#include "builder/modelgraph.h"
#include "builder/modelwriter.h"
#include "modeler/context.h"
#include "modeler/program.h"
#include "randommodel.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/nodetypeutils.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace {

std::string temporaryFile(const std::string& name) {
    return ::testing::TempDir() + "modelwriter_" + name + ".qxm";
}

// A written program run as the launcher runs it, without the solve.
class Rerun {
public:
    explicit Rerun(const std::string& fileName) : context(&program, &solver) {
        program.parse(fileName);
        run("model", Section::model);
        solver.getModel()->close();
        run("param", Section::param);
    }
    int64_t global(const std::string& name) {
        return context.getValue(program.getGlobalVariables()->getVariable(name)).asInt();
    }
    Quarrix solver;
    Program program;
    Context context;

private:
    void run(const std::string& name, Section section) {
        context.setCurrentSection(section);
        std::vector<Value> none;
        program.getFunction(name)->call(&context, none);
    }
};

// The objectives' node values in a model's main Dag once these decision
// values are loaded.
std::vector<long long> compiledObjectives(QXModel* model, const std::vector<QXExpression*>& decisions,
                                          const std::vector<int64_t>& values) {
    QXSolution* solution = model->getQuarrix()->getSolution();
    for (std::size_t i = 0; i < decisions.size(); ++i) solution->setValue(decisions[i], values[i]);
    CompiledModel& builder = *model->getCompiledModel();
    std::vector<long long> variableValues;
    builder.convertSolution(solution, variableValues);
    DagBuilder::loadVariableValues(*builder.getDag(0), variableValues);
    std::vector<long long> objectives;
    for (int o = 0; o < model->getNbObjectives(); ++o) {
        objectives.push_back(builder.getDag(0)->currentValue(builder.getNode(model->getObjective(o))));
        EXPECT_EQ(objectives.back(), solution->getValue(model->getObjective(o)));
    }
    return objectives;
}

// The compiled graph up to node numbering: every node's rank, type and
// number of children. Constants are numbered where the model first uses
// them, which a model read back does differently.
std::vector<std::tuple<unsigned int, NodeType, unsigned int>> graphShape(const QXModel* model) {
    const DagFixedFields& fixed = model->getDagBuilder()->getFixedFields();
    std::vector<std::tuple<unsigned int, NodeType, unsigned int>> shape;
    for (unsigned int node = 0; node < fixed.nbNodes(); ++node)
        shape.emplace_back(fixed.rank(node), fixed.type(node), fixed.nbChilds(node));
    std::sort(shape.begin(), shape.end());
    return shape;
}

}  // namespace

TEST(ModelWriter, WritesTheModelValuesAndSettings) {
    Quarrix solver;
    QXModel* model = solver.getModel();
    QXExpression* x = model->createExpression(QXOperator::Bool);
    QXExpression* y = model->createExpression(QXOperator::Bool);
    y->setName("n1");
    QXExpression* total = model->createExpression(QXOperator::Sum, x, y, -4);
    QXExpression* both = model->createExpression(QXOperator::And, x, y);
    model->createExpression(QXOperator::Abs, std::numeric_limits<int64_t>::min());  // unused
    model->addConstraint(both);
    model->addObjective(total, QXObjectiveDirection::Minimize);
    model->addObjective(both, QXObjectiveDirection::Maximize);
    model->close();
    EXPECT_TRUE(model->getDagBuilder() != nullptr);
    solver.getSolution()->setValue(x, 1);
    solver.getParam()->setObjectiveBound(0, -3);
    solver.getParam()->setSeed(7);
    solver.getParam()->setNbThreads(3);

    const std::string file = temporaryFile("text");
    model->write(file);
    std::ifstream in(file);
    std::stringstream text;
    text << in.rdbuf();
    EXPECT_EQ(text.str(),
              "function model() {\n"
              "\tn0 <- bool();\n"
              "\tn1 <- bool();\n"
              "\tn2 <- -4;\n"
              "\tn3 <- sum(n0, n1, n2);\n"
              "\tn4 <- and(n0, n1);\n"
              "\tn5 <- -9223372036854775807 - 1;\n"
              "\tn6 <- abs(n5);\n"
              "\tconstraint n4;\n"
              "\tminimize n3;\n"
              "\tmaximize n4;\n"
              "}\n"
              "function setInitialValues() {\n"
              "\tsetValue(n0,true);\n"
              "\tsetValue(n1,false);\n"
              "}\n"
              "function param() {\n"
              "\tsetObjectiveBound(0,-3);\n"
              "\tsetInitialValues();\n"
              "\tqxSeed = 7;\n"
              "\tqxNbThreads = 3;\n"
              "}\n");
    std::remove(file.c_str());
}

TEST(ModelWriter, RefusesAnOpenModel) {
    Quarrix solver;
    std::ostringstream out;
    try {
        ModelGraph graph;
        solver.getModel()->fillGraph(graph, true);
        ModelWriter(graph, ModelWriterSettings(), &out);
        ADD_FAILURE() << "no error";
    } catch (const KernelException& e) {
        EXPECT_EQ(e.getExplanation(), "The model need to be closed to be written to a stream.");
        EXPECT_EQ(e.getFileName(), "src/builder/modelwriter");
    }
}

TEST(ModelWriter, RandomModelsRunAgainToTheSameModel) {
    const std::string file = temporaryFile("random");
    for (unsigned int seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Quarrix solver;
        QXModel* model = solver.getModel();
        RandomModel random(model, seed, true);
        // User names, one of them in the generated form, some indexed.
        model->getExpression(model->getNbExpressions() - 1)->setName("n1");
        random.decisions[0]->setName("pick[2]");
        random.decisions.back()->setName("pick[\"last\"]");
        model->close();
        std::vector<int64_t> initial = random.randomDecisionValues();
        for (std::size_t i = 0; i < initial.size(); ++i)
            solver.getSolution()->setValue(random.decisions[i], initial[i]);
        solver.getParam()->setObjectiveBound(0, static_cast<int64_t>(seed) - 30);
        solver.getParam()->setSeed(static_cast<int>(seed));
        solver.getParam()->setNbThreads(1 + seed % 4);
        std::vector<std::string> uids;
        {
            std::ofstream out(file, std::ios::trunc);
            uids = model->write(out);
        }

        Rerun again(file);
        QXModel* copy = again.solver.getModel();
        EXPECT_EQ(graphShape(copy), graphShape(model));
        ASSERT_EQ(copy->getNbDecisions(), model->getNbDecisions());
        EXPECT_EQ(copy->getNbConstraints(), model->getNbConstraints());
        ASSERT_EQ(copy->getNbObjectives(), model->getNbObjectives());
        for (int o = 0; o < model->getNbObjectives(); ++o)
            EXPECT_EQ(copy->getObjectiveDirection(o), model->getObjectiveDirection(o));
        EXPECT_EQ(again.solver.getParam()->getObjectiveBound(0), static_cast<int64_t>(seed) - 30);
        EXPECT_EQ(again.global("qxSeed"), static_cast<int64_t>(seed));
        EXPECT_EQ(again.global("qxNbThreads"), static_cast<int64_t>(1 + seed % 4));

        // Decisions matched by name: the same initial values, then the same
        // objectives for random values.
        std::vector<QXExpression*> copyDecisions;
        for (QXExpression* d : random.decisions) copyDecisions.push_back(copy->getExpression(uids[d->getIndex()]));
        for (std::size_t i = 0; i < initial.size(); ++i)
            EXPECT_EQ(again.solver.getSolution()->getValue(copyDecisions[i]), initial[i]);
        for (int round = 0; round < 4; ++round) {
            std::vector<int64_t> values = random.randomDecisionValues();
            EXPECT_EQ(compiledObjectives(copy, copyDecisions, values),
                      compiledObjectives(model, random.decisions, values));
        }
        if (HasFailure()) break;
    }
    std::remove(file.c_str());
}

// The written program is a program of the language: quarrix runs it (a few
// iterations of search) and ends normally.
TEST(ModelWriter, WrittenProgramRunsThroughQuarrix) {
    Quarrix solver;
    QXModel* model = solver.getModel();
    RandomModel random(model, 4242, true);
    model->close();
    const std::string file = temporaryFile("run");
    model->write(file);
    const std::string command = std::string(QUARRIX_BINARY) + " " + file +
                                " qxIterationLimit=2000 qxVerbosity=0 > /dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
    std::remove(file.c_str());
}
