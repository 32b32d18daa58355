#pragma once

#include "solver/kernel/dag.h"
#include "solver/kernel/kernelconstants.h"
#include "solver/kernel/node.h"
#include "solver/kernel/nodetypeutils.h"
#include "solver/kernel/quickrand.h"
#include "solver/kernel/temporarydagfixedfields.h"

// Base of the fixed-arity operators: no per-node state, eval recomputes the
// formula on the children's new values. Derived supplies
//   static constexpr NodeType TYPE;
//   static long long compute(const DagFixedFields&, ValueView values,
//                            unsigned int node, const char* operation);
// where `operation` names the caller in arithmetic errors.
template <class Derived>
class NodeFixedArityTemplate : public NodeInner {
public:
    long long computeValue(const Dag& dag, unsigned int node) const override {
        return Derived::compute(dag.getFixedFields(), dag.currentValuesData(), node, "computeValue");
    }
    void eval(Dag& dag, Propagation& propagation, unsigned int node) override {
        dag.setNewValue(node, Derived::compute(dag.getFixedFields(), dag.newValuesData(), node, "eval"));
        Node::eval(dag, propagation, node);
    }
    std::string toString() const override { return NodeTypeUtils::toString(Derived::TYPE); }

protected:
    static long long childValue(const DagFixedFields& fixed, ValueView values, unsigned int node,
                                unsigned int i) {
        return values[fixed.child(node, i)];
    }
    static long long currentChild(const Dag& dag, unsigned int node, unsigned int i) {
        return dag.currentValue(dag.getFixedFields().child(node, i));
    }
    static unsigned int childNode(const Dag& dag, unsigned int node, unsigned int i) {
        return dag.getFixedFields().child(node, i);
    }
};
