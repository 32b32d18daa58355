#pragma once

#include "solver/kernel/node.h"

class TemporaryDagFixedFields;

// A constant: its value is read from the fixed fields at init and never
// changes, so eval, commit and rollback do nothing.
class NodeConstant : public virtual Node {
public:
    void init(Dag& dag, unsigned int node) override;
    void eval(Dag&, Propagation&, unsigned int) override {}
    void commit(Dag&, unsigned int) override {}
    void rollback(Dag&, unsigned int) override {}
    bool findIncreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    bool findDecreasingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                               unsigned int node) const override;
    std::string toString() const override { return "Constant"; }
    static void computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min, long long& max);
};
