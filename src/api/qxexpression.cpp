#include "api/qxexpression.h"

#include "api/apierrors.h"
#include "api/nameindex.h"
#include "api/quarrix.h"
#include "api/qxmodel.h"
#include "api/qxsolution.h"
#include "builder/expressiontools.h"
#include "builder/expressiontypetools.h"

#include <algorithm>

namespace {
const char* const UNIT = "src/api/qxexpression";
}

static_assert(sizeof(void*) != 8 || sizeof(QXExpression) == 48, "an expression grew: millions are kept");

QXExpression::QXExpression(Key, QXModel* model_, QXOperator op_, int32_t index_)
    : model(model_), index(index_), op(op_), decision(op_ == QXOperator::Bool),
      objective(false), constraint(false) {}

const Quarrix* QXExpression::solver() const { return model->solver; }

QXOperator QXExpression::getOperator() const {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    return op;
}

int QXExpression::getIndex() const {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    return index;
}

QXModel* QXExpression::getModel() const {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    return model;
}

Quarrix* QXExpression::getQuarrix() const {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    return model->solver;
}

bool QXExpression::isDecision() const {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    return decision;
}

bool QXExpression::isConstraint() const {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    return constraint;
}

bool QXExpression::isObjective() const {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    return objective;
}

bool QXExpression::isConstant() const {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    return op == QXOperator::Const;
}

int QXExpression::getNbOperands() const {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    return static_cast<int>(operandCount);
}

QXExpression* QXExpression::getOperand(int i) const {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    ApiErrors::checkIndex(i, static_cast<int64_t>(operandCount), "operands", QX_HERE);
    return &model->expressions[operands()[i]];
}

bool QXExpression::isNamed() const {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    return nameNumber != UNNAMED;
}

const std::string& QXExpression::getName() const {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    static const std::string unnamed;
    return nameNumber != UNNAMED ? model->names->nameOf(nameNumber) : unnamed;
}

void QXExpression::setName(const std::string& newName) {
    ApiErrors::checkModeling(solver(), QX_HERE);
    if (newName.empty()) ApiErrors::fail(QX_HERE, ApiErrors::emptyArgument("name"));
    NameIndex& names = *model->names;
    const uint32_t number = names.add(newName, this);
    if (number == NameIndex::TAKEN)
        ApiErrors::fail(QX_HERE, "An operator with name \"" + newName + "\" already exists.");
    if (nameNumber != UNNAMED) names.remove(names.nameOf(nameNumber));
    nameNumber = number;
}

// The list's block holds the power of two at or above the count: full when
// the count is one (from INLINE on).
void QXExpression::pushOperand(const QXExpression* operand) {
    if (operandCount >= INLINE && (operandCount & (operandCount - 1)) == 0) {
        int32_t* grown = new int32_t[2 * operandCount];
        const Operands current = operands();
        std::copy(current.begin(), current.end(), grown);
        if (operandCount > INLINE) delete[] heapOperands;
        heapOperands = grown;
    }
    (operandCount >= INLINE ? heapOperands : localOperands)[operandCount++] = operand->index;
}

void QXExpression::checkOperand(const QXModel* model, QXOperator op, const QXExpression* operand,
                                int position, const QXWhere& where) {
    if (operand->model->solver != model->solver)
        ApiErrors::fail(where, ApiErrors::foreignArgument(operand->toString()));
    const int max = ExpressionTypeTools::getNbMaxOperands(op);
    if (position + 1 > max)
        ApiErrors::fail(where, ApiErrors::operandCount(position + 1, "large: at most", max,
                                                       ExpressionTools::getName(op)));
    if (!ExpressionTypeTools::isOperandValueTypeValid(op, operand->op, operand->value, position))
        ApiErrors::fail(where, operand->toString() + " is invalid: operand " +
                                   std::to_string(position) + " of operator with type " +
                                   ExpressionTools::getName(op) + " must have a boolean value.");
}

void QXExpression::addOperand(QXExpression* expr) {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    if (!expr) ApiErrors::fail(QX_HERE, ApiErrors::nullArgument("expr"));
    ApiErrors::checkModeling(solver(), QX_HERE);
    if (model->nbOperands == ApiErrors::MaxCount)
        ApiErrors::fail(QX_HERE, "The total number of operands in the model cannot exceed " +
                                     std::to_string(ApiErrors::MaxCount) + ".");
    checkOperand(model, op, expr, static_cast<int>(operandCount), QX_HERE);
    pushOperand(expr);
    ++model->nbOperands;
}

void QXExpression::addOperand(int64_t constantValue) {
    ApiErrors::checkModeling(solver(), QX_HERE);
    // A constant made for an operand that is then refused is withdrawn, so
    // that the refused call leaves the model as it was.
    const int32_t nbBefore = model->getNbExpressionsUnchecked();
    try {
        addOperand(model->createConstant(constantValue));
    } catch (...) {
        model->removeConstantsFrom(nbBefore);
        throw;
    }
}

int64_t QXExpression::getValue() const {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    if (op == QXOperator::Const) return value;
    ApiErrors::checkPausedOrStopped(solver(), QX_HERE);
    return model->solver->getSolution()->getValue(this);
}

void QXExpression::setValue(int64_t newValue) {
    ApiErrors::checkPausedOrStopped(solver(), QX_HERE);
    model->solver->getSolution()->setValue(this, newValue);
}

int64_t QXExpression::evaluate(QXOperator op, const std::vector<int64_t>& operandValues) {
    return ExpressionTools::callEvaluator(op, operandValues);
}

std::string QXExpression::toString() const {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    std::string text = "Expression " + std::to_string(index) + " (type = " +
                       ExpressionTools::getName(op);
    if (nameNumber != UNNAMED) text += ", name = " + model->names->nameOf(nameNumber);
    return text + ")";
}

std::string QXExpression::getInfo() const {
    ApiErrors::checkNotRunning(solver(), QX_HERE);
    std::string text = toString() + "\n";
    text += "  decision = " + std::to_string(decision) + ", constraint = " +
            std::to_string(constraint) + ", objective = " + std::to_string(objective) + "\n";
    if (op == QXOperator::Const || decision)
        text += "  initial value = " + std::to_string(value) + "\n";
    if (op == QXOperator::Const || (model->solver->hasSolution() &&
                                    (solver()->isStatePaused() || solver()->isStateStopped())))
        text += "  value = " + std::to_string(getValue()) + "\n";
    return text;
}
