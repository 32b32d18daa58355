#pragma once

class AutonomousFixedFields;
class Dag;
class Quickrand;

// The starting point of a search when the given values leave a constraint
// violated: every decision variable is visited once in random order and
// raised to 1 when that does not increase the number of violated
// constraints. Suits models whose constraints are met by choosing items.
class GreedySolution {
public:
    explicit GreedySolution(Quickrand* quickrand) : quickrand(quickrand) {}

    void setQuickrand(Quickrand* rand) { quickrand = rand; }
    Quickrand* getQuickrand() const { return quickrand; }
    // Runs the greedy pass even when the current values are feasible.
    void setSolutionForced(bool forced) { solutionForced = forced; }
    bool isSolutionForced() const { return solutionForced; }

    // True when the Dag ends with every constraint active (feasible).
    bool computeSolution(Dag* dag) const;
    // Where the model is a time-indexed schedule (IntervalRows), each job
    // takes, in the order of the latest start at which it still costs the
    // least, the boolean that overlaps the fewest jobs already placed, the
    // earliest of those: the jobs one after another, each at its cheapest
    // in that order. The other booleans of the jobs' rows go to 0. True
    // when the Dag ends feasible; every constraint is left inactive
    // otherwise, for computeSolution to go on from there.
    bool placeIntervals(Dag* dag, const AutonomousFixedFields& sums) const;

private:
    Quickrand* quickrand;
    bool solutionForced = false;
};
