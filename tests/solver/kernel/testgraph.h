#pragma once

#include "solver/kernel/dag.h"
#include "solver/kernel/dagfixedfields.h"
#include "solver/kernel/temporarydagfixedfields.h"

#include "api/kernelexception.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

// The explanation of the KernelException that `f` throws, "" if none.
inline std::string kernelErrorOf(const std::function<void()>& f) {
    try {
        f();
    } catch (const KernelException& e) {
        return e.getExplanation();
    }
    return "";
}

// Builds kernel graphs for tests through the fixed fields' filling
// interface, the way the model compiler does: children first, then close.
class TestGraph {
public:
    unsigned int add(NodeType type, const std::vector<unsigned int>& childs = {},
                     const std::vector<long long>& coefficients = {}) {
        unsigned int node = temporary.typeSize();
        temporary.setNodeType(node, type);
        temporary.setNodeChilds(node, childs);
        if (!coefficients.empty()) temporary.setNodeCoefficients(node, coefficients);
        return node;
    }
    unsigned int boolean() { return add(Boolean); }
    unsigned int integer() { return add(Integer); }
    unsigned int constant(long long value) {
        unsigned int node = add(Constant);
        temporary.setNodeConstant(node, value);
        return node;
    }
    unsigned int scalar(long long factor, unsigned int child) {
        unsigned int node = add(Scalar, {child});
        temporary.setNodeScalar(node, factor);
        return node;
    }
    void constraint(unsigned int node) { temporary.addConstraint(node); }
    void objective(unsigned int node, ObjectiveDirection direction = Minimize) {
        temporary.addObjective(node, direction);
    }

    // Closes the temporary form and freezes it.
    const DagFixedFields& close() {
        temporary.close();
        fixed.init(temporary);
        return fixed;
    }
    // A Dag over the closed graph, variables set to `values` (in variable
    // order; missing ones 0), initialised.
    std::unique_ptr<Dag> makeDag(const std::vector<long long>& values = {}) const {
        auto dag = std::make_unique<Dag>(fixed);
        for (unsigned int i = 0; i < values.size(); ++i) dag->setCurrentValue(fixed.variables()[i], values[i]);
        dag->init();
        return dag;
    }

    TemporaryDagFixedFields temporary;
    DagFixedFields fixed;
};
