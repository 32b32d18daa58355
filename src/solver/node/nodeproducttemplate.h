#pragma once

#include "solver/kernel/mathoverflow.h"
#include "solver/kernel/nodetypeutils.h"
#include "solver/kernel/temporarydagfixedfields.h"
#include "solver/node/nodenarytemplate.h"

#include <limits>

// Product (of the children) and ScalarProduct (of coefficient x child),
// wrapping around in 64 bits.
//
// The node keeps the set of zero factors and the product of the non-zero
// ones, so that a move costs one step per modified child: a factor a
// replaced by b divides the product by a and multiplies it by b. That
// division is exact only when no partial product can overflow, which the
// children's bounds decide once at construction; otherwise eval recomputes
// the product from scratch.
template <class S, NodeType T>
class NodeProductFamilyTemplate : public NodeTermsTemplate<S, T == ScalarProduct> {
    using Base = NodeTermsTemplate<S, T == ScalarProduct>;

public:
    NodeProductFamilyTemplate(const DagFixedFields& fixed, unsigned int node)
        : Base(fixed, node), zeros(fixed.nbChilds(node)), exact(isExact(fixed, node)) {}

    long long computeValue(const Dag& dag, unsigned int node) const override {
        return productOf(dag.getFixedFields(), dag.currentValuesData(), node);
    }

    void init(Dag& dag, unsigned int node) override {
        NodeInner::init(dag, node);
        this->modified.clear();
        this->initCandidates(dag, node);
        const DagFixedFields& fixed = dag.getFixedFields();
        zeros.clear();
        nonZeroProduct = 1;
        for (unsigned int i = 0; i < fixed.nbChilds(node); ++i) {
            long long t = Base::term(fixed, dag.currentValuesData(), node, i);
            if (t == 0) zeros.add(i); else nonZeroProduct = WrapArith::mul(nonZeroProduct, t);
        }
        pendingProduct = nonZeroProduct;
    }

    void eval(Dag& dag, Propagation& propagation, unsigned int node) override {
        const DagFixedFields& fixed = dag.getFixedFields();
        long long value;
        if (exact) {
            ValueView now = dag.newValuesData();
            ValueView before = dag.currentValuesData();
            long long product = nonZeroProduct;
            long long nbZeros = zeros.size();
            this->modified.forEach([&](unsigned int i) {
                long long from = Base::term(fixed, before, node, i), to = Base::term(fixed, now, node, i);
                if (from == 0) --nbZeros; else product /= from;
                if (to == 0) ++nbZeros; else product *= to;
            });
            pendingProduct = product;
            value = nbZeros > 0 ? 0 : product;
        } else {
            value = productOf(fixed, dag.newValuesData(), node);
        }
        dag.setNewValue(node, value);
        Node::eval(dag, propagation, node);
    }

    void commit(Dag& dag, unsigned int node) override {
        const DagFixedFields& fixed = dag.getFixedFields();
        this->modified.forEach([&](unsigned int i) {
            if (Base::term(fixed, dag.newValuesData(), node, i) == 0) zeros.add(i); else zeros.remove(i);
        });
        nonZeroProduct = pendingProduct;
        Base::commit(dag, node);
    }

    bool isInit(const Dag& dag, unsigned int node) const override {
        if (!Base::isInit(dag, node)) return false;
        const DagFixedFields& fixed = dag.getFixedFields();
        for (unsigned int i = 0; i < fixed.nbChilds(node); ++i)
            if (zeros.contains(i) != (Base::term(fixed, dag.currentValuesData(), node, i) == 0)) return false;
        return !exact || nonZeroProduct == nonZeroProductOf(fixed, dag.currentValuesData(), node);
    }
    void refreshChild(const Dag& dag, unsigned int node, unsigned int position, long long before) override {
        const DagFixedFields& fixed = dag.getFixedFields();
        long long from = Scaled() ? WrapArith::mul(fixed.coefficient(node, position), before) : before;
        long long to = Base::term(fixed, dag.currentValuesData(), node, position);
        if (to == 0) zeros.add(position); else zeros.remove(position);
        // Without exactness the kept product is not used (eval recomputes).
        if (exact && from != to) {
            if (from != 0) nonZeroProduct /= from;
            if (to != 0) nonZeroProduct *= to;
        }
        pendingProduct = nonZeroProduct;
        Base::refreshChild(dag, node, position, before);
    }

    // The sign of the other factors decides which way a factor must move;
    // rather than tracking it, ask a random factor for a random direction.
    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        return this->findTerm(dag, rand, boolean, node, nullptr, true);
    }
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        return this->findTerm(dag, rand, boolean, node, nullptr, false);
    }

    std::string toString() const override { return NodeTypeUtils::toString(T); }

    static void computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min,
                              long long& max) {
        min = max = 1;
        for (unsigned int i = 0; i < t.nbChilds(node); ++i) {
            long long low, high;
            Base::termRange(t, node, i, low, high);
            MathOverflow::multiplyRanges(min, max, low, high, min, max);
        }
    }

private:
    static long long productOf(const DagFixedFields& fixed, ValueView values, unsigned int node) {
        long long value = 1;
        for (unsigned int i = 0; i < fixed.nbChilds(node); ++i)
            value = WrapArith::mul(value, Base::term(fixed, values, node, i));
        return value;
    }

    static constexpr bool Scaled() { return T == ScalarProduct; }
    static long long nonZeroProductOf(const DagFixedFields& fixed, ValueView values, unsigned int node) {
        long long value = 1;
        for (unsigned int i = 0; i < fixed.nbChilds(node); ++i) {
            long long t = Base::term(fixed, values, node, i);
            if (t != 0) value = WrapArith::mul(value, t);
        }
        return value;
    }

    // True when the product of the largest factor magnitudes (zero factors
    // counted as 1) fits: then every partial product of non-zero factors is
    // exact and can be divided back.
    static bool isExact(const DagFixedFields& fixed, unsigned int node) {
        long long bound = 1;
        for (unsigned int i = 0; i < fixed.nbChilds(node); ++i) {
            unsigned int child = fixed.child(node, i);
            long long low = fixed.lowerBound(child), high = fixed.upperBound(child);
            if (T == ScalarProduct) MathOverflow::scaleRange(fixed.coefficient(node, i), fixed.lowerBound(child), fixed.upperBound(child), low, high);
            long long magnitude = std::max(MathOverflow::abs(low), MathOverflow::abs(high));
            bound = MathOverflow::product(bound, std::max(magnitude, 1LL));
            if (bound == std::numeric_limits<long long>::max()) return false;
        }
        return true;
    }

    S zeros;
    bool exact;
    long long nonZeroProduct = 1;
    // The non-zero product of the move being evaluated, kept for commit.
    long long pendingProduct = 1;
};

template <class S> using NodeProductTemplate = NodeProductFamilyTemplate<S, Product>;
template <class S> using NodeScalarProductTemplate = NodeProductFamilyTemplate<S, ScalarProduct>;
