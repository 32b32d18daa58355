#pragma once

#include "solver/kernel/dag.h"
#include "solver/kernel/kernelconstants.h"
#include "solver/kernel/mathoverflow.h"
#include "solver/kernel/node.h"
#include "solver/kernel/quickrand.h"
#include "solver/kernel/subset.h"
#include "solver/kernel/subsetlist.h"
#include "solver/kernel/temporarydagfixedfields.h"

#include <type_traits>
#include <utility>

// Base of the n-ary operator families. S is the subset representation chosen
// by arity (see Dag::mallocNodes). `modified` holds the positions of the
// children that changed in the current evaluation (for the widest
// operators as a list, see SubsetList); it is filled by the children's eval
// and emptied by commit and rollback.
template <class S>
class NodeNaryTemplate : public NodeInner {
public:
    NodeNaryTemplate(const DagFixedFields& fixed, unsigned int node) : modified(fixed.nbChilds(node)) {}

    void modifiedNodesSetIn(unsigned int position, const DagFixedFields&, unsigned int) override {
        modified.add(position);
    }
    void rollback(Dag& dag, unsigned int node) override {
        Node::rollback(dag, node);
        modified.clear();
    }

protected:
    typename ModifiedSetOf<S>::type modified;
};

// An n-ary family whose value is built from terms coefficient x child
// (coefficient 1 unless Scaled). It keeps, for the search, the positions
// whose term can still decrease or increase given the child's bounds;
// these candidate sets are updated at commit, for modified children only.
//
// Split: a wide sum whose every term takes two values (a boolean, a
// comparison, times a non-zero coefficient) keeps canDecrease alone, the
// terms at their high value; the others are exactly those that can
// increase, the rest of the same sparse set's permutation. One update per
// changed term instead of two, on the sums a move changes most.
template <class S> struct IsSparseSubset : std::false_type {};
template <class T> struct IsSparseSubset<Subset<T>> : std::true_type {};

template <class S, bool Scaled>
class NodeTermsTemplate : public NodeNaryTemplate<S> {
public:
    NodeTermsTemplate(const DagFixedFields& fixed, unsigned int node, bool maySplit = false)
        : NodeNaryTemplate<S>(fixed, node),
          split(maySplit && IsSparseSubset<S>::value && hasTwoValuedTerms(fixed, node)),
          canDecrease(fixed.nbChilds(node)),
          canIncrease(split ? 0 : fixed.nbChilds(node)) {}

protected:
    static long long coefficient(const DagFixedFields& fixed, unsigned int node, unsigned int i) {
        return Scaled ? fixed.coefficient(node, i) : 1;
    }
    static long long term(const DagFixedFields& fixed, ValueView values, unsigned int node,
                          unsigned int i) {
        long long v = values[fixed.child(node, i)];
        return Scaled ? WrapArith::mul(fixed.coefficient(node, i), v) : v;
    }

    // Build-time range of the i-th term, from the child's bounds.
    static void termRange(const TemporaryDagFixedFields& t, unsigned int node, unsigned int i,
                          long long& low, long long& high) {
        unsigned int child = t.nodeChild(node, i);
        low = t.min(child);
        high = t.max(child);
        if (Scaled) MathOverflow::scaleRange(t.coefficient(node, i), t.min(child), t.max(child), low, high);
    }

    void updateCandidates(const DagFixedFields& fixed, unsigned int node, unsigned int i,
                          long long childValue) {
        unsigned int child = fixed.child(node, i);
        long long c = coefficient(fixed, node, i);
        bool up = childValue < fixed.upperBound(child);
        bool down = childValue > fixed.lowerBound(child);
        if (c < 0) std::swap(up, down);
        if (c == 0) up = down = false;
        if (!split) {
            if (up) canIncrease.add(i); else canIncrease.remove(i);
        }
        if (down) canDecrease.add(i); else canDecrease.remove(i);
    }
    // The candidate sets say what the children's committed values say.
    bool candidatesMatch(const Dag& dag, unsigned int node) const {
        const DagFixedFields& fixed = dag.getFixedFields();
        for (unsigned int i = 0; i < fixed.nbChilds(node); ++i) {
            unsigned int child = fixed.child(node, i);
            long long c = coefficient(fixed, node, i), value = dag.currentValue(child);
            bool up = value < fixed.upperBound(child), down = value > fixed.lowerBound(child);
            if (c < 0) std::swap(up, down);
            if (c == 0) up = down = false;
            if ((split ? !canDecrease.contains(i) : canIncrease.contains(i)) != up || canDecrease.contains(i) != down)
                return false;
        }
        return true;
    }
    void initCandidates(const Dag& dag, unsigned int node) {
        const DagFixedFields& fixed = dag.getFixedFields();
        for (unsigned int i = 0; i < fixed.nbChilds(node); ++i)
            updateCandidates(fixed, node, i, dag.currentValue(fixed.child(node, i)));
    }
    bool isInit(const Dag& dag, unsigned int node) const override {
        return NodeInner::isInit(dag, node) && candidatesMatch(dag, node);
    }
    void refreshChild(const Dag& dag, unsigned int node, unsigned int position, long long) override {
        const DagFixedFields& fixed = dag.getFixedFields();
        updateCandidates(fixed, node, position, dag.currentValue(fixed.child(node, position)));
    }
    // Candidates of the modified children, then the default commit.
    void commit(Dag& dag, unsigned int node) override {
        const DagFixedFields& fixed = dag.getFixedFields();
        this->modified.forEach([&](unsigned int i) {
            updateCandidates(fixed, node, i, dag.newValue(fixed.child(node, i)));
        });
        this->modified.clear();
        Node::commit(dag, node);
    }
    // False at the bound in that direction; otherwise a term of `set` (or,
    // without a set, any child either way) is asked to move.
    bool findTerm(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int node,
                  const S* set, bool increase) const {
        const DagFixedFields& fixed = dag.getFixedFields();
        long long value = dag.currentValue(node);
        if (increase ? value >= fixed.upperBound(node) : value <= fixed.lowerBound(node)) return false;
        if (set == nullptr) return this->findRandomBoolean(dag, rand, boolean, node);
        if (split && set == &canIncrease) {
            // The terms that can increase: the rest of canDecrease's
            // permutation (members beyond its size, in a sparse set).
            unsigned int n = fixed.nbChilds(node), high = canDecrease.size();
            if (high == n) return false;
            unsigned int i = canDecrease.nth(high + rand.nextInt(n - high));
            bool increaseChild = coefficient(fixed, node, i) > 0;
            return findChildBoolean(dag, rand, boolean, fixed.child(node, i), increaseChild);
        }
        return findInSet(dag, rand, boolean, node, *set, increase);
    }
    // Draws one position of `set` and asks its child for a boolean that
    // moves the term up (increaseTerm) or down; one attempt only.
    bool findInSet(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int node,
                   const S& set, bool increaseTerm) const {
        if (set.empty()) return false;
        const DagFixedFields& fixed = dag.getFixedFields();
        unsigned int i = set.nth(rand.nextInt(set.size()));
        bool increaseChild = (coefficient(fixed, node, i) > 0) == increaseTerm;
        return findChildBoolean(dag, rand, boolean, fixed.child(node, i), increaseChild);
    }

    static bool hasTwoValuedTerms(const DagFixedFields& fixed, unsigned int node) {
        for (unsigned int i = 0; i < fixed.nbChilds(node); ++i) {
            unsigned int child = fixed.child(node, i);
            long long low = fixed.lowerBound(child), high = fixed.upperBound(child);
            if (coefficient(fixed, node, i) == 0 || low >= high || high - 1 != low) return false;
        }
        return true;
    }

    const bool split;
    S canDecrease;
    S canIncrease;
};
