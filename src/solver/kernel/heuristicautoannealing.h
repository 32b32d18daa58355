#pragma once

#include "solver/kernel/heuristic.h"

#include <vector>

// Annealing without a temperature: the values of the optimized objective at
// the latest improvements form a window, and a degrading move is accepted
// with a probability that falls from 1 at the latest improvement value to
// 0.01 at the window's average (and to 0 beyond it). After 90% of the
// estimated iterations, or on a long plateau, it becomes a descent.
class HeuristicAutoAnnealing : public Heuristic {
public:
    explicit HeuristicAutoAnnealing(Dag* dag);
    void iterate() override;
    MoveExitCode decide(bool evaluated) override;

    // The window size becomes level + 1; every window is zeroed.
    void setObjectiveWindowSize(int level);
    int getObjectiveWindowSize() const { return objectiveWindowSize; }
    void setPlateauLength(unsigned long long length) { plateauLength = length; }
    void setDegradingIterationsLimit(double limit) { degradingIterationsLimit = limit; }
    unsigned long long getPlateauLength() const { return plateauLength; }
    double getDegradingIterationsLimit() const { return degradingIterationsLimit; }
    // A temperature instead of the window (0: the window): degrading moves
    // of the optimized objective are accepted with probability exp(-d / T),
    // where T cools geometrically from TEMPERATURE_START to TEMPERATURE_END
    // times the mean degradation of the moves tried, over sweeps of `sweep`
    // moves per decision, and starts again at each sweep.
    void setTemperatureSweep(unsigned int sweep) { temperatureSweep = sweep; }
    // The temperature at this iteration, for a mean degradation of 1.
    double relativeTemperature() const;
    // Records a value in the objective's window at the current slot.
    void addObjective(long long value, int objective);
    long long getLastObjective(int objective) const;
    double getAverageInWindow(unsigned int objective) const { return windowAverages[objective]; }
    unsigned long long estimateIterationNumber() const;
    bool isAnnealingEnabled() const { return annealingEnabled; }
    unsigned int getNbAcceptedDegradations() const { return nbAcceptedDegradations; }

protected:
    // The new point counts as the latest improvement: degradations are
    // judged from it, not from the abandoned trajectory's values.
    void restarted() override;

private:
    // The window's bookkeeping of an improvement at the current point.
    void recordImprovement();
    unsigned int slot() const { return static_cast<unsigned int>(nbWindowImprovements % objectiveWindowSize); }

    Move* currentMove = nullptr;
    unsigned long long plateauLength = 1000000;
    double degradingIterationsLimit = 0.9;
    int objectiveWindowSize = 1;
    int nbWindowImprovements = 0;
    std::vector<std::vector<long long>> objectiveWindows;
    unsigned int nbIterationsWithoutImprovement = 0;
    unsigned int nbAcceptedDegradations = 0;
    std::vector<double> windowAverages;
    bool annealingEnabled = true;
    unsigned long long estimatedIterationNumber = 0;
    unsigned int temperatureSweep = 0;
    // Per objective, a running mean of the degradations that moves offered:
    // the temperature's scale, so that weights of any size cool alike.
    std::vector<double> meanDegradations;
};
