#include "api/qxexception.h"
#include "api/qxexpression.h"
#include "api/qxmodel.h"
#include "api/qxparam.h"
#include "api/quarrix.h"
#include "modeler/context.h"
#include "modeler/program.h"
#include "modeler/value/tnode.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// A program run against a real solver, one section at a time.
class BridgeRun {
public:
    explicit BridgeRun(const std::string& text) : context(&program, &solver) {
        program.parseText(text, "bridge.qxm");
    }
    void run(const std::string& name, Section section) {
        context.setCurrentSection(section);
        std::vector<Value> none;
        program.getFunction(name)->call(&context, none);
    }
    // The message of the failure of running name in section, or "no error".
    std::string failure(const std::string& name, Section section) {
        try {
            run(name, section);
        } catch (const QXException& e) {
            return e.getExplanation();
        }
        return "no error";
    }
    Value global(const std::string& name) {
        return context.getValue(program.getGlobalVariables()->getVariable(name));
    }
    QXExpression* expression(const std::string& name) {
        Value v = global(name);
        EXPECT_TRUE(TNode::isNode(v)) << name;
        return TNode::asExpression(v);
    }
    QXModel* model() { return solver.getModel(); }

    Quarrix solver;
    Program program;
    Context context;
};

const char* const kTwoDecisions =
    "function model() { x <- bool(); y <- bool(); maximize x + y; }\n";

}  // namespace

TEST(Bridge, OperatorsBuildTheDocumentedShapes) {
    BridgeRun r(std::string(kTwoDecisions) +
                "function build() { d = x - y; e = x - 3; f = -x; g = sum(x, 1, 1, y, 1); }");
    r.run("model", Section::model);
    r.run("build", Section::model);
    QXExpression* x = r.expression("x");
    QXExpression* y = r.expression("y");

    // x - y: a sum whose second operand is y times the constant -1.
    QXExpression* d = r.expression("d");
    ASSERT_EQ(d->getOperator(), QXOperator::Sum);
    ASSERT_EQ(d->getNbOperands(), 2);
    EXPECT_EQ(d->getOperand(0), x);
    QXExpression* negated = d->getOperand(1);
    ASSERT_EQ(negated->getOperator(), QXOperator::Prod);
    EXPECT_EQ(negated->getOperand(0), y);
    EXPECT_EQ(negated->getOperand(1), r.model()->createConstant(-1));

    // An integer subtrahend is negated directly.
    QXExpression* e = r.expression("e");
    EXPECT_EQ(e->getOperand(1), r.model()->createConstant(-3));

    QXExpression* f = r.expression("f");
    EXPECT_EQ(f->getOperator(), QXOperator::Prod);
    EXPECT_EQ(f->getOperand(0), x);

    // Integer arguments share the pooled constant.
    QXExpression* g = r.expression("g");
    ASSERT_EQ(g->getNbOperands(), 5);
    EXPECT_EQ(g->getOperand(1), g->getOperand(2));
    EXPECT_EQ(g->getOperand(1), g->getOperand(4));
    EXPECT_EQ(g->getOperand(1), r.model()->createConstant(1));
}

TEST(Bridge, RefusedBuildsLeaveTheModelUnchanged) {
    BridgeRun r(std::string(kTwoDecisions) +
                "function badAnd() { a = x && 2; }\n"
                "function badIif() { i = iif(x + y, 1, 2); }\n"
                "function badRename() { z <- y; x <- y; }\n");
    r.run("model", Section::model);
    const int before = r.model()->getNbExpressions();
    EXPECT_EQ(r.failure("badAnd", Section::model),
              "Expression " + std::to_string(before) +
                  " (type = const) is invalid: operand 1 of operator with type and must have a "
                  "boolean value.");
    EXPECT_EQ(r.model()->getNbExpressions(), before);
    EXPECT_NE(r.failure("badIif", Section::model), "no error");
    // Only the sum x + y, which the call needed before it was refused.
    EXPECT_EQ(r.model()->getNbExpressions(), before + 1);

    EXPECT_EQ(r.failure("badRename", Section::model),
              "An operator with name \"x\" already exists.");
    EXPECT_EQ(r.expression("y")->getName(), "z");
    EXPECT_EQ(r.model()->getExpression("x"), r.expression("x"));
}

TEST(Bridge, SolverFunctionsFollowTheirSections) {
    BridgeRun r(std::string(kTwoDecisions) +
                "function set() { setValue(x, 1); }\n"
                "function bound() { setObjectiveBound(0, 2); }\n"
                "function build() { w = x + 1; }\n");
    r.run("model", Section::model);
    r.model()->close();

    EXPECT_EQ(r.failure("set", Section::output), "Function 'setValue' not allowed in this section.");
    EXPECT_EQ(r.failure("set", Section::display),
              "Function 'setValue' not allowed in this section.");
    EXPECT_EQ(r.failure("bound", Section::output),
              "Function 'setObjectiveBound' not allowed in this section.");
    EXPECT_EQ(r.failure("build", Section::output), "Function 'sum' not allowed in this section.");
    EXPECT_EQ(r.failure("build", Section::display), "Function 'sum' not allowed in this section.");

    r.run("set", Section::param);
    r.run("bound", Section::param);
    EXPECT_EQ(r.expression("x")->getValue(), 1);
    EXPECT_EQ(r.solver.getParam()->getObjectiveBound(0), 2);
}

TEST(Bridge, GetValueInEveryReadingSection) {
    BridgeRun r("function model() { x <- bool(); y <- bool(); s <- x + y; maximize s; }\n"
                "function set() { setValue(y, 1); }\n"
                "function read() { v = getValue(s); }\n");
    r.run("model", Section::model);
    r.model()->close();
    r.run("set", Section::param);
    for (Section section : {Section::param, Section::display, Section::output}) {
        r.run("read", section);
        EXPECT_EQ(r.global("v").asInt(), 1);
    }
    EXPECT_EQ(r.failure("read", Section::input), "Function 'getValue' not allowed in this section.");
}

TEST(Bridge, ModifiersDeclareObjectivesAndConstraints) {
    BridgeRun r("function model() { x <- bool(); y <- bool();\n"
                "  minimize x + y; maximize x; constraint x || y; constraint x || y; }\n");
    r.run("model", Section::model);
    ASSERT_EQ(r.model()->getNbObjectives(), 2);
    EXPECT_EQ(r.model()->getObjectiveDirection(0), QXObjectiveDirection::Minimize);
    EXPECT_EQ(r.model()->getObjectiveDirection(1), QXObjectiveDirection::Maximize);
    EXPECT_EQ(r.model()->getObjective(1), r.expression("x"));
    // Each "||" builds its own expression: two constraints.
    EXPECT_EQ(r.model()->getNbConstraints(), 2);
}

// Sums written the natural way nest as deep as the data; building, closing
// and reading them back must not recurse per level.
TEST(Bridge, LongChainOfSumsBuildsClosesAndReads) {
    BridgeRun r("function model() {\n"
                "  n = 200000; s = 0;\n"
                "  for [i in 0..n-1] { x[i] <- bool(); s = s + x[i]; }\n"
                "  maximize s;\n"
                "}\n"
                "function param() { for [i in 0..n-1] if (i % 3 == 0) setValue(x[i], 1);\n"
                "  v = getValue(s); }\n");
    r.run("model", Section::model);
    r.model()->close();
    r.run("param", Section::param);
    EXPECT_EQ(r.global("v").asInt(), (200000 + 2) / 3);
}

TEST(Bridge, HandlesOnlyNameTheExpression) {
    Quarrix solver;
    QXExpression* x = solver.getModel()->createExpression(QXOperator::Bool);
    {
        Value a = TNode::make(x);
        Value b = a;
        EXPECT_EQ(a.getReference(), nullptr);
        EXPECT_EQ(TNode::asExpression(b), x);
        EXPECT_EQ(a.toString(), "(unnamed operator)");
        x->setName("x");
        EXPECT_EQ(b.toString(), "x");
        EXPECT_EQ(a.getType()->getName(), "qxexpression");
    }
    EXPECT_EQ(solver.getModel()->getNbExpressions(), 1);
    EXPECT_EQ(x->getName(), "x");
}
