#pragma once

#include "solver/kernel/dagfixedfields.h"
#include "solver/kernel/node.h"
#include "solver/kernel/objectsallocator.h"
#include "solver/kernel/propagation.h"

#include <memory>
#include <ostream>
#include <vector>

// The values of one state (current or new) of every node. The two states
// are interleaved per node in the Dag, so that reading a node's current and
// new value, as every incremental eval does, costs one cache line.
class ValueView {
public:
    explicit ValueView(const long long* base) : base(base) {}
    long long operator[](unsigned int node) const { return base[2 * static_cast<std::size_t>(node)]; }

private:
    const long long* base;
};

// One search thread's graph: the changing part over shared fixed fields.
// Values are flat arrays by node number: `current` is the committed state,
// `new` the state a move is evaluating. Not thread-safe; one Dag per thread.
class Solution;

class Dag {
public:
    explicit Dag(const DagFixedFields& fixedFields);
    ~Dag();
    Dag(const Dag&) = delete;
    Dag& operator=(const Dag&) = delete;

    // Computes every node's value from the variables' current values (set
    // beforehand, 0 by default) and sets up the propagation. Once only.
    void init();
    bool isInit() const { return initialized; }
    void callNodesInit();
    // Throws KernelException on the first node that is not consistent.
    void check() const;
    void printStats(std::ostream* out) const;

    const DagFixedFields& getFixedFields() const { return fixed; }
    Propagation& getPropagation() { return propagation; }
    const Propagation& getPropagation() const { return propagation; }
    Node* getNode(unsigned int node) const { return nodes[node]; }

    long long currentValue(unsigned int node) const { return values[2 * static_cast<std::size_t>(node)]; }
    long long newValue(unsigned int node) const { return values[2 * static_cast<std::size_t>(node) + 1]; }
    ValueView currentValuesData() const { return ValueView(values.data()); }
    ValueView newValuesData() const { return ValueView(values.data() + 1); }
    void setCurrentValue(unsigned int node, long long value) { values[2 * static_cast<std::size_t>(node)] = value; }
    void setNewValue(unsigned int node, long long value) { values[2 * static_cast<std::size_t>(node) + 1] = value; }

    // Stored solutions (defined with Solution). A registered solution is told
    // of every committed variable change so it can be saved incrementally.
    void addSolutionToNotify(Solution& solution);
    void removeSolutionToNotify(Solution& solution);
    void saveSolution(Solution& solution) const;
    void saveSolutionIncrementally(Solution& solution) const;
    // False when the stored values cannot be evaluated (a division by zero
    // on the way): the graph then keeps its previous state.
    bool loadSolution(const Solution& solution);

    // The per-node flag of nodes scheduled in the current move.
    bool isModified(unsigned int node) const { return modifiedFlags[node] != 0; }
    void setModified(unsigned int node) { modifiedFlags[node] = 1; }
    void clearModified(unsigned int node) { modifiedFlags[node] = 0; }
    // Asks for a node's value and flag ahead of their use, where a move
    // weighs several nodes scattered over a large graph.
    void prefetch(unsigned int node) const {
        __builtin_prefetch(&values[2 * static_cast<std::size_t>(node)]);
        __builtin_prefetch(&modifiedFlags[node]);
    }
    // The first stage of reaching a node's object: its pointer and flag;
    // the second, once the pointer is near: the object and the values.
    void prefetchNodePointer(unsigned int node) const {
        __builtin_prefetch(&nodes[node]);
        __builtin_prefetch(&modifiedFlags[node]);
    }
    void prefetchNodeObject(unsigned int node) const {
        __builtin_prefetch(nodes[node]);
        __builtin_prefetch(&values[2 * static_cast<std::size_t>(node)]);
    }

private:
    void mallocNodes();
    void saveObjectives(Solution& solution) const;

    const DagFixedFields& fixed;
    Propagation propagation;
    std::vector<Node*> nodes;
    std::vector<long long> values;  // current and new value of each node, interleaved
    std::vector<unsigned char> modifiedFlags;
    ObjectsAllocatorPool<Node> statelessNodes;
    std::vector<std::unique_ptr<Node>> statefulNodes;
    bool initialized = false;
};
