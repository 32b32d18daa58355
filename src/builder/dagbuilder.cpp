#include "builder/dagbuilder.h"

#include "api/kernelexception.h"
#include "builder/dagdefinitionbuilder.h"
#include "builder/modelgraph.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/kernelconstants.h"

namespace {
const char* const UNIT = "src/builder/dagbuilder";
}

DagBuilder::DagBuilder(ModelGraph&& model) {
    if (!model.isClosed())
        throw KernelException("The model need to be closed to be transformed", QX_HERE);
    DagDefinitionBuilder::createDagDefinition(model, fixed, expressionNodes);
    mainDag = std::make_unique<Dag>(fixed);
    mainDag->init();
}

DagBuilder::~DagBuilder() = default;

Dag* DagBuilder::getDag(unsigned int i) {
    if (i == 0) return mainDag.get();
    return i - 1 < copies.size() ? copies[i - 1].get() : nullptr;
}

void DagBuilder::createCopies(unsigned int n) {
    if (copies.size() >= n) return;
    std::vector<long long> values;
    saveVariableValues(*mainDag, values);
    copies.reserve(n);
    while (copies.size() < n) {
        auto copy = std::make_unique<Dag>(fixed);
        loadVariableValues(*copy, values);
        copies.push_back(std::move(copy));
    }
}

void DagBuilder::loadVariableValues(Dag& dag, const std::vector<long long>& variableValues) {
    const DagFixedFields& f = dag.getFixedFields();
    if (!dag.isInit()) {
        for (unsigned int i = 0; i < f.nbVariables(); ++i)
            dag.setCurrentValue(f.variables()[i], variableValues[i]);
        dag.init();
        return;
    }
    Propagation& propagation = dag.getPropagation();
    propagation.desactivateAllConstraints();
    for (unsigned int i = 0; i < f.nbVariables(); ++i)
        propagation.modifyVariable(dag, f.variables()[i], variableValues[i]);
    if (!propagation.eval(dag)) {
        propagation.rollback(dag);
        throw KernelException("Cannot evaluate the loaded solution",
                              QX_WHERE("src/solver/kernel/dag", "loadSolution"));
    }
    propagation.commit(dag);
}

void DagBuilder::saveVariableValues(const Dag& dag, std::vector<long long>& variableValues) {
    const DagFixedFields& f = dag.getFixedFields();
    variableValues.resize(f.nbVariables());
    for (unsigned int i = 0; i < f.nbVariables(); ++i)
        variableValues[i] = dag.currentValue(f.variables()[i]);
}
