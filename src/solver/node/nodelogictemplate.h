#pragma once

#include "solver/kernel/nodetypeutils.h"
#include "solver/kernel/temporarydagfixedfields.h"
#include "solver/node/nodenarytemplate.h"

// And, Or, Xor over children read as true when non-zero. Without children:
// And 1, Or 0, Xor 0.
//
// The node keeps the committed true and false children; eval counts the
// true children after the move from the modified ones only, which decides
// all three operators (all true, some true, odd count).
template <class S, NodeType T>
class NodeLogicTemplate : public NodeNaryTemplate<S> {
public:
    NodeLogicTemplate(const DagFixedFields& fixed, unsigned int node)
        : NodeNaryTemplate<S>(fixed, node), trueChilds(fixed.nbChilds(node)), falseChilds(fixed.nbChilds(node)) {}

    long long computeValue(const Dag& dag, unsigned int node) const override {
        const DagFixedFields& fixed = dag.getFixedFields();
        unsigned int nbTrue = 0;
        for (unsigned int i = 0; i < fixed.nbChilds(node); ++i)
            if (dag.currentValue(fixed.child(node, i)) != 0) ++nbTrue;
        return valueOf(nbTrue, fixed.nbChilds(node));
    }

    void init(Dag& dag, unsigned int node) override {
        NodeInner::init(dag, node);
        this->modified.clear();
        const DagFixedFields& fixed = dag.getFixedFields();
        for (unsigned int i = 0; i < fixed.nbChilds(node); ++i)
            place(i, dag.currentValue(fixed.child(node, i)) != 0);
    }

    void eval(Dag& dag, Propagation& propagation, unsigned int node) override {
        const DagFixedFields& fixed = dag.getFixedFields();
        long long nbTrue = trueChilds.size();
        this->modified.forEach([&](unsigned int i) {
            unsigned int child = fixed.child(node, i);
            nbTrue += (dag.newValue(child) != 0) - (dag.currentValue(child) != 0);
        });
        dag.setNewValue(node, valueOf(nbTrue, fixed.nbChilds(node)));
        Node::eval(dag, propagation, node);
    }

    bool isInit(const Dag& dag, unsigned int node) const override {
        if (!NodeInner::isInit(dag, node)) return false;
        const DagFixedFields& fixed = dag.getFixedFields();
        for (unsigned int i = 0; i < fixed.nbChilds(node); ++i) {
            bool isTrue = dag.currentValue(fixed.child(node, i)) != 0;
            if (trueChilds.contains(i) != isTrue || falseChilds.contains(i) == isTrue) return false;
        }
        return true;
    }
    void refreshChild(const Dag& dag, unsigned int node, unsigned int position, long long) override {
        place(position, dag.currentValue(dag.getFixedFields().child(node, position)) != 0);
    }

    void commit(Dag& dag, unsigned int node) override {
        const DagFixedFields& fixed = dag.getFixedFields();
        this->modified.forEach([&](unsigned int i) { place(i, dag.newValue(fixed.child(node, i)) != 0); });
        this->modified.clear();
        Node::commit(dag, node);
    }

    // And and Or rise by raising a false child and fall by lowering a true
    // one; Xor changes by moving any child either way.
    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        if (dag.currentValue(node) != 0) return false;
        return findAmong(dag, rand, boolean, node, falseChilds, true);
    }
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        if (dag.currentValue(node) == 0) return false;
        return findAmong(dag, rand, boolean, node, trueChilds, false);
    }

    std::string toString() const override { return NodeTypeUtils::toString(T); }

    static void computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min,
                              long long& max) {
        min = 0;
        max = 1;
        if (T != Or) return;
        bool alwaysTrue = false, maybeTrue = false;
        for (unsigned int i = 0; i < t.nbChilds(node); ++i) {
            unsigned int child = t.nodeChild(node, i);
            if (t.min(child) > 0 || t.max(child) < 0) alwaysTrue = true;
            if (t.min(child) != 0 || t.max(child) != 0) maybeTrue = true;
        }
        min = alwaysTrue ? 1 : 0;
        max = maybeTrue ? 1 : 0;
    }

private:
    static long long valueOf(long long nbTrue, unsigned int n) {
        if (T == And) return nbTrue == n ? 1 : 0;
        if (T == Or) return nbTrue > 0 ? 1 : 0;
        return nbTrue & 1;
    }
    void place(unsigned int i, bool isTrue) {
        if (isTrue) {
            trueChilds.add(i);
            falseChilds.remove(i);
        } else {
            falseChilds.add(i);
            trueChilds.remove(i);
        }
    }
    bool findAmong(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int node,
                   const S& set, bool increase) const {
        if (T == Xor) return this->findRandomBoolean(dag, rand, boolean, node);
        if (set.empty()) return false;
        unsigned int child = dag.getFixedFields().child(node, set.nth(rand.nextInt(set.size())));
        return findChildBoolean(dag, rand, boolean, child, increase);
    }

    S trueChilds;
    S falseChilds;
};

template <class S> using NodeAndTemplate = NodeLogicTemplate<S, And>;
template <class S> using NodeOrTemplate = NodeLogicTemplate<S, Or>;
template <class S> using NodeXorTemplate = NodeLogicTemplate<S, Xor>;
