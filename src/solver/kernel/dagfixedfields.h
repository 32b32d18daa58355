#pragma once

#include "solver/kernel/kernelconstants.h"
#include "solver/kernel/nodetype.h"

#include <memory>
#include <vector>

class KeptScoresFixed;
class TemporaryDagFixedFields;

// The immutable structure of the graph, shared read-only by every Dag and
// every search thread once init() has run. Everything is a flat array
// indexed by node number (children and parents as one index array plus
// offsets) so that evaluation touches contiguous memory.
class DagFixedFields {
public:
    // Builds everything from a closed TemporaryDagFixedFields.
    void init(const TemporaryDagFixedFields& temporary);

    // --- Global ---
    unsigned int nbNodes() const { return nodeCount; }
    const std::vector<unsigned int>& constraints() const { return constraintNodes; }
    unsigned int nbConstraints() const { return static_cast<unsigned int>(constraintNodes.size()); }
    const std::vector<unsigned int>& objectives() const { return objectiveNodes; }
    const std::vector<ObjectiveDirection>& directions() const { return objectiveDirections; }
    // The largest cost of one violated constraint: the costs of all
    // constraints together must fit in 64 bits, or a sum that wraps to 0
    // would pass an infeasible state for a feasible one.
    long long violationCap() const { return maxViolation; }
    unsigned int nbRanks() const { return static_cast<unsigned int>(rankOffsets.size()) - 1; }
    unsigned int rank(unsigned int node) const { return ranks[node]; }
    const unsigned int* ranksData() const { return ranks.data(); }
    unsigned int nbNodesOfRank(unsigned int r) const { return rankOffsets[r + 1] - rankOffsets[r]; }
    const unsigned int* nodesOfRank(unsigned int r) const { return &rankNodes[rankOffsets[r]]; }

    // --- Types ---
    NodeType type(unsigned int node) const { return types[node]; }
    unsigned int nbNodesOfType(NodeType t) const {
        return t < nodesPerType.size() ? nodesPerType[t] : 0;
    }
    unsigned int indexInType(unsigned int node) const { return indicesInType[node]; }

    // --- Children ---
    bool hasChilds(unsigned int node) const { return links[node].nbChilds != 0; }
    // Index among the nodes with children, or among those without.
    unsigned int indexInChildKind(unsigned int node) const { return childKindIndices[node]; }
    unsigned int nbChilds(unsigned int node) const { return links[node].nbChilds; }
    unsigned int childOffset(unsigned int node) const { return links[node].childOffset; }
    unsigned int child(unsigned int node, unsigned int i) const { return childNodes[links[node].childOffset + i]; }
    const unsigned int* childs(unsigned int node) const { return childNodes.data() + links[node].childOffset; }

    // --- Variables: all Booleans, then all Integers, by node number ---
    const std::vector<unsigned int>& variables() const { return variableNodes; }
    unsigned int variableIndex(unsigned int node) const { return variableIndices[node]; }
    void prefetchVariableIndex(unsigned int node) const { __builtin_prefetch(&variableIndices[node]); }
    void prefetchType(unsigned int node) const { __builtin_prefetch(&types[node]); }
    void prefetchLinks(unsigned int node) const { __builtin_prefetch(&links[node]); }
    unsigned int nbBooleans() const { return booleanCount; }
    unsigned int nbIntegers() const { return static_cast<unsigned int>(variableNodes.size()) - booleanCount; }
    unsigned int nbVariables() const { return static_cast<unsigned int>(variableNodes.size()); }

    // --- Domains ---
    bool isBoolean(unsigned int node) const { return booleanDomain[node] != 0; }
    long long lowerBound(unsigned int node) const { return lowerBounds[node]; }
    long long upperBound(unsigned int node) const { return upperBounds[node]; }

    // --- Coefficients: one per child slot of scalar types; constants ---
    long long coefficient(unsigned int node, unsigned int i) const {
        return childCoefficients[links[node].childOffset + i];
    }
    const long long* coefficients(unsigned int node) const {
        return childCoefficients.data() + links[node].childOffset;
    }
    // A Constant's value or a Scalar's factor.
    long long constant(unsigned int node) const { return constants[node]; }

    // --- Parents ---
    unsigned int nbParents(unsigned int node) const { return links[node].nbParents; }
    // NO_PARENT_OFFSET for a node without parents.
    unsigned int parentOffset(unsigned int node) const { return links[node].parentOffset; }
    unsigned int parent(unsigned int node, unsigned int k) const { return parentNodes[links[node].parentOffset + k]; }
    const unsigned int* parents(unsigned int node) const { return parentNodes.data() + links[node].parentOffset; }
    // This node's position in the child list of its k-th parent.
    unsigned int positionInParent(unsigned int node, unsigned int k) const {
        return positionsInParent[links[node].parentOffset + k];
    }
    const unsigned int* positionsInParents(unsigned int node) const {
        return positionsInParent.data() + links[node].parentOffset;
    }

    // The pseudo-Boolean part whose flips are scored without the graph.
    const KeptScoresFixed& keptScores() const { return *kept; }

    // Position in the constraint list, NO_NODE when not a constraint.
    unsigned int posInConstraints(unsigned int node) const { return constraintPositions[node]; }
    const unsigned int* posInConstraintsData() const { return constraintPositions.data(); }

private:
    void initGlobal(const TemporaryDagFixedFields& t);
    void initTypes(const TemporaryDagFixedFields& t);
    void initChilds(const TemporaryDagFixedFields& t);
    void initClassification();
    void initDomains(const TemporaryDagFixedFields& t);
    void initCoefficients(const TemporaryDagFixedFields& t);
    void initParents(const TemporaryDagFixedFields& t);

    unsigned int nodeCount = 0;
    std::vector<unsigned int> constraintNodes;
    std::vector<unsigned int> constraintPositions;
    std::vector<unsigned int> objectiveNodes;
    std::vector<ObjectiveDirection> objectiveDirections;
    long long maxViolation = 0;
    std::vector<unsigned int> ranks;
    std::vector<unsigned int> rankOffsets{0};  // nbRanks + 1 entries
    std::vector<unsigned int> rankNodes;

    std::vector<NodeType> types;
    std::vector<unsigned int> nodesPerType;
    std::vector<unsigned int> indicesInType;

    // Where a node's children and parents are, together: evaluating a node
    // reads both, so they share one cache line.
    struct NodeLinks {
        unsigned int childOffset;
        unsigned int nbChilds;
        unsigned int parentOffset;  // NO_PARENT_OFFSET without parents
        unsigned int nbParents;
    };
    std::vector<NodeLinks> links;

    std::vector<unsigned int> childKindIndices;
    std::vector<unsigned int> childNodes;

    std::vector<unsigned int> variableNodes;
    std::vector<unsigned int> variableIndices;
    unsigned int booleanCount = 0;

    std::vector<unsigned char> booleanDomain;
    std::vector<long long> lowerBounds;
    std::vector<long long> upperBounds;

    std::vector<long long> childCoefficients;  // parallel to childNodes
    std::vector<long long> constants;

    std::vector<unsigned int> parentNodes;
    std::vector<unsigned int> positionsInParent;

    std::shared_ptr<const KeptScoresFixed> kept;
};
