#pragma once

#include "solver/kernel/mathoverflow.h"
#include "solver/kernel/nodetypeutils.h"
#include "solver/kernel/temporarydagfixedfields.h"
#include "solver/node/nodenarytemplate.h"

// Sums: Sum (children), ScalarSum (coefficient x child) and BooleanSum
// (boolean children). Values wrap around in 64 bits; bounds are the whole
// 64-bit range when the sum can overflow.
//
// eval costs one step per modified child: the node's value moves by the
// modified terms' deltas. canDecrease / canIncrease are the not-min and
// not-max sets of a plain sum (for a negative coefficient they swap).
template <class S, NodeType T>
class NodeLinearTemplate : public NodeTermsTemplate<S, T == ScalarSum> {
    using Base = NodeTermsTemplate<S, T == ScalarSum>;

public:
    NodeLinearTemplate(const DagFixedFields& fixed, unsigned int node) : Base(fixed, node, true) {}

    long long computeValue(const Dag& dag, unsigned int node) const override {
        const DagFixedFields& fixed = dag.getFixedFields();
        long long value = 0;
        for (unsigned int i = 0; i < fixed.nbChilds(node); ++i)
            value = WrapArith::add(value, Base::term(fixed, dag.currentValuesData(), node, i));
        return value;
    }

    void init(Dag& dag, unsigned int node) override {
        NodeInner::init(dag, node);
        this->modified.clear();
        this->initCandidates(dag, node);
    }

    void eval(Dag& dag, Propagation& propagation, unsigned int node) override {
        const DagFixedFields& fixed = dag.getFixedFields();
        long long value = dag.newValue(node);
        if (T == BooleanSum) {
            // A modified boolean child has flipped: +1 when it rose, -1 when it fell.
            this->modified.forEach([&](unsigned int i) {
                value += dag.newValue(fixed.child(node, i)) != 0 ? 1 : -1;
            });
        } else {
            ValueView now = dag.newValuesData();
            ValueView before = dag.currentValuesData();
            this->modified.forEach([&](unsigned int i) {
                value = WrapArith::add(value, WrapArith::sub(Base::term(fixed, now, node, i),
                                                             Base::term(fixed, before, node, i)));
            });
        }
        dag.setNewValue(node, value);
        Node::eval(dag, propagation, node);
    }

    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        return this->findTerm(dag, rand, boolean, node, &this->canIncrease, true);
    }
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        return this->findTerm(dag, rand, boolean, node, &this->canDecrease, false);
    }

    std::string toString() const override { return NodeTypeUtils::toString(T); }

    static void computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min,
                              long long& max) {
        min = max = 0;
        for (unsigned int i = 0; i < t.nbChilds(node); ++i) {
            long long low, high;
            Base::termRange(t, node, i, low, high);
            MathOverflow::addRanges(min, max, low, high, min, max);
        }
    }
};

template <class S> using NodeSumTemplate = NodeLinearTemplate<S, Sum>;
template <class S> using NodeScalarSumTemplate = NodeLinearTemplate<S, ScalarSum>;
template <class S> using NodeBooleanSumTemplate = NodeLinearTemplate<S, BooleanSum>;
