#include "api/compiledmodel.h"

#include "api/qxexpression.h"
#include "api/qxmodel.h"
#include "api/qxsolution.h"
#include "builder/dagbuilder.h"
#include "builder/modelgraph.h"
#include "solver/kernel/solution.h"

CompiledModel::CompiledModel(const QXModel& model_) : model(model_) {
    ModelGraph graph;
    model.fillGraph(graph, false);
    builder = std::make_unique<DagBuilder>(std::move(graph));
}

CompiledModel::~CompiledModel() = default;

const DagFixedFields& CompiledModel::getFixedFields() const { return builder->getFixedFields(); }

unsigned int CompiledModel::getNode(const QXExpression* expr) const {
    return builder->getNode(expr->index);
}

Dag* CompiledModel::getDag(unsigned int i) { return builder->getDag(i); }

void CompiledModel::createCopies(unsigned int n) { builder->createCopies(n); }

void CompiledModel::convertSolution(QXSolution* from, std::vector<long long>& variableValues) const {
    const DagFixedFields& fixed = builder->getFixedFields();
    variableValues.assign(fixed.nbVariables(), 0);
    for (const QXExpression* decision : model.decisions)
        variableValues[fixed.variableIndex(builder->getNode(decision->index))] =
            from->getValue(decision);
}

void CompiledModel::convertBackSolution(const std::vector<long long>& variableValues,
                                        QXSolution* to) const {
    const DagFixedFields& fixed = builder->getFixedFields();
    for (QXExpression* decision : model.decisions)
        to->setValue(decision, variableValues[fixed.variableIndex(builder->getNode(decision->index))]);
}

void CompiledModel::convertSolution(QXSolution* from, Solution* to) const {
    convertSolution(from, to->variables());
}

void CompiledModel::convertBackSolution(const Solution* from, QXSolution* to) const {
    convertBackSolution(from->getVariableValues(), to);
}
