#pragma once

#include <vector>

class AutonomousFixedFields;
class DagFixedFields;

// Booleans that gate others: a constraint `x <= g` between two booleans
// (x may be 1 only while g is), or a capacity row `sum <= C * g` over
// booleans with positive coefficients (the whole row is empty while g is
// 0). These are the "site open", "colour used", "bin used" booleans of
// textbook models: a flip of one side alone is refused or costs, while
// closing a gate together with re-placing what it held, or opening one
// together with what it serves better, keeps the links whole.
// A group gate is a max (or an or) of booleans that only objectives read,
// each of them placed by a row that must hold some: it has no boolean of
// its own and is open while one of its booleans is 1.
class GateLinks {
public:
    struct Span {
        const unsigned int* first;
        const unsigned int* last;
        const unsigned int* begin() const { return first; }
        const unsigned int* end() const { return last; }
        unsigned int size() const { return static_cast<unsigned int>(last - first); }
    };
    // A root sum bounded by C times a gate.
    struct Capacity {
        unsigned int gate;
        long long capacity;
    };

    GateLinks(const DagFixedFields& fixed, const AutonomousFixedFields& sums);

    unsigned int size() const { return static_cast<unsigned int>(gateNodes.size()); }
    bool empty() const { return gateNodes.empty(); }
    // The gate's boolean, or the max or or node of a group gate.
    unsigned int gateNode(unsigned int gate) const { return gateNodes[gate]; }
    bool isGroup(unsigned int gate) const { return groups[gate] != 0; }
    // The boolean nodes it gates.
    Span gated(unsigned int gate) const { return span(gatedNodes, gatedOffsets, gate); }
    // The gates of a boolean (by rank), as gate indexes.
    Span gatesOf(unsigned int booleanRank) const { return span(gatesOfBoolean, gatesOffsets, booleanRank); }
    // The gate index of a boolean (by rank), NO_NODE when it gates nothing
    // (group gates have no boolean).
    unsigned int gateOf(unsigned int booleanRank) const { return gateIndices[booleanRank]; }
    // The capacity that bounds a root sum through a gate, nullptr if none.
    const Capacity* capacityOf(unsigned int sum) const {
        return capacityIndices[sum] == NONE ? nullptr : &capacities[capacityIndices[sum]];
    }

private:
    static constexpr unsigned int NONE = 4294967295u;
    static Span span(const std::vector<unsigned int>& items, const std::vector<unsigned int>& offsets,
                     unsigned int i) {
        return {items.data() + offsets[i], items.data() + offsets[i + 1]};
    }
    // The gate of `node` when it is a boolean or a positive multiple of one
    // (with that multiple), NONE otherwise.
    // Some row of positive coefficients must hold the boolean or others:
    // a row a boolean that leaves can be re-placed in.
    static bool isPlaced(const AutonomousFixedFields& sums, const DagFixedFields& fixed, unsigned int boolean);
    static unsigned int gateBoolean(const DagFixedFields& fixed, unsigned int node, long long& factor);

    std::vector<unsigned int> gateNodes;
    std::vector<char> groups;
    std::vector<unsigned int> gatedOffsets;
    std::vector<unsigned int> gatedNodes;
    std::vector<unsigned int> gatesOffsets;
    std::vector<unsigned int> gatesOfBoolean;
    std::vector<unsigned int> gateIndices;
    std::vector<Capacity> capacities;
    std::vector<unsigned int> capacityIndices;
};
