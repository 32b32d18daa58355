#include "api/qxsolution.h"

#include "api/apierrors.h"
#include "api/quarrix.h"
#include "api/qxmodel.h"
#include "api/qxparam.h"
#include "builder/expressiontools.h"

namespace {
const char* const UNIT = "src/api/qxsolution";
}

QXSolution::QXSolution(Quarrix* solver_) : solver(solver_) {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    const auto& expressions = solver->model->expressions;
    values.reserve(expressions.size());
    leafMarks.reserve(expressions.size());
    for (const QXExpression& expr : expressions) {
        values.push_back(expr.value);
        leafMarks.push_back(ExpressionTools::isLeaf(expr.op) ? Done : Pending);
    }
    computed = leafMarks;
}

void QXSolution::checkExpression(const QXExpression* expr, const QXWhere& where) const {
    if (!expr) ApiErrors::fail(where, ApiErrors::nullArgument("expr"));
    if (expr->model->solver != solver)
        ApiErrors::fail(where, ApiErrors::foreignArgument(expr->toString()));
}

void QXSolution::checkSolution(const QXSolution* other, const char* argument,
                               const QXWhere& where) const {
    if (!other) ApiErrors::fail(where, ApiErrors::nullArgument(argument));
    if (other->solver != solver) ApiErrors::fail(where, ApiErrors::foreignArgument(argument));
}

void QXSolution::autoPropagate() {
    if (!dirty) return;
    computed = leafMarks;
    statusKnown = false;
    dirty = false;
}

int64_t QXSolution::evaluate(const QXExpression* expr) {
    autoPropagate();
    if (computed[expr->index] == Done) return values[expr->index];
    return evaluateUnknown(expr);
}

// Depth-first over the operands with an explicit stack: a chain of nested
// sums as deep as the model costs heap, not call stack.
int64_t QXSolution::evaluateUnknown(const QXExpression* root) {
    const auto& expressions = solver->model->expressions;
    work.clear();
    work.push_back({root->index, 0});
    computed[root->index] = InProgress;
    try {
        while (!work.empty()) {
            Frame& top = work.back();
            const QXExpression& expr = expressions[top.expr];
            const QXExpression::Operands operands = expr.operands();
            while (top.next < operands.size() && computed[operands[top.next]] == Done) ++top.next;
            if (top.next < operands.size()) {
                const int32_t operand = operands[top.next];
                if (computed[operand] == InProgress)
                    ApiErrors::fail(QX_HERE, "The expression graph has a cycle through " +
                                                 expressions[operand].toString() + ".");
                computed[operand] = InProgress;
                work.push_back({operand, 0});
                continue;
            }
            operandValues.clear();
            for (int32_t operand : operands) operandValues.push_back(values[operand]);
            values[top.expr] = ExpressionTools::callEvaluator(expr.op, operandValues);
            computed[top.expr] = Done;
            work.pop_back();
        }
    } catch (...) {
        // Whatever was being evaluated stays unknown, so later readings of
        // other expressions are not affected.
        for (const Frame& frame : work) computed[frame.expr] = Pending;
        throw;
    }
    return values[root->index];
}

void QXSolution::computeStatus() {
    autoPropagate();
    if (statusKnown) return;
    status = isInfeasible() ? QXSolutionStatus::Infeasible
             : isOptimal()  ? QXSolutionStatus::Optimal
                            : QXSolutionStatus::Feasible;
    statusKnown = true;
}

QXSolutionStatus QXSolution::getStatus() {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    computeStatus();
    return status;
}

int64_t QXSolution::getValue(const QXExpression* expr) {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    checkExpression(expr, QX_HERE);
    return evaluate(expr);
}

void QXSolution::setValue(QXExpression* expr, int64_t value) {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    checkExpression(expr, QX_HERE);
    if (!expr->decision) ApiErrors::fail(QX_HERE, "Only decisions can be set.");
    // A decision is a boolean: the search flips it to 1 - v, and any other
    // start value would leave a "solution" outside the model.
    if (value != 0 && value != 1)
        ApiErrors::fail(QX_HERE, "The value of a decision must be 0 or 1 (value given: " +
                                     std::to_string(value) + ").");
    values[expr->index] = value;
    dirty = true;
}

void QXSolution::clear() {
    ApiErrors::checkStopped(solver, QX_HERE);
    // A constant's value belongs to the model, not to the assignment: it is
    // kept so that expressions over constants still read right.
    const auto& expressions = solver->model->expressions;
    for (size_t i = 0; i < values.size(); ++i)
        values[i] = expressions[i].op == QXOperator::Const ? expressions[i].value : 0;
    status = QXSolutionStatus::Infeasible;
    statusKnown = false;
    dirty = true;
}

void QXSolution::copyTo(QXSolution* dest) {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    checkSolution(dest, "dest", QX_HERE);
    autoPropagate();
    dest->values = values;
    dest->computed = computed;
    dest->status = status;
    dest->statusKnown = statusKnown;
    dest->dirty = dirty;
}

int QXSolution::compare(QXSolution* other) {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    checkSolution(other, "solution", QX_HERE);
    computeStatus();
    if (status == QXSolutionStatus::Infeasible)
        ApiErrors::fail(QX_HERE, "The current solution is infeasible, and thus cannot be compared.");
    other->computeStatus();
    if (other->status == QXSolutionStatus::Infeasible)
        ApiErrors::fail(QX_HERE, "The given solution is infeasible, and thus cannot be compared.");
    for (const QXExpression* objective : solver->model->objectives) {
        const int64_t mine = evaluate(objective);
        const int64_t theirs = other->evaluate(objective);
        if (mine != theirs) return mine > theirs ? 1 : -1;
    }
    return 0;
}

bool QXSolution::isInfeasible() {
    for (const QXExpression* constraint : solver->model->constraints)
        if (evaluate(constraint) == 0) return true;
    return false;
}

bool QXSolution::isOptimal() {
    const QXModel* model = solver->model.get();
    const auto& bounds = solver->param->objectiveBounds;
    for (size_t i = 0; i < model->objectives.size(); ++i) {
        const int64_t value = evaluate(model->objectives[i]);
        if (model->directions[i] == QXObjectiveDirection::Minimize ? value > bounds[i]
                                                                   : value < bounds[i])
            return false;
    }
    return true;
}
