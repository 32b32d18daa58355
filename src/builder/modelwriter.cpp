#include "builder/modelwriter.h"

#include "api/kernelexception.h"
#include "builder/expressiontools.h"
#include "builder/sortedmodel.h"
#include "solver/kernel/kernelconstants.h"

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

ModelWriter::ModelWriter(const ModelGraph& model_, const ModelWriterSettings& settings_,
                         std::ostream* out_)
    : model(model_), settings(settings_), out(*out_) {
    if (!model.isClosed())
        throw KernelException("The model need to be closed to be written to a stream.", QX_HERE);
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
    for (int i = 0; i < count; ++i)
        if (const std::string* name = model.getName(i)) taken.insert(*name);
    uids.assign(count, std::string());
    unsigned long long counter = 0;
    for (int i = 0; i < count; ++i) {
        if (const std::string* name = model.getName(i)) {
            uids[i] = *name;
            continue;
        }
        do {
            uids[i] = "n" + std::to_string(counter++);
        } while (taken.count(uids[i]));
    }
}

void ModelWriter::writeAssignments() {
    SortedModel sorted(model);
    for (int32_t index : sorted.expressions()) writeAssignment(model.getExpression(index));
}

void ModelWriter::writeAssignment(ModelExpr expr) {
    out << '\t' << uids[expr.getIndex()] << " <- ";
    if (expr.getOperator() == QXOperator::Const) {
        out << integerText(expr.getValue()) << ";\n";
        return;
    }
    out << ExpressionTools::getName(expr.getOperator()) << '(';
    for (int i = 0; i < expr.getNbOperands(); ++i) {
        if (i > 0) out << ", ";
        out << uids[expr.getOperand(i).getIndex()];
    }
    out << ");\n";
}

void ModelWriter::writeConstraints() {
    for (int i = 0; i < model.getNbConstraints(); ++i)
        out << "\tconstraint " << uids[model.getConstraint(i).getIndex()] << ";\n";
}

void ModelWriter::writeObjectives() {
    for (int i = 0; i < model.getNbObjectives(); ++i) {
        const bool minimize = model.getObjectiveDirection(i) == Minimize;
        out << (minimize ? "\tminimize " : "\tmaximize ") << uids[model.getObjective(i).getIndex()]
            << ";\n";
    }
}

void ModelWriter::writeInitialValues() {
    out << "function setInitialValues() {\n";
    for (int i = 0; i < model.getNbDecisions(); ++i) {
        out << "\tsetValue(" << uids[model.getDecision(i).getIndex()] << ","
            << (settings.decisionValues[i] == 1 ? "true" : "false") << ");\n";
    }
    out << "}\n";
}

void ModelWriter::writeParam() {
    out << "function param() {\n";
    for (int k = 0; k < model.getNbObjectives(); ++k) {
        const int64_t bound = settings.objectiveBounds[k];
        if (bound != std::numeric_limits<int64_t>::min() &&
            bound != std::numeric_limits<int64_t>::max())
            out << "\tsetObjectiveBound(" << k << "," << bound << ");\n";
    }
    out << "\tsetInitialValues();\n";
    out << "\tqxSeed = " << settings.seed << ";\n";
    out << "\tqxNbThreads = " << settings.nbThreads << ";\n";
    out << "}\n";
}
