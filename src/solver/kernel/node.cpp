#include "solver/kernel/node.h"

#include "api/kernelexception.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"

#include <iostream>

bool Node::isInit(const Dag& dag, unsigned int node) const {
    const DagFixedFields& fixed = dag.getFixedFields();
    long long value = dag.currentValue(node);
    return dag.newValue(node) == value && value >= fixed.lowerBound(node) &&
           value <= fixed.upperBound(node);
}

void Node::check(const Dag& dag, unsigned int node) const {
    if (!isInit(dag, node)) {
        printCheck(dag, node);
        throw KernelException("src/solver/kernel/node", __LINE__, "check",
                              "Node " + std::to_string(node) + " (" + toString() +
                                  ") is in an incoherent state.");
    }
}

void Node::printCheck(const Dag& dag, unsigned int node) const {
    const DagFixedFields& fixed = dag.getFixedFields();
    std::cout << "Node " << node << " " << toString() << " current " << dag.currentValue(node)
              << " new " << dag.newValue(node) << " bounds [" << fixed.lowerBound(node) << ", "
              << fixed.upperBound(node) << "]" << std::endl;
}

long long Node::initialViolatedConstraintCost(const Dag& dag, unsigned int node) const {
    return dag.currentValue(node) == 0 ? 1 : 0;
}

long long Node::evalViolatedConstraintCost(const Dag& dag, unsigned int node) const {
    return (dag.newValue(node) == 0 ? 1 : 0) - (dag.currentValue(node) == 0 ? 1 : 0);
}

void Node::init(Dag&, unsigned int) {}

void Node::eval(Dag& dag, Propagation& propagation, unsigned int node) {
    if (dag.newValue(node) == dag.currentValue(node)) return;
    const DagFixedFields& fixed = dag.getFixedFields();
    unsigned int count = fixed.nbParents(node);
    if (count == 0) return;
    const unsigned int* parents = fixed.parents(node);
    const unsigned int* positions = fixed.positionsInParents(node);
    // A variable's parents lie anywhere in a large graph, and each one's
    // object is reached through its pointer: the pointers and flags are
    // asked for eight parents ahead, the objects four ahead, so that the
    // misses overlap instead of queueing one parent after another.
    constexpr unsigned int AHEAD = 4;
    if (count > 1) {
        for (unsigned int k = 0; k < count && k < 2 * AHEAD; ++k) dag.prefetchNodePointer(parents[k]);
        for (unsigned int k = 0; k < count && k < AHEAD; ++k) dag.prefetchNodeObject(parents[k]);
    }
    for (unsigned int k = 0; k < count; ++k) {
        if (k + 2 * AHEAD < count) dag.prefetchNodePointer(parents[k + 2 * AHEAD]);
        if (k + AHEAD < count) dag.prefetchNodeObject(parents[k + AHEAD]);
        propagation.notifyImpactedNodes(dag, parents[k]);
        dag.getNode(parents[k])->modifiedNodesSetIn(positions[k], fixed, parents[k]);
    }
}

void Node::commit(Dag& dag, unsigned int node) { dag.setCurrentValue(node, dag.newValue(node)); }

void Node::rollback(Dag& dag, unsigned int node) { dag.setNewValue(node, dag.currentValue(node)); }

void Node::modifiedNodesSetIn(unsigned int, const DagFixedFields&, unsigned int) {}

void Node::refreshChild(const Dag&, unsigned int, unsigned int, long long) {}

bool NodeInner::isInit(const Dag& dag, unsigned int node) const {
    return Node::isInit(dag, node) && isValueInit(dag, node);
}

void NodeInner::printCheck(const Dag& dag, unsigned int node) const {
    Node::printCheck(dag, node);
    std::cout << "  computed " << computeValue(dag, node) << std::endl;
}

void NodeInner::init(Dag& dag, unsigned int node) {
    long long value = computeValue(dag, node);
    dag.setCurrentValue(node, value);
    dag.setNewValue(node, value);
}

bool NodeInner::isValueInit(const Dag& dag, unsigned int node) const {
    return dag.currentValue(node) == computeValue(dag, node);
}

bool NodeInner::findRandomBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                  unsigned int node) const {
    const DagFixedFields& fixed = dag.getFixedFields();
    unsigned int n = fixed.nbChilds(node);
    if (n == 0) return false;
    unsigned int child = fixed.child(node, rand.nextInt(n));
    return findChildBoolean(dag, rand, boolean, child, rand.nextInt(2) == 0);
}

bool findChildBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int child,
                      bool increase) {
    Node* n = dag.getNode(child);
    return increase ? n->findIncreasingBoolean(dag, rand, boolean, child)
                    : n->findDecreasingBoolean(dag, rand, boolean, child);
}
