#pragma once

#include "solver/kernel/bipartition.h"
#include "solver/kernel/daglistener.h"
#include "solver/move/autonomousfixedfields.h"

#include <vector>

class Dag;
class Quickrand;

// One thread's live view of the root sums: for each, which of its root
// bools would increase it if flipped now (In) and which would decrease it
// (Out). Kept current after every commit from the move's changed variables.
class AutonomousStructure : public DagListener {
public:
    AutonomousStructure(Dag& dag, const AutonomousFixedFields& fixedFields);
    ~AutonomousStructure() override;
    AutonomousStructure(const AutonomousStructure&) = delete;
    AutonomousStructure& operator=(const AutonomousStructure&) = delete;

    void notifyCommit() override;

    const AutonomousFixedFields& getFixedFields() const { return fixedFields; }
    Bipartition& increasingBools(unsigned int sum) { return increasing[sum]; }
    const Bipartition& increasingBools(unsigned int sum) const { return increasing[sum]; }

    // The first objective not at the best value its node can take.
    bool getObjToBeImproved(const Dag& dag, unsigned int nbObjectives, unsigned int& objective) const;
    bool pickImprovingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean) const;
    bool pickImprovingBooleanForObjective(const Dag& dag, Quickrand& rand, unsigned int objective,
                                          unsigned int& boolean) const;
    // A root bool of the sum at `entry` of v's root sums moving that sum the
    // other way from v; NO_NODE when the sum has none.
    unsigned int getOppositeBool(unsigned int variable, unsigned int entry, Quickrand& rand) const;

private:
    void setDirection(unsigned int sum, unsigned int position, long long value);

    Dag& dag;
    const AutonomousFixedFields& fixedFields;
    std::vector<Bipartition> increasing;
};
