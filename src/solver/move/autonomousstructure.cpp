#include "solver/move/autonomousstructure.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"

#include <algorithm>
#include <utility>

AutonomousStructure::AutonomousStructure(Dag& dag, const AutonomousFixedFields& fixedFields)
    : dag(dag), fixedFields(fixedFields), increasing(fixedFields.getNbRootSums()),
      shifts(fixedFields.getNbRootSums()) {
    const std::vector<RootSum>& sums = fixedFields.getRootSums();
    const DagFixedFields& fixed = dag.getFixedFields();
    firstOrdered.resize(sums.size());
    std::size_t total = 0;
    for (unsigned int s = 0; s < sums.size(); ++s) {
        firstOrdered[s] = total;
        total += sums[s].booleans.size();
    }
    orderedBlocks.resize(total);
    for (unsigned int s = 0; s < sums.size(); ++s) {
        // The bipartition starts as the identity: places are positions.
        for (unsigned int j = 0; j < sums[s].booleans.size(); ++j)
            orderedBlocks[firstOrdered[s] + j] = fixedFields.blockOf(fixed.variableIndex(sums[s].booleans[j]));
        increasing[s].init(static_cast<unsigned int>(sums[s].booleans.size()));
        for (unsigned int j = 0; j < sums[s].booleans.size(); ++j)
            setDirection(s, j, dag.currentValue(sums[s].booleans[j]));
        shifts.setRoom(s, roomOf(s));
    }
    dag.getPropagation().connectListener(this);
}

AutonomousStructure::~AutonomousStructure() { dag.getPropagation().disconnectListener(this); }

void AutonomousStructure::setDirection(unsigned int sum, unsigned int position, long long value) {
    // Flipping from 0 adds the coefficient, flipping from 1 removes it.
    bool up = (value == 0) == (fixedFields.getRootSums()[sum].coefficientAt(position) > 0);
    Bipartition& bools = increasing[sum];
    const unsigned int from = bools.getPosition(position);
    if (up) bools.setIn(position);
    else bools.setOut(position);
    // A move between the parts swaps two places: their blocks follow.
    const unsigned int to = bools.getPosition(position);
    if (from != to) std::swap(orderedBlocks[firstOrdered[sum] + from], orderedBlocks[firstOrdered[sum] + to]);
}

SumRoom AutonomousStructure::roomOf(unsigned int sum) const {
    const long long MIN = -MAX_EXCESS - 1;
    if (sum < fixedFields.getNbFreeRootSums()) return {MIN, MAX_EXCESS, 0, false};
    const SumRange& range = fixedFields.getRange(sum);
    if (!range.ranged) return {0, 0, 0, false};
    auto clamp = [&](__int128 v) { return v > MAX_EXCESS ? MAX_EXCESS : v < MIN ? MIN : static_cast<long long>(v); };
    __int128 committed = dag.currentValue(range.node);
    SumRoom room{clamp(range.lowest - committed), clamp(range.highest - committed), 0, !range.followsBooleans};
    room.base = room.low > 0 ? room.low : room.high < 0 ? clamp(-static_cast<__int128>(room.high)) : 0;
    return room;
}

void AutonomousStructure::notifyCommit() {
    const DagFixedFields& fixed = dag.getFixedFields();
    for (unsigned int node : dag.getPropagation().getModifiedVariables()) {
        if (fixed.type(node) != Boolean) continue;
        long long value = dag.currentValue(node);
        const RootBool& rootBool = fixedFields.getRootBool(fixed.variableIndex(node));
        for (const RootBool::Entry& entry : rootBool.getEntries()) setDirection(entry.sum, entry.position, value);
        for (const RootBool::Entry& entry : rootBool.constrainedEntries()) shifts.setRoom(entry.sum, roomOf(entry.sum));
    }
}

bool AutonomousStructure::getObjToBeImproved(const Dag& dag, unsigned int nbObjectives,
                                             unsigned int& objective) const {
    const DagFixedFields& fixed = dag.getFixedFields();
    for (unsigned int i = 0; i < nbObjectives; ++i) {
        unsigned int node = fixed.objectives()[i];
        long long value = dag.currentValue(node);
        bool atBound = fixed.directions()[i] == Maximize ? value >= fixed.upperBound(node)
                                                          : value <= fixed.lowerBound(node);
        if (!atBound) {
            objective = i;
            return true;
        }
    }
    return false;
}

bool AutonomousStructure::pickImprovingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean) const {
    unsigned int objective = 0;
    if (!getObjToBeImproved(dag, static_cast<unsigned int>(dag.getFixedFields().objectives().size()), objective))
        return false;
    return pickImprovingBooleanForObjective(dag, rand, objective, boolean);
}

bool AutonomousStructure::pickImprovingBooleanForObjective(const Dag& dag, Quickrand& rand, unsigned int objective,
                                                           unsigned int& boolean) const {
    const DagFixedFields& fixed = dag.getFixedFields();
    if (const KeptScores* kept = dag.getPropagation().getKeptScores()) {
        const unsigned int picked = kept->pickImproving(objective, rand);
        if (picked == Bipartition::NONE) return false;
        if (picked != KeptScores::NOT_TARGETED) {
            boolean = fixed.variables()[picked];
            return true;
        }
    }
    unsigned int node = fixed.objectives()[objective];
    Node* object = dag.getNode(node);
    return fixed.directions()[objective] == Maximize ? object->findIncreasingBoolean(dag, rand, boolean, node)
                                                     : object->findDecreasingBoolean(dag, rand, boolean, node);
}

unsigned int AutonomousStructure::getOppositeBool(unsigned int variable, unsigned int entry, Quickrand& rand) const {
    const DagFixedFields& fixed = dag.getFixedFields();
    const RootBool::Entry& e = fixedFields.getRootBool(fixed.variableIndex(variable)).getEntries()[entry];
    const Bipartition& bools = increasing[e.sum];
    unsigned int position = bools.isIn(e.position) ? bools.getRandomOut(rand) : bools.getRandomIn(rand);
    if (position == Bipartition::NONE) return KernelConstants::NO_NODE;
    return fixedFields.getRootSums()[e.sum].booleans[position];
}
