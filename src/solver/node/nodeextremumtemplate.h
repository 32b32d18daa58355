#pragma once

#include "solver/kernel/mathoverflow.h"
#include "solver/kernel/nodetypeutils.h"
#include "solver/kernel/temporarydagfixedfields.h"
#include "solver/node/nodenarytemplate.h"

#include <limits>

// Max, Min, ScalarMax, ScalarMin: the largest (smallest) term, terms being
// children or coefficient x child. 0 without children.
//
// `best` holds the positions whose committed term equals the committed
// value. eval only reads the modified terms unless every best term moved
// away, in which case the unmodified terms are scanned once: the usual move
// costs the modified children only.
template <class S, NodeType T>
class NodeExtremumTemplate : public NodeTermsTemplate<S, T == ScalarMax || T == ScalarMin> {
    using Base = NodeTermsTemplate<S, T == ScalarMax || T == ScalarMin>;
    static constexpr bool IS_MAX = T == Max || T == ScalarMax;
    static constexpr long long WORST =
        IS_MAX ? std::numeric_limits<long long>::min() : std::numeric_limits<long long>::max();
    // a strictly better than b.
    static bool better(long long a, long long b) { return IS_MAX ? a > b : a < b; }

public:
    NodeExtremumTemplate(const DagFixedFields& fixed, unsigned int node)
        : Base(fixed, node), best(fixed.nbChilds(node)) {}

    long long computeValue(const Dag& dag, unsigned int node) const override {
        const DagFixedFields& fixed = dag.getFixedFields();
        unsigned int n = fixed.nbChilds(node);
        if (n == 0) return 0;
        long long value = WORST;
        for (unsigned int i = 0; i < n; ++i) {
            long long t = Base::term(fixed, dag.currentValuesData(), node, i);
            if (better(t, value)) value = t;
        }
        return value;
    }

    void init(Dag& dag, unsigned int node) override {
        NodeInner::init(dag, node);
        this->modified.clear();
        this->initCandidates(dag, node);
        rebuildBest(dag.getFixedFields(), dag.currentValuesData(), node, dag.currentValue(node));
    }

    void eval(Dag& dag, Propagation& propagation, unsigned int node) override {
        const DagFixedFields& fixed = dag.getFixedFields();
        ValueView now = dag.newValuesData();
        ValueView before = dag.currentValuesData();
        long long current = dag.currentValue(node);
        long long m = WORST;
        unsigned int bestLeaving = 0;
        this->modified.forEach([&](unsigned int i) {
            long long t = Base::term(fixed, now, node, i);
            if (better(t, m)) m = t;
            if (Base::term(fixed, before, node, i) == current) ++bestLeaving;
        });
        long long value = current;
        if (!better(current, m)) {
            value = m;
        } else if (bestLeaving == best.size()) {
            value = m;
            for (unsigned int i = 0; i < fixed.nbChilds(node); ++i) {
                if (this->modified.contains(i)) continue;
                long long t = Base::term(fixed, before, node, i);
                if (better(t, value)) value = t;
            }
        }
        dag.setNewValue(node, value);
        Node::eval(dag, propagation, node);
    }

    void commit(Dag& dag, unsigned int node) override {
        const DagFixedFields& fixed = dag.getFixedFields();
        ValueView now = dag.newValuesData();
        long long value = dag.newValue(node), old = dag.currentValue(node);
        if (value == old) {
            this->modified.forEach([&](unsigned int i) {
                if (Base::term(fixed, now, node, i) == value) best.add(i); else best.remove(i);
            });
        } else if (better(value, old)) {
            // Only modified terms can reach a value better than the old one.
            best.clear();
            this->modified.forEach([&](unsigned int i) {
                if (Base::term(fixed, now, node, i) == value) best.add(i);
            });
        } else {
            rebuildBest(fixed, now, node, value);
        }
        Base::commit(dag, node);
    }

    // To raise a max, raise any term that can rise; to lower it, lower a
    // term holding it (a min is the mirror).
    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        return this->findTerm(dag, rand, boolean, node, IS_MAX ? &this->canIncrease : &best, true);
    }
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        return this->findTerm(dag, rand, boolean, node, IS_MAX ? &best : &this->canDecrease, false);
    }

    std::string toString() const override { return NodeTypeUtils::toString(T); }

    static void computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min,
                              long long& max) {
        min = max = WORST;
        for (unsigned int i = 0; i < t.nbChilds(node); ++i) {
            long long low, high;
            Base::termRange(t, node, i, low, high);
            if (better(low, min)) min = low;
            if (better(high, max)) max = high;
        }
        if (t.nbChilds(node) == 0) min = max = 0;
    }

private:
    void rebuildBest(const DagFixedFields& fixed, ValueView values, unsigned int node,
                     long long value) {
        best.clear();
        for (unsigned int i = 0; i < fixed.nbChilds(node); ++i)
            if (Base::term(fixed, values, node, i) == value) best.add(i);
    }

    S best;
};

template <class S> using NodeMaxTemplate = NodeExtremumTemplate<S, Max>;
template <class S> using NodeMinTemplate = NodeExtremumTemplate<S, Min>;
template <class S> using NodeScalarMaxTemplate = NodeExtremumTemplate<S, ScalarMax>;
template <class S> using NodeScalarMinTemplate = NodeExtremumTemplate<S, ScalarMin>;
