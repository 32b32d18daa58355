#include "solver/kernel/dagfixedfields.h"

#include "solver/kernel/keptscores.h"
#include "solver/kernel/nodetypeutils.h"
#include "solver/kernel/temporarydagfixedfields.h"

#include <algorithm>
#include <limits>

void DagFixedFields::init(const TemporaryDagFixedFields& t) {
    initGlobal(t);
    initTypes(t);
    initChilds(t);
    initClassification();
    initDomains(t);
    initCoefficients(t);
    initParents(t);
    kept = std::make_shared<const KeptScoresFixed>(*this);
}

void DagFixedFields::initGlobal(const TemporaryDagFixedFields& t) {
    nodeCount = t.nbNodes();
    constraintNodes = t.constraintNodes();
    objectiveNodes = t.objectiveNodes();
    objectiveDirections = t.directions();
    maxViolation = std::numeric_limits<long long>::max() /
                   std::max<long long>(1, static_cast<long long>(constraintNodes.size()));
    constraintPositions.resize(nodeCount);
    ranks.resize(nodeCount);
    for (unsigned int node = 0; node < nodeCount; ++node) {
        constraintPositions[node] = t.posInConstraints(node);
        ranks[node] = t.rank(node);
    }
    rankOffsets.assign(1, 0);
    rankNodes.clear();
    rankNodes.reserve(nodeCount);
    for (unsigned int r = 0; r < t.nbRanks(); ++r) {
        const std::vector<unsigned int>& level = t.nodesOfRank(r);
        rankNodes.insert(rankNodes.end(), level.begin(), level.end());
        rankOffsets.push_back(static_cast<unsigned int>(rankNodes.size()));
    }
}

void DagFixedFields::initTypes(const TemporaryDagFixedFields& t) {
    types.resize(nodeCount);
    unsigned int largest = 0;
    for (unsigned int node = 0; node < nodeCount; ++node) {
        types[node] = t.type(node);
        if (types[node] > largest) largest = types[node];
    }
    nodesPerType.assign(largest + 1, 0);
    indicesInType.resize(nodeCount);
    for (unsigned int node = 0; node < nodeCount; ++node) indicesInType[node] = nodesPerType[types[node]]++;
}

void DagFixedFields::initChilds(const TemporaryDagFixedFields& t) {
    childKindIndices.resize(nodeCount);
    links.assign(nodeCount, NodeLinks{0, 0, KernelConstants::NO_PARENT_OFFSET, 0});
    unsigned int nbInner = 0, nbLeaves = 0, total = 0;
    for (unsigned int node = 0; node < nodeCount; ++node) {
        unsigned int n = t.nbChilds(node);
        childKindIndices[node] = n > 0 ? nbInner++ : nbLeaves++;
        links[node].childOffset = total;
        links[node].nbChilds = n;
        total += n;
    }
    childNodes.resize(total);
    for (unsigned int node = 0; node < nodeCount; ++node)
        for (unsigned int i = 0; i < t.nbChilds(node); ++i)
            childNodes[links[node].childOffset + i] = t.nodeChild(node, i);
}

void DagFixedFields::initClassification() {
    variableNodes.clear();
    variableIndices.assign(nodeCount, KernelConstants::NO_NODE);
    for (NodeType kind : {Boolean, Integer}) {
        for (unsigned int node = 0; node < nodeCount; ++node) {
            if (types[node] != kind) continue;
            variableIndices[node] = static_cast<unsigned int>(variableNodes.size());
            variableNodes.push_back(node);
        }
        if (kind == Boolean) booleanCount = static_cast<unsigned int>(variableNodes.size());
    }
}

void DagFixedFields::initDomains(const TemporaryDagFixedFields& t) {
    booleanDomain.resize(nodeCount);
    lowerBounds.resize(nodeCount);
    upperBounds.resize(nodeCount);
    for (unsigned int node = 0; node < nodeCount; ++node) {
        booleanDomain[node] = NodeTypeUtils::isBooleanDomain(types[node]);
        lowerBounds[node] = t.min(node);
        upperBounds[node] = t.max(node);
    }
}

void DagFixedFields::initCoefficients(const TemporaryDagFixedFields& t) {
    childCoefficients.assign(childNodes.size(), 0);
    constants.assign(nodeCount, 0);
    for (unsigned int node = 0; node < nodeCount; ++node) {
        NodeType type = types[node];
        if (type == Constant || type == Scalar) {
            constants[node] = t.constant(node);
            if (type == Scalar) childCoefficients[links[node].childOffset] = t.scalar(node);
        } else if (NodeTypeUtils::hasChildCoefficients(type)) {
            for (unsigned int i = 0; i < t.nbChilds(node); ++i)
                childCoefficients[links[node].childOffset + i] = t.coefficient(node, i);
        }
    }
}

void DagFixedFields::initParents(const TemporaryDagFixedFields& t) {
    unsigned int total = 0;
    for (unsigned int node = 0; node < nodeCount; ++node) {
        links[node].nbParents = static_cast<unsigned int>(t.parentsOf(node).size());
        if (links[node].nbParents > 0) {
            links[node].parentOffset = total;
            total += links[node].nbParents;
        }
    }
    parentNodes.resize(total);
    positionsInParent.resize(total);
    for (unsigned int node = 0; node < nodeCount; ++node) {
        for (unsigned int k = 0; k < links[node].nbParents; ++k) {
            parentNodes[links[node].parentOffset + k] = t.parentsOf(node)[k];
            positionsInParent[links[node].parentOffset + k] = t.positionsInParents(node)[k];
        }
    }
}
