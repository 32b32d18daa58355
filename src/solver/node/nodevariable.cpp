#include "solver/node/nodevariable.h"

#include "solver/kernel/dag.h"

#include <iostream>
#include <limits>

void NodeVariable::init(Dag& dag, unsigned int node) { dag.setNewValue(node, dag.currentValue(node)); }

bool NodeBooleanVar::findIncreasingBoolean(const Dag& dag, Quickrand&, unsigned int& boolean,
                                           unsigned int node) const {
    if (dag.currentValue(node) == 1) return false;
    boolean = node;
    return true;
}

bool NodeBooleanVar::findDecreasingBoolean(const Dag& dag, Quickrand&, unsigned int& boolean,
                                           unsigned int node) const {
    if (dag.currentValue(node) == 0) return false;
    boolean = node;
    return true;
}

std::string NodeBooleanVar::toString() const { return "Boolean"; }

void NodeBooleanVar::computeBounds(const TemporaryDagFixedFields&, unsigned int, long long& min,
                                   long long& max) {
    min = 0;
    max = 1;
}

bool findNoBoolean(const Dag&, Quickrand&, unsigned int&, unsigned int) { return false; }

// An integer variable has no new value of its own between moves other than
// its committed one; its whole range is allowed.
bool NodeIntegerVar::isInit(const Dag& dag, unsigned int node) const {
    return dag.newValue(node) == dag.currentValue(node);
}

void NodeIntegerVar::printCheck(const Dag& dag, unsigned int node) const {
    std::cout << "Integer " << node << " current " << dag.currentValue(node) << " new "
              << dag.newValue(node) << std::endl;
}

std::string NodeIntegerVar::toString() const { return "Integer"; }

void NodeIntegerVar::computeBounds(const TemporaryDagFixedFields&, unsigned int, long long& min,
                                   long long& max) {
    min = std::numeric_limits<long long>::min();
    max = std::numeric_limits<long long>::max();
}
