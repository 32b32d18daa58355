#include "api/qxmodel.h"

#include "api/apierrors.h"
#include "api/kernelexception.h"
#include "api/nameindex.h"
#include "api/quarrix.h"
#include "api/qxerror.h"
#include "api/compiledmodel.h"
#include "api/qxparam.h"
#include "api/qxsolution.h"
#include "builder/expressiontools.h"
#include "builder/expressiontypetools.h"
#include "builder/modelgraph.h"
#include "builder/modelwriter.h"

#include <fstream>

namespace {
const char* const UNIT = "src/api/qxmodel";
}

QXModel::QXModel(Quarrix* solver_) : solver(solver_), names(std::make_unique<NameIndex>()) {}

QXModel::~QXModel() = default;

void QXModel::checkCanCreate(const QXWhere& where) const {
    if (expressions.size() >= static_cast<size_t>(ApiErrors::MaxCount))
        ApiErrors::fail(where, ApiErrors::tooMany("expressions"));
}

// A code outside the catalogue can only come from a cast; every table is
// indexed by the code, so it is stopped here.
static void checkOperator(QXOperator op, const QXWhere& where) {
    if (!isValidOperator(op)) ApiErrors::fail(where, QXERROR::IncorrectNodeType);
}

QXExpression* QXModel::newExpression(QXOperator op) {
    expressions.emplace_back(QXExpression::Key(), this, op, getNbExpressionsUnchecked());
    QXExpression* expr = &expressions.back();
    if (expr->decision) decisions.push_back(expr);
    return expr;
}

void QXModel::removeConstantsFrom(int32_t nbBefore) {
    while (getNbExpressionsUnchecked() > nbBefore) {
        constants.erase(expressions.back().value);
        expressions.pop_back();
    }
}

QXExpression* QXModel::createConstant(int64_t value) {
    ApiErrors::checkModeling(solver, QX_HERE);
    checkCanCreate(QX_HERE);
    auto found = constants.find(value);
    if (found != constants.end()) return found->second;
    QXExpression* expr = newExpression(QXOperator::Const);
    expr->value = value;
    constants.emplace(value, expr);
    return expr;
}

QXExpression* QXModel::createExpression(QXOperator op) {
    ApiErrors::checkModeling(solver, QX_HERE);
    checkCanCreate(QX_HERE);
    checkOperator(op, QX_HERE);
    if (op == QXOperator::Const)
        ApiErrors::fail(QX_HERE, "This method cannot be called to create constants"
                                 " (use 'createConstant' method instead).");
    return newExpression(op);
}

QXExpression* QXModel::createExpression(QXOperator op, QXOperand e0) {
    return createChecked(op, &e0, 1);
}

QXExpression* QXModel::createExpression(QXOperator op, QXOperand e0, QXOperand e1) {
    const QXOperand given[] = {e0, e1};
    return createChecked(op, given, 2);
}

QXExpression* QXModel::createExpression(QXOperator op, QXOperand e0, QXOperand e1,
                                        QXOperand e2) {
    const QXOperand given[] = {e0, e1, e2};
    return createChecked(op, given, 3);
}

// The integers become constants first; if a check then refuses the call, the
// constants it made are withdrawn, so a refused call changes nothing.
QXExpression* QXModel::createChecked(QXOperator op, const QXOperand* given, int count) {
    const QXWhere where = QX_WHERE(UNIT, "createExpression");
    ApiErrors::checkModeling(solver, where);
    checkOperator(op, where);
    const int32_t nbBefore = getNbExpressionsUnchecked();
    QXExpression* operands[3] = {};
    try {
        for (int i = 0; i < count; ++i)
            operands[i] = given[i].isInteger ? createConstant(given[i].value) : given[i].expr;
        checkCanCreate(where);
        for (int i = 0; i < count; ++i) {
            if (!operands[i])
                ApiErrors::fail(where, ApiErrors::nullArgument("expr" + std::to_string(i)));
            QXExpression::checkOperand(this, op, operands[i], i, where);
        }
        if (nbOperands > ApiErrors::MaxCount - count)
            ApiErrors::fail(where, "The total number of operands in the model cannot exceed " +
                                       std::to_string(ApiErrors::MaxCount) + ".");
    } catch (...) {
        removeConstantsFrom(nbBefore);
        throw;
    }
    QXExpression* expr = newExpression(op);
    for (int i = 0; i < count; ++i) expr->pushOperand(operands[i]);
    nbOperands += count;
    return expr;
}

int QXModel::getNbExpressions() const {
    ApiErrors::checkNotRunning(solver, QX_HERE);
    return getNbExpressionsUnchecked();
}

int QXModel::getNbOperands() const {
    ApiErrors::checkNotRunning(solver, QX_HERE);
    return nbOperands;
}

int QXModel::getNbDecisions() const {
    ApiErrors::checkNotRunning(solver, QX_HERE);
    return static_cast<int>(decisions.size());
}

int QXModel::getNbConstraints() const {
    ApiErrors::checkNotRunning(solver, QX_HERE);
    return static_cast<int>(constraints.size());
}

int QXModel::getNbObjectives() const {
    ApiErrors::checkNotRunning(solver, QX_HERE);
    return static_cast<int>(objectives.size());
}

QXExpression* QXModel::getExpression(int i) const {
    ApiErrors::checkNotRunning(solver, QX_HERE);
    ApiErrors::checkIndex(i, getNbExpressionsUnchecked(), "expression", QX_HERE);
    return const_cast<QXExpression*>(&expressions[i]);
}

QXExpression* QXModel::getExpression(const std::string& name) const {
    ApiErrors::checkNotRunning(solver, QX_HERE);
    if (name.empty()) ApiErrors::fail(QX_HERE, ApiErrors::emptyArgument("name"));
    QXExpression* found = names->find(name);
    if (!found) ApiErrors::fail(QX_HERE, "No operator found with name '" + name + "'.");
    return found;
}

QXExpression* QXModel::getDecision(int i) const {
    ApiErrors::checkNotRunning(solver, QX_HERE);
    ApiErrors::checkIndex(i, static_cast<int64_t>(decisions.size()), "decision", QX_HERE);
    return decisions[i];
}

QXExpression* QXModel::getConstraint(int i) const {
    ApiErrors::checkNotRunning(solver, QX_HERE);
    ApiErrors::checkIndex(i, static_cast<int64_t>(constraints.size()), "constraint", QX_HERE);
    return constraints[i];
}

QXExpression* QXModel::getObjective(int i) const {
    ApiErrors::checkNotRunning(solver, QX_HERE);
    ApiErrors::checkIndex(i, static_cast<int64_t>(objectives.size()), "objective", QX_HERE);
    return objectives[i];
}

QXObjectiveDirection QXModel::getObjectiveDirection(int i) const {
    ApiErrors::checkNotRunning(solver, QX_HERE);
    ApiErrors::checkIndex(i, static_cast<int64_t>(directions.size()), "objective", QX_HERE);
    return directions[i];
}

void QXModel::checkDeclaration(const QXExpression* expr, size_t count, const char* things,
                               const QXWhere& where) const {
    ApiErrors::checkModeling(solver, where);
    if (count >= static_cast<size_t>(ApiErrors::MaxCount))
        ApiErrors::fail(where, ApiErrors::tooMany(things));
    if (!expr) ApiErrors::fail(where, ApiErrors::nullArgument("expr"));
    if (expr->model->solver != solver)
        ApiErrors::fail(where, ApiErrors::foreignArgument(expr->toString()));
}

void QXModel::addConstraint(QXExpression* expr) {
    checkDeclaration(expr, constraints.size(), "constraints", QX_HERE);
    if (!ExpressionTypeTools::hasBooleanValue(expr->op, expr->value))
        ApiErrors::fail(QX_HERE, "Only boolean expressions can be constrained"
                                 " (0, 1, Bool, And, Or, Xor, Not, Eq, Neq, Geq, Leq, Gt, Lt).");
    if (expr->constraint) return;
    expr->constraint = true;
    constraints.push_back(expr);
}

void QXModel::addObjective(QXExpression* expr, QXObjectiveDirection direction) {
    checkDeclaration(expr, objectives.size(), "objectives", QX_HERE);
    expr->objective = true;
    objectives.push_back(expr);
    directions.push_back(direction);
}

void QXModel::close() {
    ApiErrors::checkModeling(solver, QX_HERE);
    // Every operand was checked as it was added (its model, its position,
    // its value's type) and an expression's operator never changes: what
    // is left is the operand counts, which grow after creation.
    for (const QXExpression& expr : expressions) {
        const int count = static_cast<int>(expr.operandCount);
        const int min = ExpressionTypeTools::getNbMinOperands(expr.op);
        const int max = ExpressionTypeTools::getNbMaxOperands(expr.op);
        if (count < min)
            ApiErrors::fail(QX_HERE,
                            ApiErrors::operandCount(count, "small: at least", min, ExpressionTools::getName(expr.op)));
        if (count > max)
            ApiErrors::fail(QX_HERE,
                            ApiErrors::operandCount(count, "large: at most", max, ExpressionTools::getName(expr.op)));
    }
    if (objectives.empty())
        throw KernelException("At least one objective is required in the model.", QX_HERE);
    closed = true;
    try {
        compiled = std::make_unique<CompiledModel>(*this);
    } catch (...) {
        closed = false;
        throw;
    }
    solver->closeModel();
}

bool QXModel::isClosed() const {
    ApiErrors::checkNotRunning(solver, QX_HERE);
    return closed;
}

void QXModel::write(const std::string& fileName) const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    if (fileName.empty()) ApiErrors::fail(QX_HERE, ApiErrors::emptyArgument("fileName"));
    std::ofstream file(fileName, std::ios::out | std::ios::trunc);
    if (!file) ApiErrors::fail(QX_HERE, "Cannot write the model in file '" + fileName + "'.");
    write(file);
}

std::vector<std::string> QXModel::write(std::ostream& out) const {
    ModelGraph graph;
    fillGraph(graph, true);
    ModelWriterSettings settings;
    QXSolution* solution = solver->getSolution();
    for (const QXExpression* decision : decisions)
        settings.decisionValues.push_back(solution->getValue(decision));
    const QXParam* param = solver->getParam();
    for (int k = 0; k < static_cast<int>(objectives.size()); ++k)
        settings.objectiveBounds.push_back(param->getObjectiveBound(k));
    settings.seed = param->getSeed();
    settings.nbThreads = param->getNbThreads();
    ModelWriter writer(graph, settings, &out);
    writer.write();
    return writer.getUids();
}

DagBuilder* QXModel::getDagBuilder() const {
    return compiled ? &compiled->getBuilder() : nullptr;
}

void QXModel::fillGraph(ModelGraph& graph, bool withNames) const {
    graph.reserve(expressions.size(), static_cast<std::size_t>(nbOperands));
    std::vector<const std::string*> names;
    if (withNames) names.reserve(expressions.size());
    for (const QXExpression& expr : expressions) {
        const QXExpression::Operands operands = expr.operands();
        graph.addExpression(expr.op, expr.value, expr.constraint, operands.first, static_cast<int>(operands.count));
        if (withNames)
            names.push_back(expr.nameNumber == QXExpression::UNNAMED ? nullptr : &this->names->nameOf(expr.nameNumber));
    }
    for (const QXExpression* decision : decisions) graph.addDecision(decision->index);
    for (const QXExpression* constraint : constraints) graph.addConstraint(constraint->index);
    for (std::size_t i = 0; i < objectives.size(); ++i)
        graph.addObjective(objectives[i]->index, static_cast<uint8_t>(directions[i]));
    if (withNames) graph.setNames(std::move(names));
    graph.setClosed(closed);
}

std::string QXModel::toString() const {
    ApiErrors::checkNotRunning(solver, QX_HERE);
    return "Model: \n  expressions = " + std::to_string(expressions.size()) +
           ", operands = " + std::to_string(nbOperands) +
           "\n  decisions = " + std::to_string(decisions.size()) +
           ", constraints = " + std::to_string(constraints.size()) +
           ", objectives = " + std::to_string(objectives.size()) + "\n";
}
