#pragma once

#include "solver/kernel/heuristiccallback.h"
#include "solver/kernel/quickrand.h"

#include <vector>

class Heuristic;
class Move;

// Re-weights a heuristic's move lottery every filtering period from the
// moves' success counts, keeping the total of the util rates, and moves a
// share of that total between random moves so a starved kind can return.
// Its generator always starts from state 0: the filter decides the same way
// in every run and every thread.
class MoveFilter : public HeuristicCallback {
public:
    explicit MoveFilter(Heuristic* heuristic) : heuristic(heuristic) {}

    void heuristicStarted() override;
    void iterate() override;
    void heuristicEnded() override {}

    void adjustUtilRates();
    void explore();
    void changeUtilRates(const std::vector<Move*>& list, unsigned int count, int delta);
    unsigned int sumWeights() const;
    unsigned int sumAccepted() const;
    unsigned int sumImprovements() const;

    void setFilteringPeriod(unsigned int period) { filteringPeriod = period; }
    unsigned int getFilteringPeriod() const { return filteringPeriod; }
    void setExplorationEnabled(bool enabled) { explorationEnabled = enabled; }
    bool isExplorationEnabled() const { return explorationEnabled; }

private:
    Heuristic* heuristic;
    unsigned int filteringPeriod = 10000;
    // 64-bit like the iteration count: a phase may run beyond 2^32
    // iterations, and the filter must keep its period there.
    unsigned long long lastFilteringIteration = 0;
    unsigned long long nextFilteringIteration = 10000;
    unsigned int totalUtilRate = 0;
    bool explorationEnabled = true;
    Quickrand quickrand;
    // Scratch lists of adjustUtilRates, kept between filterings.
    std::vector<Move*> raise;
    std::vector<Move*> lower;
};
