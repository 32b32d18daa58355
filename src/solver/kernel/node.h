#pragma once

#include <string>

class Dag;
class DagFixedFields;
class Propagation;
class Quickrand;

// Behaviour of one kind of node. Values live in the Dag's arrays; a Node
// object only carries the incremental bookkeeping of its node, and every
// operation receives the Dag and the node number.
//
// Evaluation cycle: a node's eval writes its new value from its children's
// new values, then Node::eval tells each parent (if the value changed) to be
// evaluated and which of its children moved. commit makes the new value the
// current one; rollback the reverse. Between moves new == current and every
// modified subset is empty.
class Node {
public:
    virtual ~Node() = default;

    // new == current and the value lies within the node's bounds.
    virtual bool isInit(const Dag& dag, unsigned int node) const;
    // Throws KernelException when isInit is false.
    virtual void check(const Dag& dag, unsigned int node) const;
    virtual void printCheck(const Dag& dag, unsigned int node) const;
    // A boolean decision whose flip should move this node's committed value
    // down (up); false when the node cannot move that way or none is found.
    virtual bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                       unsigned int node) const = 0;
    virtual bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                       unsigned int node) const = 0;
    // Cost of this node as a violated constraint, committed state: 1 when 0.
    virtual long long initialViolatedConstraintCost(const Dag& dag, unsigned int node) const;
    // Change of that cost from the committed to the new state.
    virtual long long evalViolatedConstraintCost(const Dag& dag, unsigned int node) const;
    virtual std::string toString() const = 0;
    virtual void init(Dag& dag, unsigned int node);
    // Default: notify the parents if the new value differs from the current.
    virtual void eval(Dag& dag, Propagation& propagation, unsigned int node);
    virtual void commit(Dag& dag, unsigned int node);
    virtual void rollback(Dag& dag, unsigned int node);
    // The child at `position` changed in this evaluation.
    virtual void modifiedNodesSetIn(unsigned int position, const DagFixedFields& fixed,
                                    unsigned int node);
    // Outside the evaluation cycle: the child at `position` was committed
    // to a new value (already the Dag's current one; `before` the one it
    // replaced), and the node brings its own bookkeeping along. Its value
    // is the caller's to set. For moves committed without propagation.
    virtual void refreshChild(const Dag& dag, unsigned int node, unsigned int position, long long before);
};

// Operators: a value computed from children.
class NodeInner : public virtual Node {
public:
    // The value from the children's current values, from scratch.
    virtual long long computeValue(const Dag& dag, unsigned int node) const = 0;

    bool isInit(const Dag& dag, unsigned int node) const override;
    void printCheck(const Dag& dag, unsigned int node) const override;
    // current = new = computeValue.
    void init(Dag& dag, unsigned int node) override;

    // The current value equals computeValue.
    bool isValueInit(const Dag& dag, unsigned int node) const;
    // A random child asked for a boolean in a random direction.
    bool findRandomBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                           unsigned int node) const;
};

// Asks a child for a boolean moving it up (increase) or down.
bool findChildBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int child,
                      bool increase);
