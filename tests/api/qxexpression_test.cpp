#include "apitesting.h"

#include "api/qxsolution.h"

using Op = QXOperator;

namespace {
const std::string Unit = "src/api/qxexpression";
}

TEST(QXExpression, CreationSetsIndexFlagsAndDecisionList) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* c = m->createConstant(4);
    QXExpression* b = m->createExpression(Op::Bool);
    QXExpression* s = m->createExpression(Op::Sum, b, c);
    EXPECT_EQ(c->getIndex(), 0);
    EXPECT_EQ(b->getIndex(), 1);
    EXPECT_EQ(s->getIndex(), 2);
    EXPECT_TRUE(b->isDecision());
    EXPECT_FALSE(s->isDecision());
    EXPECT_TRUE(c->isConstant());
    EXPECT_FALSE(b->isConstant());
    EXPECT_FALSE(b->isObjective());
    EXPECT_FALSE(b->isConstraint());
    EXPECT_FALSE(b->isNamed());
    EXPECT_EQ(m->getNbDecisions(), 1);
    EXPECT_EQ(m->getDecision(0), b);
    EXPECT_EQ(s->getModel(), m);
    EXPECT_EQ(s->getQuarrix(), &solver);
    EXPECT_EQ(s->getOperator(), Op::Sum);
    ASSERT_EQ(s->getNbOperands(), 2);
    EXPECT_EQ(s->getOperand(0), b);
    EXPECT_EQ(s->getOperand(1), c);
}

TEST(QXExpression, TextForms) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* c = m->createConstant(-3);
    QXExpression* b = m->createExpression(Op::Bool);
    QXExpression* s = m->createExpression(Op::Sum, b, c);
    s->setName("total");
    EXPECT_EQ(s->toString(), "Expression 2 (type = sum, name = total)");
    EXPECT_EQ(b->toString(), "Expression 1 (type = bool)");
    EXPECT_EQ(c->getInfo(),
              "Expression 0 (type = const)\n"
              "  decision = 0, constraint = 0, objective = 0\n"
              "  initial value = -3\n"
              "  value = -3\n");
    // No solution yet: a decision shows its initial value only.
    EXPECT_EQ(b->getInfo(),
              "Expression 1 (type = bool)\n"
              "  decision = 1, constraint = 0, objective = 0\n"
              "  initial value = 0\n");
    m->addConstraint(b);
    m->addObjective(s, QXObjectiveDirection::Minimize);
    m->close();
    solver.getSolution()->setValue(b, 1);
    EXPECT_EQ(s->getInfo(),
              "Expression 2 (type = sum, name = total)\n"
              "  decision = 0, constraint = 0, objective = 1\n"
              "  value = -2\n");
    EXPECT_EQ(b->getInfo(),
              "Expression 1 (type = bool)\n"
              "  decision = 1, constraint = 1, objective = 0\n"
              "  initial value = 0\n"
              "  value = 1\n");
}

TEST(QXExpression, GetOperandIndexErrors) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* b = m->createExpression(Op::Bool);
    QXExpression* n = m->createExpression(Op::Not, b);
    EXPECT_TRUE(raises([&] { b->getOperand(0); },
                       "The operands with index 0 does not exist.\n"
                       "Only indices from 0 to -1 are currently allowed.",
                       Unit, "getOperand"));
    EXPECT_TRUE(raises([&] { n->getOperand(-1); },
                       "The operands with index -1 does not exist.\n"
                       "Only indices from 0 to 0 are currently allowed."));
    EXPECT_TRUE(raises([&] { n->getOperand(1); },
                       "The operands with index 1 does not exist.\n"
                       "Only indices from 0 to 0 are currently allowed."));
}

TEST(QXExpression, AddOperandRefusalsLeaveEverythingUnchanged) {
    Quarrix solver, other;
    QXModel* m = solver.getModel();
    QXExpression* b = m->createExpression(Op::Bool);
    QXExpression* n = m->createExpression(Op::Not, b);
    QXExpression* a = m->createExpression(Op::And);
    QXExpression* o = m->createExpression(Op::Or);
    QXExpression* sumOfBool = m->createExpression(Op::Sum, b);
    QXExpression* foreign = other.getModel()->createExpression(Op::Bool);
    const int nbOperands = m->getNbOperands();
    const int nbExpressions = m->getNbExpressions();

    EXPECT_TRUE(raises([&] { n->addOperand(b); },
                       "Number of operands (2) is too large: at most 1 operands are expected "
                       "for operator with type not.",
                       Unit, "addOperand"));
    EXPECT_TRUE(raises([&] { b->addOperand(b); },
                       "Number of operands (1) is too large: at most 0 operands are expected "
                       "for operator with type bool."));
    EXPECT_TRUE(raises([&] { a->addOperand(nullptr); }, "Argument expr cannot be null."));
    EXPECT_TRUE(raises([&] { a->addOperand(foreign); },
                       "Argument Expression 0 (type = bool) does not belong to this instance "
                       "of Quarrix."));
    EXPECT_TRUE(raises([&] { o->addOperand(sumOfBool); },
                       "Expression 4 (type = sum) is invalid: operand 0 of operator with type "
                       "or must have a boolean value."));
    // The constant 2 is made for the call and withdrawn with it.
    EXPECT_TRUE(raises([&] { a->addOperand(int64_t(2)); },
                       "Expression 5 (type = const) is invalid: operand 0 of operator with type "
                       "and must have a boolean value."));
    EXPECT_EQ(m->getNbExpressions(), nbExpressions);
    EXPECT_EQ(m->getNbOperands(), nbOperands);
    EXPECT_EQ(a->getNbOperands(), 0);
    EXPECT_EQ(n->getNbOperands(), 1);
    EXPECT_TRUE(raises([&] { m->getExpression(nbExpressions); },
                       "The expression with index 5 does not exist.\n"
                       "Only indices from 0 to 4 are currently allowed."));

    a->addOperand(int64_t(1));
    a->addOperand(b);
    a->addOperand(b);  // the same operand may come again
    EXPECT_EQ(a->getNbOperands(), 3);
    EXPECT_EQ(a->getOperand(0)->getOperator(), Op::Const);
    EXPECT_EQ(m->getNbOperands(), nbOperands + 3);
    EXPECT_EQ(m->getNbExpressions(), nbExpressions + 1);
    a->addOperand(1);  // the pool gives the same constant back
    a->addOperand(0);
    EXPECT_EQ(a->getOperand(3), a->getOperand(0));
    EXPECT_EQ(a->getOperand(4)->getValue(), 0);
    EXPECT_EQ(m->getNbExpressions(), nbExpressions + 2);
}

TEST(QXExpression, AddOperandChecksInOrderAcrossStates) {
    ClosedSolver c;
    QXExpression* x = c.x;
    // Closed: null is reported before the state, a real operand hits the state.
    EXPECT_TRUE(raises([&] { x->addOperand(nullptr); }, "Argument expr cannot be null."));
    EXPECT_TRUE(raises([&] { x->addOperand(x); }, ModelingOnly, Unit, "addOperand"));
    EXPECT_TRUE(raises([&] { x->addOperand(int64_t(3)); }, ModelingOnly));
    QuarrixTestAccess::setState(c.solver, QXState::Running);
    EXPECT_TRUE(raises([&] { x->addOperand(nullptr); }, RunningRefused));
    QuarrixTestAccess::setState(c.solver, QXState::Stopped);
}

// Operand lists start inside the expression and move to blocks that double:
// every operand reads back across each move (4 -> 5, 8 -> 9, 16 -> 17, ...),
// whether added one by one or given at creation.
TEST(QXExpression, OperandListsReadBackAcrossEveryGrowth) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    std::vector<QXExpression*> bools;
    for (int i = 0; i < 40; ++i) bools.push_back(m->createExpression(Op::Bool));
    QXExpression* sum = m->createExpression(Op::Sum);
    for (int n = 1; n <= 40; ++n) {
        sum->addOperand(bools[n - 1]);
        ASSERT_EQ(sum->getNbOperands(), n);
        for (int k = 0; k < n; ++k) ASSERT_EQ(sum->getOperand(k), bools[k]) << n << " operands";
    }
    QXExpression* pair = m->createExpression(Op::Sum, bools[3], bools[4]);
    pair->addOperand(bools[5]);
    EXPECT_EQ(pair->getOperand(0), bools[3]);
    EXPECT_EQ(pair->getOperand(2), bools[5]);
}

TEST(QXExpression, SetName) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* b = m->createExpression(Op::Bool);
    QXExpression* d = m->createExpression(Op::Bool);
    EXPECT_TRUE(raises([&] { b->setName(""); }, "Argument name cannot be an empty string.", Unit,
                       "setName"));
    b->setName("first");
    EXPECT_TRUE(raises([&] { b->setName("first"); },
                       "An operator with name \"first\" already exists."));
    EXPECT_TRUE(raises([&] { d->setName("first"); },
                       "An operator with name \"first\" already exists."));
    EXPECT_FALSE(d->isNamed());
    b->setName("renamed");  // the old name is freed
    EXPECT_EQ(b->getName(), "renamed");
    EXPECT_EQ(m->getExpression("renamed"), b);
    d->setName("first");
    EXPECT_EQ(m->getExpression("first"), d);

    m->addObjective(d, QXObjectiveDirection::Maximize);
    m->close();
    EXPECT_TRUE(raises([&] { b->setName("late"); }, ModelingOnly));
    EXPECT_EQ(b->getName(), "renamed");
}

TEST(QXExpression, ValuesFollowTheState) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* c = m->createConstant(12);
    QXExpression* b = m->createExpression(Op::Bool);
    QXExpression* s = m->createExpression(Op::Sum, b, c);
    EXPECT_EQ(c->getValue(), 12);  // a constant answers before the model is closed
    EXPECT_TRUE(raises([&] { s->getValue(); }, PausedOrStoppedOnly, Unit, "getValue"));
    EXPECT_TRUE(raises([&] { b->setValue(1); }, PausedOrStoppedOnly, Unit, "setValue"));
    m->addObjective(s, QXObjectiveDirection::Maximize);
    m->close();
    EXPECT_EQ(s->getValue(), 12);
    b->setValue(1);
    EXPECT_EQ(s->getValue(), 13);
    EXPECT_TRUE(raises([&] { s->setValue(3); }, "Only decisions can be set.",
                       "src/api/qxsolution", "setValue"));
    EXPECT_EQ(s->getValue(), 13);
}

TEST(QXExpression, EveryGetterIsRefusedWhileRunning) {
    ClosedSolver c;
    QXExpression* x = c.x;
    QuarrixTestAccess::setState(c.solver, QXState::Running);
    EXPECT_TRUE(raises([&] { x->getOperator(); }, RunningRefused, Unit, "getOperator"));
    EXPECT_TRUE(allRaise({
        [&] { x->getIndex(); }, [&] { x->getModel(); }, [&] { x->getQuarrix(); },
        [&] { x->isDecision(); }, [&] { x->isConstraint(); }, [&] { x->isObjective(); },
        [&] { x->isConstant(); }, [&] { x->getNbOperands(); }, [&] { x->getOperand(0); },
        [&] { x->isNamed(); }, [&] { x->getName(); }, [&] { x->getValue(); }
    }, RunningRefused));
    EXPECT_TRUE(raises([&] { x->setValue(1); }, PausedOrStoppedOnly));
    EXPECT_TRUE(raises([&] { x->toString(); }, RunningRefused, Unit, "toString"));
    EXPECT_TRUE(raises([&] { x->getInfo(); }, RunningRefused));
    QuarrixTestAccess::setState(c.solver, QXState::Paused);
    x->setValue(1);
    EXPECT_EQ(x->getValue(), 1);
}
