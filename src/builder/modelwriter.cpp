#include "builder/modelwriter.h"

#include "api/kernelexception.h"
#include "api/quarrix.h"
#include "api/qxexpression.h"
#include "api/qxmodel.h"
#include "api/qxparam.h"
#include "api/qxsolution.h"
#include "builder/expressiontools.h"
#include "builder/sortedmodel.h"

#include <limits>
#include <unordered_set>

namespace {
const char* const UNIT = "src/builder/modelwriter";

// The language reads -9223372036854775808 as the negation of a literal one
// past the largest integer, which it refuses: the minimum is written as a
// difference instead.
std::string integerText(int64_t value) {
    if (value == std::numeric_limits<int64_t>::min()) return "-9223372036854775807 - 1";
    return std::to_string(value);
}
}  // namespace

ModelWriter::ModelWriter(const QXModel& model_, DagBuilder* builder_, std::ostream* out_)
    : model(model_), builder(builder_), out(*out_) {
    if (!model.isClosed())
        throw KernelException(UNIT, __LINE__, "ModelWriter",
                              "The model need to be closed to be written to a stream.");
}

void ModelWriter::write() {
    generateUids();
    out << "function model() {\n";
    writeAssignments();
    writeConstraints();
    writeObjectives();
    out << "}\n";
    writeInitialValues();
    writeParam();
    out.flush();
}

void ModelWriter::generateUids() {
    const int count = model.getNbExpressions();
    std::unordered_set<std::string> taken;
    for (int i = 0; i < count; ++i) {
        const QXExpression* e = model.getExpression(i);
        if (e->isNamed()) taken.insert(e->getName());
    }
    uids.assign(count, std::string());
    unsigned long long counter = 0;
    for (int i = 0; i < count; ++i) {
        const QXExpression* e = model.getExpression(i);
        if (e->isNamed()) {
            uids[i] = e->getName();
            continue;
        }
        do {
            uids[i] = "n" + std::to_string(counter++);
        } while (taken.count(uids[i]));
    }
}

void ModelWriter::writeAssignments() {
    SortedModel sorted(model);
    for (const QXExpression* e : sorted.expressions()) writeAssignment(e);
}

void ModelWriter::writeAssignment(const QXExpression* expr) {
    out << '\t' << uids[expr->getIndex()] << " <- ";
    if (expr->getOperator() == QXOperator::Const) {
        out << integerText(expr->getValue()) << ";\n";
        return;
    }
    out << ExpressionTools::getName(expr->getOperator()) << '(';
    for (int i = 0; i < expr->getNbOperands(); ++i) {
        if (i > 0) out << ", ";
        out << uids[expr->getOperand(i)->getIndex()];
    }
    out << ");\n";
}

void ModelWriter::writeConstraints() {
    for (int i = 0; i < model.getNbConstraints(); ++i)
        out << "\tconstraint " << uids[model.getConstraint(i)->getIndex()] << ";\n";
}

void ModelWriter::writeObjectives() {
    for (int i = 0; i < model.getNbObjectives(); ++i) {
        const bool minimize = model.getObjectiveDirection(i) == QXObjectiveDirection::Minimize;
        out << (minimize ? "\tminimize " : "\tmaximize ") << uids[model.getObjective(i)->getIndex()]
            << ";\n";
    }
}

void ModelWriter::writeInitialValues() {
    QXSolution* solution = model.getQuarrix()->getSolution();
    out << "function setInitialValues() {\n";
    for (int i = 0; i < model.getNbDecisions(); ++i) {
        const QXExpression* decision = model.getDecision(i);
        out << "\tsetValue(" << uids[decision->getIndex()] << ","
            << (solution->getValue(decision) == 1 ? "true" : "false") << ");\n";
    }
    out << "}\n";
}

void ModelWriter::writeParam() {
    const QXParam* param = model.getQuarrix()->getParam();
    out << "function param() {\n";
    for (int k = 0; k < model.getNbObjectives(); ++k) {
        const int64_t bound = param->getObjectiveBound(k);
        if (bound != std::numeric_limits<int64_t>::min() &&
            bound != std::numeric_limits<int64_t>::max())
            out << "\tsetObjectiveBound(" << k << "," << bound << ");\n";
    }
    out << "\tsetInitialValues();\n";
    out << "\tqxSeed = " << param->getSeed() << ";\n";
    out << "\tqxNbThreads = " << param->getNbThreads() << ";\n";
    out << "}\n";
}
