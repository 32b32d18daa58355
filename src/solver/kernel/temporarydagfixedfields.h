#pragma once

#include "solver/kernel/kernelconstants.h"
#include "solver/kernel/nodetype.h"

#include <vector>

// The mutable form of the graph's fixed fields, filled node by node by the
// builder (or a test) and then closed:
//
//   TemporaryDagFixedFields t;
//   unsigned x = t.typeSize(); t.setNodeType(x, Boolean);
//   unsigned k = t.typeSize(); t.setNodeType(k, Constant); t.setNodeConstant(k, 3);
//   unsigned s = t.typeSize(); t.setNodeType(s, ScalarSum);
//   t.setNodeChilds(s, {x, k}); t.setNodeCoefficients(s, {2, 1});
//   t.addConstraint(c); t.addObjective(s, Minimize);
//   t.close();                       // positions, parents, ranks, bounds
//   DagFixedFields fixed; fixed.init(t);
//
// Node numbers are dense and given in creation order: a new node's number is
// typeSize(). Children must be created before their parents only for ranks to
// be found; close() reports an inner node that no leaf reaches.
class TemporaryDagFixedFields {
public:
    // --- Filling ---
    void setNodeType(unsigned int node, NodeType type);
    void setNodeChilds(unsigned int node, const std::vector<unsigned int>& childs);
    // One coefficient per child, for Scalar* types.
    void setNodeCoefficients(unsigned int node, const std::vector<long long>& coefficients);
    // A Constant's value.
    void setNodeConstant(unsigned int node, long long value);
    // A Scalar's factor (its single coefficient).
    void setNodeScalar(unsigned int node, long long factor);
    void addConstraint(unsigned int node);
    void addObjective(unsigned int node, ObjectiveDirection direction);

    // Positions in constraints, parent links, ranks, per-rank lists, bounds.
    // Throws KernelException on a node that is constrained twice or that no
    // variable or constant reaches.
    void close();

    // --- Reading (children, coefficients and constants as filled) ---
    unsigned int nbNodes() const { return static_cast<unsigned int>(types.size()); }
    unsigned int typeSize() const { return nbNodes(); }
    NodeType type(unsigned int node) const { return types[node]; }
    unsigned int nbChilds(unsigned int node) const {
        return static_cast<unsigned int>(childs[node].size());
    }
    unsigned int nodeChild(unsigned int node, unsigned int i) const { return childs[node][i]; }
    const std::vector<long long>& nodeCoefficients(unsigned int node) const {
        return coefficients[node];
    }
    unsigned int nodeCoefficientsSize(unsigned int node) const {
        return static_cast<unsigned int>(coefficients[node].size());
    }
    long long coefficient(unsigned int node, unsigned int i) const { return coefficients[node][i]; }
    long long constant(unsigned int node) const { return coefficients[node][0]; }
    long long scalar(unsigned int node) const { return coefficients[node][0]; }

    // --- Available after close() ---
    long long min(unsigned int node) const { return lowerBounds[node]; }
    long long max(unsigned int node) const { return upperBounds[node]; }
    unsigned int rank(unsigned int node) const { return ranks[node]; }
    unsigned int nbRanks() const { return static_cast<unsigned int>(nodesByRank.size()); }
    const std::vector<unsigned int>& nodesOfRank(unsigned int r) const { return nodesByRank[r]; }
    const std::vector<unsigned int>& parentsOf(unsigned int node) const { return parents[node]; }
    const std::vector<unsigned int>& positionsInParents(unsigned int node) const {
        return positionsInParent[node];
    }
    unsigned int posInConstraints(unsigned int node) const { return positionsInConstraints[node]; }
    const std::vector<unsigned int>& constraintNodes() const { return constraints; }
    const std::vector<unsigned int>& objectiveNodes() const { return objectives; }
    const std::vector<ObjectiveDirection>& directions() const { return objectiveDirections; }

private:
    void ensureNode(unsigned int node);
    void initPosInConstraints();
    void initParentChildLinks();
    void computeRanks();
    void initNodesByRank();
    void initMinMax();

    std::vector<NodeType> types;
    std::vector<std::vector<unsigned int>> childs;
    std::vector<std::vector<long long>> coefficients;
    std::vector<unsigned int> constraints;
    std::vector<unsigned int> objectives;
    std::vector<ObjectiveDirection> objectiveDirections;

    std::vector<unsigned int> positionsInConstraints;
    std::vector<std::vector<unsigned int>> parents;
    std::vector<std::vector<unsigned int>> positionsInParent;
    std::vector<unsigned int> ranks;
    std::vector<std::vector<unsigned int>> nodesByRank;
    std::vector<long long> lowerBounds;
    std::vector<long long> upperBounds;
};
