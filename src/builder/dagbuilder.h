#pragma once

#include "api/solvegraphs.h"
#include "solver/kernel/dagfixedfields.h"

#include <memory>
#include <vector>

class Dag;
class QXExpression;
class QXModel;
class QXSolution;

// The compiled form of a closed model: the fixed fields shared by every
// search thread, the main Dag and its copies (one per further thread), and
// the map from model expressions to nodes. Made by QXModel::close; lives as
// long as the model.
//
// Kernel variable values are plain vectors in the fixed fields' variable
// order (Dag variable index i is node variables()[i]); that is the layout
// the kernel's stored solutions use too.
class DagBuilder : public SolveGraphs {
public:
    // Throws KernelException when the model is not closed, or when it
    // cannot be compiled (a constant subexpression that divides by zero,
    // one node constrained twice, an operator without operands).
    explicit DagBuilder(const QXModel& model);
    ~DagBuilder();
    DagBuilder(const DagBuilder&) = delete;
    DagBuilder& operator=(const DagBuilder&) = delete;

    // 0: the main Dag; i >= 1: copy i - 1. Null past the last copy.
    Dag* getDag(unsigned int i) override;
    unsigned int getNbCopies() const { return static_cast<unsigned int>(copies.size()); }
    // Makes sure there are n copies besides the main Dag, each initialised
    // at the main Dag's current variable values. Never removes copies.
    void createCopies(unsigned int n) override;

    const DagFixedFields& getFixedFields() const { return fixed; }
    const QXModel& getModel() const { return model; }
    // The node of an expression, KernelConstants::NO_NODE when it has none.
    unsigned int getNode(const QXExpression* expr) const;
    const std::vector<unsigned int>& getExpressionNodes() const { return expressionNodes; }

    // The decisions' values in `from`, in kernel variable order (resized to
    // the number of variables; decision d at the variable index of its node).
    void convertSolution(QXSolution* from, std::vector<long long>& variableValues) const;
    // The reverse: sets every decision of `to` from its variable's value;
    // the API solution recomputes the other expressions when next read.
    void convertBackSolution(const std::vector<long long>& variableValues, QXSolution* to) const;
    void convertSolution(QXSolution* from, Solution* to) const override;
    void convertBackSolution(const Solution* from, QXSolution* to) const override;
    // The number of constraints whose value in `solution` is 0.
    unsigned int countViolatedConstraints(QXSolution* solution) const;

    // Brings a Dag to these variable values (kernel order): before init the
    // values are set and the Dag initialised; afterwards they are applied as
    // one move, with every constraint deactivated first (the caller
    // reactivates the satisfied ones). Throws KernelException
    // "Cannot evaluate the loaded solution" if that move is refused.
    static void loadVariableValues(Dag& dag, const std::vector<long long>& variableValues);
    // The current values of a Dag's variables, in kernel order.
    static void saveVariableValues(const Dag& dag, std::vector<long long>& variableValues);

private:
    const QXModel& model;
    DagFixedFields fixed;
    std::vector<unsigned int> expressionNodes;  // by expression index
    std::unique_ptr<Dag> mainDag;
    std::vector<std::unique_ptr<Dag>> copies;
};
