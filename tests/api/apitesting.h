#pragma once

#include <gtest/gtest.h>

#include "api/kernelexception.h"
#include "api/quarrix.h"
#include "api/qxexception.h"
#include "api/qxexpression.h"
#include "api/qxmodel.h"
#include "api/qxsolution.h"

#include <functional>
#include <string>
#include <vector>

// The guard sentences, as the user reads them.
const std::string RunningRefused =
    "This method cannot be called in state Running (the model must not be closed or the "
    "solver must be paused or stopped).";
const std::string ModelingOnly =
    "This method is only allowed in state Modeling (the model must not be closed).";
const std::string PausedOrStoppedOnly =
    "This method is only allowed in states Paused or Stopped (the model must be closed and "
    "the solver must be paused or stopped).";
const std::string StoppedOnly =
    "This method is only allowed in state Stopped (the model must be closed and the solver "
    "must be stopped).";
const std::string NeverStarted =
    "This method cannot be called if the solver has not been started at least once.";

// Succeeds when call raises a QXException with exactly this explanation and,
// when given, this source unit and method name.
template <typename Call>
::testing::AssertionResult raises(Call&& call, const std::string& explanation,
                                  const std::string& fileName = "",
                                  const std::string& functionName = "") {
    try {
        call();
    } catch (const QXException& e) {
        if (e.getExplanation() != explanation)
            return ::testing::AssertionFailure() << "explanation: " << e.getExplanation();
        if (!fileName.empty() && e.getFileName() != fileName)
            return ::testing::AssertionFailure() << "file: " << e.getFileName();
        if (!functionName.empty() && e.getFunctionName() != functionName)
            return ::testing::AssertionFailure() << "function: " << e.getFunctionName();
        if (e.getLineNumber() <= 0)
            return ::testing::AssertionFailure() << "line: " << e.getLineNumber();
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "nothing raised";
}

// Puts a solver in a state that only a search would reach.
class QuarrixTestAccess {
public:
    static void setState(Quarrix& solver, QXState state) { solver.state = state; }
};

// Succeeds when every call raises this explanation.
inline ::testing::AssertionResult allRaise(const std::vector<std::function<void()>>& calls,
                                           const std::string& explanation) {
    for (size_t i = 0; i < calls.size(); ++i) {
        ::testing::AssertionResult result = raises(calls[i], explanation);
        if (!result) return ::testing::AssertionFailure() << "call " << i << ": " << result.message();
    }
    return ::testing::AssertionSuccess();
}

// A solver whose model is closed (state Stopped) around one decision x that
// is maximized.
struct ClosedSolver {
    Quarrix solver;
    QXModel* model = solver.getModel();
    QXExpression* x = model->createExpression(QXOperator::Bool);
    ClosedSolver() {
        model->addObjective(x, QXObjectiveDirection::Maximize);
        model->close();
    }
};

// The values of these expressions in the solver's solution, in order.
inline std::vector<int64_t> solutionValues(Quarrix& solver, const std::vector<QXExpression*>& expressions) {
    std::vector<int64_t> values;
    for (QXExpression* e : expressions) values.push_back(solver.getSolution()->getValue(e));
    return values;
}
