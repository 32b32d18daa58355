#include "solver/kernel/temporarydagfixedfields.h"

#include "api/kernelexception.h"
#include "solver/kernel/nodetypeutils.h"

#include <algorithm>

namespace {
const char* const SOURCE = "src/solver/kernel/dagfixedfields";
}

void TemporaryDagFixedFields::ensureNode(unsigned int node) {
    if (node >= types.size()) {
        types.resize(node + 1, Constant);
        childs.resize(node + 1);
        coefficients.resize(node + 1);
    }
}

void TemporaryDagFixedFields::setNodeType(unsigned int node, NodeType type) {
    ensureNode(node);
    types[node] = type;
}

void TemporaryDagFixedFields::setNodeChilds(unsigned int node,
                                            const std::vector<unsigned int>& nodeChilds) {
    ensureNode(node);
    childs[node] = nodeChilds;
}

void TemporaryDagFixedFields::setNodeCoefficients(unsigned int node,
                                                  const std::vector<long long>& values) {
    ensureNode(node);
    coefficients[node] = values;
}

void TemporaryDagFixedFields::setNodeConstant(unsigned int node, long long value) {
    ensureNode(node);
    coefficients[node].assign(1, value);
}

void TemporaryDagFixedFields::setNodeScalar(unsigned int node, long long factor) {
    ensureNode(node);
    coefficients[node].assign(1, factor);
}

void TemporaryDagFixedFields::addConstraint(unsigned int node) { constraints.push_back(node); }

void TemporaryDagFixedFields::addObjective(unsigned int node, ObjectiveDirection direction) {
    objectives.push_back(node);
    objectiveDirections.push_back(direction);
}

void TemporaryDagFixedFields::close() {
    childs.resize(nbNodes());
    coefficients.resize(nbNodes());
    initPosInConstraints();
    initParentChildLinks();
    computeRanks();
    initNodesByRank();
    initMinMax();
}

void TemporaryDagFixedFields::initPosInConstraints() {
    positionsInConstraints.assign(nbNodes(), KernelConstants::NO_NODE);
    for (unsigned int k = 0; k < constraints.size(); ++k) {
        unsigned int node = constraints[k];
        if (positionsInConstraints[node] != KernelConstants::NO_NODE)
            throw KernelException(SOURCE, __LINE__, "initPosInConstraints",
                                  "This node is already a constraint.");
        positionsInConstraints[node] = k;
    }
}

void TemporaryDagFixedFields::initParentChildLinks() {
    parents.assign(nbNodes(), {});
    positionsInParent.assign(nbNodes(), {});
    // Sized first: growing a million lists one parent at a time costs more
    // than the links themselves.
    std::vector<unsigned int> counts(nbNodes(), 0);
    for (unsigned int node = 0; node < nbNodes(); ++node)
        for (unsigned int child : childs[node]) ++counts[child];
    for (unsigned int node = 0; node < nbNodes(); ++node) {
        parents[node].reserve(counts[node]);
        positionsInParent[node].reserve(counts[node]);
    }
    for (unsigned int node = 0; node < nbNodes(); ++node) {
        for (unsigned int i = 0; i < childs[node].size(); ++i) {
            parents[childs[node][i]].push_back(node);
            positionsInParent[childs[node][i]].push_back(i);
        }
    }
}

// A work list rather than a recursion: chains of nested operators can be as
// deep as the model is large.
void TemporaryDagFixedFields::computeRanks() {
    unsigned int n = nbNodes();
    ranks.assign(n, 0);
    std::vector<unsigned int> waiting(n, 0);
    std::vector<unsigned int> work;
    work.reserve(n);
    for (unsigned int node = 0; node < n; ++node) {
        if (NodeTypeUtils::isNodeInner(types[node]))
            waiting[node] = static_cast<unsigned int>(childs[node].size());
        else
            work.push_back(node);
    }
    std::vector<char> reached(n, 0);
    for (std::size_t head = 0; head < work.size(); ++head) {
        unsigned int node = work[head];
        reached[node] = 1;
        for (unsigned int parent : parents[node]) {
            ranks[parent] = std::max(ranks[parent], ranks[node] + 1);
            if (--waiting[parent] == 0) work.push_back(parent);
        }
    }
    for (unsigned int node = 0; node < n; ++node) {
        if (!reached[node])
            throw KernelException(SOURCE, __LINE__, "computeRanks",
                                  "The operator " + NodeTypeUtils::toString(types[node]) +
                                      " is not accessible from the variables and constants.");
    }
}

void TemporaryDagFixedFields::initNodesByRank() {
    unsigned int maxRank = 0;
    for (unsigned int r : ranks) maxRank = std::max(maxRank, r);
    nodesByRank.assign(nbNodes() == 0 ? 0 : maxRank + 1, {});
    for (unsigned int node = 0; node < nbNodes(); ++node) nodesByRank[ranks[node]].push_back(node);
}

void TemporaryDagFixedFields::initMinMax() {
    lowerBounds.assign(nbNodes(), 0);
    upperBounds.assign(nbNodes(), 0);
    for (const std::vector<unsigned int>& level : nodesByRank)
        for (unsigned int node : level)
            NodeTypeUtils::computeBounds(types[node], *this, node, lowerBounds[node],
                                         upperBounds[node]);
}
