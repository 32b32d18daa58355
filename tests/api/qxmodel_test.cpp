#include "apitesting.h"

#include "api/qxparam.h"

using Op = QXOperator;
using Dir = QXObjectiveDirection;

namespace {
const std::string Unit = "src/api/qxmodel";
}

TEST(QXModel, ConstantsAreShared) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* five = m->createConstant(5);
    EXPECT_EQ(m->createConstant(5), five);
    EXPECT_EQ(m->getNbExpressions(), 1);
    EXPECT_NE(m->createConstant(-5), five);
    EXPECT_EQ(five->getValue(), 5);
    EXPECT_TRUE(raises([&] { m->createExpression(Op::Const); },
                       "This method cannot be called to create constants (use "
                       "'createConstant' method instead).",
                       Unit, "createExpression"));
    EXPECT_TRUE(raises([&] { m->createExpression(static_cast<Op>(22)); },
                       "Incorrect operator type.", Unit, "createExpression"));
    EXPECT_TRUE(raises([&] { m->createExpression(static_cast<Op>(200), 1); },
                       "Incorrect operator type."));
    EXPECT_EQ(m->getNbExpressions(), 2);
}

TEST(QXModel, CreationFormsMixExpressionsAndIntegers) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* x = m->createExpression(Op::Bool);
    QXExpression* y = m->createExpression(Op::Bool);
    QXExpression* a = m->createExpression(Op::Sum, x, 0);  // literal 0 is the integer
    QXExpression* b = m->createExpression(Op::Sum, int64_t(7), y);
    QXExpression* c = m->createExpression(Op::Max, 2, 3);
    QXExpression* d = m->createExpression(Op::Abs, -4);
    QXExpression* e = m->createExpression(Op::Iif, x, 10, y);
    QXExpression* f = m->createExpression(Op::Iif, 1, x, 20);
    QXExpression* g = m->createExpression(Op::Iif, y, 10, 20);
    EXPECT_EQ(a->getOperand(0), x);
    EXPECT_EQ(a->getOperand(1), m->createConstant(0));
    EXPECT_EQ(b->getOperand(0)->getValue(), 7);
    EXPECT_EQ(b->getOperand(1), y);
    EXPECT_EQ(c->getOperand(1)->getValue(), 3);
    EXPECT_EQ(d->getOperand(0)->getValue(), -4);
    EXPECT_EQ(e->getOperand(1), g->getOperand(1));  // the pool shares 10
    EXPECT_EQ(f->getOperand(0)->getValue(), 1);
    EXPECT_EQ(f->getOperand(2), g->getOperand(2));
    // x, y, then 0, 7, 2, 3, -4, 10, 1, 20 once each, and the seven expressions.
    EXPECT_EQ(m->getNbExpressions(), 2 + 8 + 7);
    EXPECT_EQ(m->getNbOperands(), 2 + 2 + 2 + 1 + 3 + 3 + 3);
}

TEST(QXModel, CreationChecksEveryOperandBeforeMakingAnything) {
    Quarrix solver, other;
    QXModel* m = solver.getModel();
    QXExpression* x = m->createExpression(Op::Bool);
    QXExpression* foreign = other.getModel()->createExpression(Op::Bool);
    const int nbExpressions = m->getNbExpressions();
    EXPECT_TRUE(raises([&] { m->createExpression(Op::Sum, 3, nullptr); },
                       "Argument expr1 cannot be null.", Unit, "createExpression"));
    EXPECT_TRUE(raises([&] { m->createExpression(Op::Sum, x, 4, nullptr); },
                       "Argument expr2 cannot be null."));
    EXPECT_TRUE(raises([&] { m->createExpression(Op::Sum, foreign); },
                       "Argument Expression 0 (type = bool) does not belong to this instance "
                       "of Quarrix."));
    EXPECT_TRUE(raises([&] { m->createExpression(Op::Not, x, x); },
                       "Number of operands (2) is too large: at most 1 operands are expected "
                       "for operator with type not."));
    EXPECT_TRUE(raises([&] { m->createExpression(Op::Sqrt, 9, x); },
                       "Number of operands (2) is too large: at most 1 operands are expected "
                       "for operator with type sqrt."));
    // The condition 2 is made as expression 1 for the check, then withdrawn.
    EXPECT_TRUE(raises([&] { m->createExpression(Op::Iif, 2, x, x); },
                       "Expression 1 (type = const) is invalid: operand 0 of operator with "
                       "type iif must have a boolean value."));
    EXPECT_TRUE(raises([&] { m->createExpression(Op::Or, x, 5); },
                       "Expression 1 (type = const) is invalid: operand 1 of operator with "
                       "type or must have a boolean value."));
    EXPECT_EQ(m->getNbExpressions(), nbExpressions);
    EXPECT_EQ(m->getNbOperands(), 0);
    // A constant that existed before a refused call stays.
    QXExpression* two = m->createConstant(2);
    EXPECT_TRUE(raises([&] { m->createExpression(Op::And, 2); },
                       "Expression 1 (type = const) is invalid: operand 0 of operator with "
                       "type and must have a boolean value."));
    EXPECT_EQ(m->getExpression(1), two);
    EXPECT_EQ(m->getNbExpressions(), nbExpressions + 1);
}

TEST(QXModel, GettersAndTheirIndexErrors) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* x = m->createExpression(Op::Bool);
    QXExpression* y = m->createExpression(Op::Bool);
    m->addConstraint(x);
    m->addObjective(y, Dir::Minimize);
    m->addObjective(x, Dir::Maximize);
    EXPECT_EQ(m->getExpression(1), y);
    EXPECT_EQ(m->getDecision(1), y);
    EXPECT_EQ(m->getConstraint(0), x);
    EXPECT_EQ(m->getObjective(1), x);
    EXPECT_EQ(m->getObjectiveDirection(0), Dir::Minimize);
    EXPECT_EQ(m->getObjectiveDirection(1), Dir::Maximize);
    const std::string only0to1 = "Only indices from 0 to 1 are currently allowed.";
    EXPECT_TRUE(raises([&] { m->getExpression(2); },
                       "The expression with index 2 does not exist.\n" + only0to1, Unit,
                       "getExpression"));
    EXPECT_TRUE(raises([&] { m->getDecision(-1); },
                       "The decision with index -1 does not exist.\n" + only0to1));
    EXPECT_TRUE(raises([&] { m->getConstraint(1); },
                       "The constraint with index 1 does not exist.\n"
                       "Only indices from 0 to 0 are currently allowed."));
    EXPECT_TRUE(raises([&] { m->getObjective(2); },
                       "The objective with index 2 does not exist.\n" + only0to1));
    EXPECT_TRUE(raises([&] { m->getObjectiveDirection(2); },
                       "The objective with index 2 does not exist.\n" + only0to1, Unit,
                       "getObjectiveDirection"));
    EXPECT_TRUE(raises([&] { m->getExpression(""); },
                       "Argument name cannot be an empty string."));
    EXPECT_TRUE(raises([&] { m->getExpression("nobody"); },
                       "No operator found with name 'nobody'."));
    EXPECT_EQ(m->getQuarrix(), &solver);
}

TEST(QXModel, ConstraintsAcceptOnlyBooleans) {
    Quarrix solver, other;
    QXModel* m = solver.getModel();
    QXExpression* x = m->createExpression(Op::Bool);
    const std::string onlyBoolean =
        "Only boolean expressions can be constrained (0, 1, Bool, And, Or, Xor, Not, Eq, "
        "Neq, Geq, Leq, Gt, Lt).";
    EXPECT_TRUE(raises([&] { m->addConstraint(m->createConstant(2)); }, onlyBoolean, Unit,
                       "addConstraint"));
    EXPECT_TRUE(raises([&] { m->addConstraint(m->createExpression(Op::Iif, x, 1, 0)); },
                       onlyBoolean));
    EXPECT_TRUE(raises([&] { m->addConstraint(m->createExpression(Op::Sum, x)); },
                       onlyBoolean));
    EXPECT_TRUE(raises([&] { m->addConstraint(nullptr); }, "Argument expr cannot be null."));
    EXPECT_TRUE(raises(
        [&] { m->addConstraint(other.getModel()->createExpression(Op::Bool)); },
        "Argument Expression 0 (type = bool) does not belong to this instance of Quarrix."));
    EXPECT_EQ(m->getNbConstraints(), 0);
    QXExpression* one = m->createConstant(1);
    m->addConstraint(one);
    m->addConstraint(m->createExpression(Op::Leq, x, 3));
    m->addConstraint(one);  // a second declaration is ignored
    EXPECT_EQ(m->getNbConstraints(), 2);
    EXPECT_TRUE(one->isConstraint());
}

TEST(QXModel, ObjectivesRepeatWithTheirOwnDirections) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* x = m->createExpression(Op::Bool);
    EXPECT_TRUE(raises([&] { m->addObjective(nullptr, Dir::Minimize); },
                       "Argument expr cannot be null.", Unit, "addObjective"));
    EXPECT_EQ(m->getNbObjectives(), 0);
    m->addObjective(x, Dir::Minimize);
    m->addObjective(x, Dir::Maximize);
    EXPECT_EQ(m->getNbObjectives(), 2);
    EXPECT_TRUE(x->isObjective());
    EXPECT_EQ(m->getObjectiveDirection(1), Dir::Maximize);
}

TEST(QXModel, CloseValidatesAndLeavesTheModelOpenOnFailure) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* x = m->createExpression(Op::Bool);
    QXExpression* s = m->createExpression(Op::Sum);
    try {
        m->close();
        FAIL() << "closed without objective";
    } catch (const KernelException&) {
        FAIL() << "the operand count is checked before the objectives";
    } catch (const QXException& e) {
        EXPECT_EQ(e.getExplanation(), "Number of operands (0) is too small: at least 1 "
                                      "operands are expected for operator with type sum.");
        EXPECT_EQ(e.getFunctionName(), "close");
    }
    EXPECT_FALSE(m->isClosed());
    EXPECT_EQ(solver.getState(), QXState::Modeling);
    s->addOperand(x);
    m->createExpression(Op::Div, x);
    EXPECT_TRUE(raises([&] { m->close(); },
                       "Number of operands (1) is too small: at least 2 operands are expected "
                       "for operator with type div."));
    m->getExpression(2)->addOperand(3);
    try {
        m->close();
        FAIL() << "closed without objective";
    } catch (const KernelException& e) {
        EXPECT_EQ(e.getExplanation(), "At least one objective is required in the model.");
        EXPECT_EQ(e.getFileName(), Unit);
        EXPECT_EQ(e.getFunctionName(), "close");
    }
    EXPECT_FALSE(m->isClosed());
    m->addObjective(s, Dir::Maximize);
    m->close();
    EXPECT_TRUE(m->isClosed());
    EXPECT_EQ(solver.getState(), QXState::Stopped);
    EXPECT_TRUE(raises([&] { m->close(); }, ModelingOnly, Unit, "close"));
    EXPECT_TRUE(raises([&] { m->createConstant(1); }, ModelingOnly, Unit, "createConstant"));
    EXPECT_TRUE(raises([&] { m->createExpression(Op::Bool); }, ModelingOnly));
    EXPECT_TRUE(raises([&] { m->createExpression(Op::Sum, x, 1); }, ModelingOnly, Unit,
                       "createExpression"));
    EXPECT_TRUE(raises([&] { m->addConstraint(x); }, ModelingOnly));
    EXPECT_TRUE(raises([&] { m->addObjective(x, Dir::Minimize); }, ModelingOnly));
    EXPECT_EQ(m->getNbExpressions(), 4);  // x, s, the div and its constant 3
    EXPECT_EQ(m->getNbConstraints(), 0);
    EXPECT_EQ(m->getNbObjectives(), 1);
}

TEST(QXModel, TextAndWrite) {
    Quarrix solver;
    QXModel* m = solver.getModel();
    QXExpression* x = m->createExpression(Op::Bool);
    QXExpression* y = m->createExpression(Op::Bool);
    m->addConstraint(m->createExpression(Op::Or, x, y));
    m->addObjective(m->createExpression(Op::Sum, x, y, 4), Dir::Maximize);
    EXPECT_EQ(m->toString(),
              "Model: \n"
              "  expressions = 5, operands = 5\n"
              "  decisions = 2, constraints = 1, objectives = 1\n");
    EXPECT_TRUE(raises([&] { m->write("model.qxm"); }, PausedOrStoppedOnly, Unit, "write"));
    m->close();
    EXPECT_TRUE(raises([&] { m->write(""); }, "Argument fileName cannot be an empty string."));
    EXPECT_TRUE(raises([&] { m->write("no/such/folder/model.qxm"); },
                       "Cannot write the model in file 'no/such/folder/model.qxm'.", Unit,
                       "write"));
}

TEST(QXModel, GettersAreRefusedWhileRunning) {
    ClosedSolver c;
    QXModel* m = c.model;
    QuarrixTestAccess::setState(c.solver, QXState::Running);
    EXPECT_TRUE(raises([&] { m->getNbExpressions(); }, RunningRefused, Unit,
                       "getNbExpressions"));
    EXPECT_TRUE(allRaise({
        [&] { m->getNbOperands(); }, [&] { m->getNbDecisions(); },
        [&] { m->getNbConstraints(); }, [&] { m->getNbObjectives(); },
        [&] { m->getExpression(0); }, [&] { m->getExpression("x"); },
        [&] { m->getDecision(0); }, [&] { m->getConstraint(0); }, [&] { m->getObjective(0); },
        [&] { m->getObjectiveDirection(0); }, [&] { m->isClosed(); }, [&] { m->toString(); }
    }, RunningRefused));
    EXPECT_TRUE(raises([&] { m->write("f"); }, PausedOrStoppedOnly));
    EXPECT_EQ(m->getQuarrix(), &c.solver);
    QuarrixTestAccess::setState(c.solver, QXState::Stopped);
}
