#pragma once

#include "solver/node/nodefixedaritytemplate.h"

// The six comparisons of a (first child) with b (second child), valued 0
// or 1. As violated constraints they cost a graded amount that is 0
// exactly when the comparison holds (how far a is on the wrong side), so
// that the search sees progress before the constraint is satisfied.
class NodeComparison : public NodeInner {
public:
    virtual bool compare(long long a, long long b) const = 0;

    // The relation and the violation measure of each comparison kind, for
    // the nodes and for whoever evaluates a comparison without its node.
    static bool holds(NodeType type, long long a, long long b) {
        switch (type) {
            case Lt: return a < b;
            case Leq: return a <= b;
            case Gt: return a > b;
            case Geq: return a >= b;
            case Eq: return a == b;
            default: return a != b;
        }
    }
    static long long violationOf(NodeType type, long long a, long long b);

    long long computeValue(const Dag& dag, unsigned int node) const override {
        return compare(child(dag, dag.currentValuesData(), node, 0), child(dag, dag.currentValuesData(), node, 1)) ? 1 : 0;
    }
    void eval(Dag& dag, Propagation& propagation, unsigned int node) override {
        ValueView now = dag.newValuesData();
        dag.setNewValue(node, compare(child(dag, now, node, 0), child(dag, now, node, 1)) ? 1 : 0);
        Node::eval(dag, propagation, node);
    }
    long long initialViolatedConstraintCost(const Dag& dag, unsigned int node) const override {
        return cost(dag, dag.currentValuesData(), node);
    }
    long long evalViolatedConstraintCost(const Dag& dag, unsigned int node) const override {
        return cost(dag, dag.newValuesData(), node) - cost(dag, dag.currentValuesData(), node);
    }

protected:
    // How far the pair is from satisfying the comparison; 0 when it does.
    virtual long long violation(long long a, long long b) const { return compare(a, b) ? 0 : 1; }
    // max(0, x - y + margin), exact and clamped to the 64-bit maximum.
    static long long excess(long long x, long long y, long long margin);
    // The violation capped so that the costs of all constraints add up
    // without overflow; still at least 1 when violated.
    long long cost(const Dag& dag, ValueView values, unsigned int node) const {
        long long v = violation(child(dag, values, node, 0), child(dag, values, node, 1));
        long long cap = dag.getFixedFields().violationCap();
        return v < cap ? v : cap;
    }
    static long long child(const Dag& dag, ValueView values, unsigned int node, unsigned int i) {
        return values[dag.getFixedFields().child(node, i)];
    }
    // [1, 1] when the comparison always holds, [0, 0] when it never does.
    static void comparisonBounds(bool alwaysTrue, bool alwaysFalse, long long& min, long long& max) {
        min = alwaysTrue ? 1 : 0;
        max = alwaysFalse ? 0 : 1;
    }
};

// One class per comparison kind, with its relation, violation measure,
// search rule and bounds.
template <NodeType T>
class NodeComparisonTemplate : public NodeComparison {
public:
    bool compare(long long a, long long b) const override { return holds(T, a, b); }
    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    std::string toString() const override { return NodeTypeUtils::toString(T); }
    static void computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min, long long& max);

protected:
    long long violation(long long a, long long b) const override { return violationOf(T, a, b); }
};

using NodeLt = NodeComparisonTemplate<Lt>;
using NodeLeq = NodeComparisonTemplate<Leq>;
using NodeGt = NodeComparisonTemplate<Gt>;
using NodeGeq = NodeComparisonTemplate<Geq>;
using NodeEq = NodeComparisonTemplate<Eq>;
using NodeNeq = NodeComparisonTemplate<Neq>;
