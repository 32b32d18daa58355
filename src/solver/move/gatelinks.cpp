#include "solver/move/gatelinks.h"

#include "solver/kernel/dagfixedfields.h"
#include "solver/move/autonomousfixedfields.h"

#include <algorithm>
#include <utility>

unsigned int GateLinks::gateBoolean(const DagFixedFields& fixed, unsigned int node, long long& factor) {
    if (fixed.type(node) == Boolean) {
        factor = 1;
        return node;
    }
    if (fixed.type(node) == Scalar && fixed.type(fixed.child(node, 0)) == Boolean && fixed.constant(node) > 0) {
        factor = fixed.constant(node);
        return fixed.child(node, 0);
    }
    return NONE;
}

bool GateLinks::isPlaced(const AutonomousFixedFields& sums, const DagFixedFields& fixed, unsigned int boolean) {
    for (const RootBool::Entry& entry : sums.getRootBool(fixed.variableIndex(boolean)).constrainedEntries())
        if (entry.coefficient > 0 && sums.getRange(entry.sum).ranged && sums.getRange(entry.sum).lowest > 0)
            return true;
    return false;
}

GateLinks::GateLinks(const DagFixedFields& fixed, const AutonomousFixedFields& sums)
    : gateIndices(fixed.nbBooleans(), NONE), capacityIndices(sums.getNbRootSums(), NONE) {
    // (gate, gated) pairs from the constraints "x <= g" and "sum <= C * g",
    // either way round.
    std::vector<std::pair<unsigned int, unsigned int>> links;
    std::vector<std::pair<unsigned int, Capacity>> rows;
    for (unsigned int c : fixed.constraints()) {
        NodeType type = fixed.type(c);
        if (type != Leq && type != Geq) continue;
        unsigned int low = fixed.child(c, type == Leq ? 0 : 1), high = fixed.child(c, type == Leq ? 1 : 0);
        long long factor = 0;
        unsigned int gate = gateBoolean(fixed, high, factor);
        if (gate == NONE || gate == low) continue;
        if (fixed.type(low) == Boolean) {
            links.emplace_back(gate, low);
            continue;
        }
        unsigned int sum = sums.rootSumIndex(low);
        if (sum == KernelConstants::NO_NODE) continue;
        const RootSum& row = sums.getRootSums()[sum];
        bool gatedOnly = std::find(row.booleans.begin(), row.booleans.end(), gate) == row.booleans.end();
        for (long long coefficient : row.coefficients) gatedOnly = gatedOnly && coefficient > 0;
        // A row that another gate bounds already keeps its first one.
        if (!gatedOnly || capacityIndices[sum] != NONE) continue;
        capacityIndices[sum] = static_cast<unsigned int>(rows.size());
        rows.push_back({sum, {gate, factor}});
        for (unsigned int boolean : row.booleans) links.emplace_back(gate, boolean);
    }
    // A max (an or) over booleans that only feeds objectives is a gate of
    // its own, open while some of them is 1: the "colour used" of a model
    // that counts max(x[0][c], ..., x[n-1][c]). Only over booleans that
    // an assignment's rows must place, the ones a close can re-place.
    for (unsigned int node = 0; node < fixed.nbNodes(); ++node) {
        if ((fixed.type(node) != Max && fixed.type(node) != Or) || fixed.nbChilds(node) < 2 ||
            sums.isUnderConstraint(node))
            continue;
        bool group = true;
        for (unsigned int i = 0; i < fixed.nbChilds(node) && group; ++i)
            group = fixed.type(fixed.child(node, i)) == Boolean && isPlaced(sums, fixed, fixed.child(node, i));
        if (!group) continue;
        for (unsigned int i = 0; i < fixed.nbChilds(node); ++i) links.emplace_back(node, fixed.child(node, i));
    }
    std::sort(links.begin(), links.end());
    links.erase(std::unique(links.begin(), links.end()), links.end());
    // Gates in node order, each with its gated booleans in node order.
    gatedOffsets.push_back(0);
    std::vector<unsigned int> counts(fixed.nbBooleans() + 1, 0);
    for (std::size_t i = 0; i < links.size(); ++i) {
        if (i == 0 || links[i].first != links[i - 1].first) {
            if (i != 0) gatedOffsets.push_back(static_cast<unsigned int>(gatedNodes.size()));
            bool group = fixed.type(links[i].first) != Boolean;
            if (!group) gateIndices[fixed.variableIndex(links[i].first)] = static_cast<unsigned int>(gateNodes.size());
            gateNodes.push_back(links[i].first);
            groups.push_back(group);
        }
        gatedNodes.push_back(links[i].second);
        ++counts[fixed.variableIndex(links[i].second) + 1];
    }
    if (!links.empty()) gatedOffsets.push_back(static_cast<unsigned int>(gatedNodes.size()));
    for (unsigned int r = 0; r < fixed.nbBooleans(); ++r) counts[r + 1] += counts[r];
    gatesOffsets = counts;
    gatesOfBoolean.resize(links.size());
    for (unsigned int gate = 0; gate < gateNodes.size(); ++gate)
        for (unsigned int boolean : gated(gate)) gatesOfBoolean[counts[fixed.variableIndex(boolean)]++] = gate;
    for (const auto& row : rows) {
        capacities.push_back(row.second);
        capacities.back().gate = gateIndices[fixed.variableIndex(row.second.gate)];
    }
}
