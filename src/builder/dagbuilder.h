#pragma once

#include "solver/kernel/dagfixedfields.h"

#include <memory>
#include <vector>

class Dag;
class ModelGraph;

// The compiled form of a closed model: the fixed fields shared by every
// search thread, the main Dag and its copies (one per further thread), and
// the map from model expressions to nodes.
//
// Kernel variable values are plain vectors in the fixed fields' variable
// order (Dag variable index i is node variables()[i]); that is the layout
// the kernel's stored solutions use too.
class DagBuilder {
public:
    // Throws KernelException when the model is not closed, or when it
    // cannot be compiled (a constant subexpression that divides by zero,
    // one node constrained twice, an operator without operands).
    // The graph is consumed: freed before the closing of the fixed fields,
    // the peak of the build.
    explicit DagBuilder(ModelGraph&& model);
    ~DagBuilder();
    DagBuilder(const DagBuilder&) = delete;
    DagBuilder& operator=(const DagBuilder&) = delete;

    // 0: the main Dag; i >= 1: copy i - 1. Null past the last copy.
    Dag* getDag(unsigned int i);
    unsigned int getNbCopies() const { return static_cast<unsigned int>(copies.size()); }
    // Makes sure there are n copies besides the main Dag, each initialised
    // at the main Dag's current variable values. Never removes copies.
    void createCopies(unsigned int n);

    const DagFixedFields& getFixedFields() const { return fixed; }
    // The node of the expression of that index, KernelConstants::NO_NODE
    // when it has none.
    unsigned int getNode(int expression) const { return expressionNodes[expression]; }
    const std::vector<unsigned int>& getExpressionNodes() const { return expressionNodes; }

    // Brings a Dag to these variable values (kernel order): before init the
    // values are set and the Dag initialised; afterwards they are applied as
    // one move, with every constraint deactivated first (the caller
    // reactivates the satisfied ones). Throws KernelException
    // "Cannot evaluate the loaded solution" if that move is refused.
    static void loadVariableValues(Dag& dag, const std::vector<long long>& variableValues);
    // The current values of a Dag's variables, in kernel order.
    static void saveVariableValues(const Dag& dag, std::vector<long long>& variableValues);

private:
    DagFixedFields fixed;
    std::vector<unsigned int> expressionNodes;  // by expression index
    std::unique_ptr<Dag> mainDag;
    std::vector<std::unique_ptr<Dag>> copies;
};
