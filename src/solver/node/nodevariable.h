#pragma once

#include "solver/kernel/node.h"

class TemporaryDagFixedFields;

// Decision variables: their new value is written by the move, eval only
// passes the change on to the parents.
class NodeVariable : public virtual Node {
public:
    // The value is set beforehand (solution or initial assignment).
    void init(Dag& dag, unsigned int node) override;
    // Final: a move that never reached the graph has its variables restored
    // by the propagation itself, value only.
    void rollback(Dag& dag, unsigned int node) final { Node::rollback(dag, node); }
};

class NodeBooleanVar : public NodeVariable {
public:
    // The node itself, when it can move that way.
    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    std::string toString() const override;
    static void computeBounds(const TemporaryDagFixedFields&, unsigned int, long long& min, long long& max);
};

// Integer variables and constants offer no boolean to flip.
bool findNoBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int node);

class NodeIntegerVar : public NodeVariable {
public:
    bool isInit(const Dag& dag, unsigned int node) const override;
    void printCheck(const Dag& dag, unsigned int node) const override;
    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        return findNoBoolean(dag, rand, boolean, node);
    }
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override {
        return findNoBoolean(dag, rand, boolean, node);
    }
    std::string toString() const override;
    static void computeBounds(const TemporaryDagFixedFields&, unsigned int, long long& min, long long& max);
};
