#include "solver/kernel/solution.h"

#include "api/kernelexception.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/portfolio.h"

namespace {
const char* const SOURCE = "src/solver/kernel/solution";
const char* const DAG_SOURCE = "src/solver/kernel/dag";
const char* const NOT_INIT = "The dag must be initialized.";
}  // namespace

Solution::Solution(const Solution& other)
    : nbViolatedConstraints(other.nbViolatedConstraints),
      objectiveValues(other.objectiveValues),
      variableValues(other.variableValues),
      modifications(other.modifications),
      listener(*this) {}

// The registration with a Dag is not copied: it belongs to one object.
Solution& Solution::operator=(const Solution& other) {
    nbViolatedConstraints = other.nbViolatedConstraints;
    objectiveValues = other.objectiveValues;
    variableValues = other.variableValues;
    modifications = other.modifications;
    return *this;
}

void Solution::copy(Solution& target) const {
    target.objectiveValues.clear();
    target.objectiveValues.reserve(objectiveValues.size());
    for (long long v : objectiveValues) target.objectiveValues.push_back(v);
    target.variableValues.clear();
    target.variableValues.reserve(variableValues.size());
    for (long long v : variableValues) target.variableValues.push_back(v);
}

int Solution::compare(const Dag& dag, const Solution& other) const {
    const DagFixedFields& fixed = dag.getFixedFields();
    std::size_t nbObjectives = fixed.objectives().size();
    if (objectiveValues.size() != nbObjectives || other.objectiveValues.size() != nbObjectives ||
        variableValues.size() != fixed.nbVariables() || other.variableValues.size() != fixed.nbVariables())
        throw KernelException(SOURCE, __LINE__, "compare", "Solutions have not the same structure.");
    return Portfolio::compareStandings(nbViolatedConstraints, objectiveValues, other.nbViolatedConstraints,
                                       other.objectiveValues, fixed.directions());
}

void Solution::CommitListener::notifyCommit() {
    const DagFixedFields& fixed = dag->getFixedFields();
    for (unsigned int node : dag->getPropagation().getModifiedVariables())
        solution.notifyVariableModification(fixed.variableIndex(node), dag->currentValue(node));
}

// --- The Dag's side of solutions ---

void Dag::addSolutionToNotify(Solution& solution) {
    if (solution.variableValues.size() != fixed.nbVariables()) solution.variableValues.assign(fixed.nbVariables(), 0);
    // Everything may differ from what the solution holds until its first save.
    solution.setNbVariables(fixed.nbVariables());
    solution.modifications.clearOut();
    solution.listener.dag = this;
    propagation.connectListener(&solution.listener);
}

void Dag::removeSolutionToNotify(Solution& solution) {
    propagation.disconnectListener(&solution.listener);
    solution.listener.dag = nullptr;
}

void Dag::saveSolution(Solution& solution) const {
    if (!initialized) throw KernelException(DAG_SOURCE, __LINE__, "saveSolution", NOT_INIT);
    solution.variableValues.resize(fixed.nbVariables());
    for (unsigned int r = 0; r < fixed.nbVariables(); ++r)
        solution.variableValues[r] = currentValue(fixed.variables()[r]);
    saveObjectives(solution);
    solution.setNbVariables(fixed.nbVariables());
}

void Dag::saveSolutionIncrementally(Solution& solution) const {
    if (!initialized) throw KernelException(DAG_SOURCE, __LINE__, "saveSolutionIncrementally", NOT_INIT);
    saveObjectives(solution);
    const Bipartition& modified = solution.modifications;
    for (unsigned int i = 0; i < modified.sizeIn(); ++i) {
        unsigned int r = modified[i];
        solution.variableValues[r] = currentValue(fixed.variables()[r]);
    }
    solution.clearModifications();
}

void Dag::saveObjectives(Solution& solution) const {
    solution.nbViolatedConstraints = propagation.getViolatedConstraints().sizeIn();
    solution.objectiveValues.resize(fixed.objectives().size());
    for (std::size_t i = 0; i < fixed.objectives().size(); ++i)
        solution.objectiveValues[i] = currentValue(fixed.objectives()[i]);
}

// Before init the values are simply written; after, they go through one
// move with every constraint soft (so it cannot be refused), and the ones
// the loaded state satisfies are made hard again.
bool Dag::loadSolution(const Solution& solution) {
    if (solution.variableValues.size() != fixed.nbVariables())
        throw KernelException(DAG_SOURCE, __LINE__, "loadSolution", "Solutions have not the same structure.");
    if (!initialized) {
        for (unsigned int r = 0; r < fixed.nbVariables(); ++r)
            setCurrentValue(fixed.variables()[r], solution.variableValues[r]);
        return true;
    }
    propagation.desactivateAllConstraints();
    for (unsigned int r = 0; r < fixed.nbVariables(); ++r)
        propagation.modifyVariable(*this, fixed.variables()[r], solution.variableValues[r]);
    const bool evaluated = propagation.eval(*this);
    if (evaluated)
        propagation.commit(*this);
    else
        propagation.rollback(*this);
    propagation.activateAllSatisfiedConstraints(*this);
    return evaluated;
}
