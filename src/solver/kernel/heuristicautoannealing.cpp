#include "solver/kernel/heuristicautoannealing.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/kernelconstants.h"

#include <algorithm>
#include <chrono>
#include <cmath>

HeuristicAutoAnnealing::HeuristicAutoAnnealing(Dag* dag)
    : Heuristic(dag),
      objectiveWindows(dag->getFixedFields().objectives().size(), std::vector<long long>(1, 0)),
      windowAverages(dag->getFixedFields().objectives().size(), 0.0),
      meanDegradations(dag->getFixedFields().objectives().size(), 0.0) {}

namespace {
// Measured on the G-set graphs (3 million iterations, one thread): from 0.4
// to 0.01 of the mean degradation over sweeps of 2000 moves per decision,
// cuts came 0.24 % from the best known, against 1.0 % with the window.
const double TEMPERATURE_START = 0.4, TEMPERATURE_END = 0.01;
// How much of the running mean of the degradations the newest one makes.
const double DEGRADATION_RATE = 1.0 / 1024;
}  // namespace

double HeuristicAutoAnnealing::relativeTemperature() const {
    const double sweep = static_cast<double>(temperatureSweep) *
                         std::max(1u, dag->getFixedFields().nbVariables());
    const double phase = std::fmod(static_cast<double>(nbIterations), sweep) / sweep;
    return TEMPERATURE_START * std::pow(TEMPERATURE_END / TEMPERATURE_START, phase);
}

void HeuristicAutoAnnealing::setObjectiveWindowSize(int level) {
    objectiveWindowSize = level + 1;
    for (std::vector<long long>& window : objectiveWindows) window.assign(objectiveWindowSize, 0);
}

void HeuristicAutoAnnealing::addObjective(long long value, int objective) {
    long long& entry = objectiveWindows[objective][slot()];
    windowAverages[objective] += static_cast<double>(value) / objectiveWindowSize -
                                 static_cast<double>(entry) / objectiveWindowSize;
    entry = value;
}

long long HeuristicAutoAnnealing::getLastObjective(int objective) const {
    return objectiveWindows[objective][slot()];
}

unsigned long long HeuristicAutoAnnealing::estimateIterationNumber() const {
    if (iterationLimit < static_cast<unsigned long long>(QXLimits::NO_ITERATION_LIMIT)) return iterationLimit;
    // The speed so far, over the time elapsed plus a second, times the limit.
    typedef std::chrono::duration<double> Seconds;
    double elapsed = std::chrono::duration_cast<Seconds>(clock.lastElapsed()).count();
    double limit = std::chrono::duration_cast<Seconds>(timeLimit).count();
    return static_cast<unsigned long long>(static_cast<double>(nbIterations) / (elapsed + 1) * limit);
}

void HeuristicAutoAnnealing::iterate() {
    // Half the time limit has passed, as of the clock's last reading (none
    // without a limit).
    if (estimatedIterationNumber == 0 && timeLimit != SearchClock::NO_LIMIT && clock.lastElapsed() > timeLimit / 2)
        estimatedIterationNumber = estimateIterationNumber();
    if (estimatedIterationNumber > 0 && objectiveWindowSize > 1 &&
        static_cast<double>(nbIterations) >= static_cast<double>(estimatedIterationNumber) * degradingIterationsLimit) {
        objectiveWindowSize = 1;
        annealingEnabled = false;
    }
    if (nbIterationsWithoutImprovement > plateauLength) annealingEnabled = false;

    currentMove = drawMove();
    if (applyMove(currentMove) != MoveImproved) {
        // A move that could not be built ends its iteration uncounted.
        if (moveBuilt) ++nbIterationsWithoutImprovement;
        return;
    }
    recordImprovement();
    updateBestSolution();
}

void HeuristicAutoAnnealing::recordImprovement() {
    ++nbWindowImprovements;
    nbIterationsWithoutImprovement = 0;
    annealingEnabled = true;
    const DagFixedFields& fixed = dag->getFixedFields();
    for (unsigned int i = 0; i < objectiveWindows.size(); ++i)
        addObjective(dag->currentValue(fixed.objectives()[i]), static_cast<int>(i));
}

void HeuristicAutoAnnealing::restarted() { recordImprovement(); }

MoveExitCode HeuristicAutoAnnealing::decide(bool evaluated) {
    if (!evaluated) return MoveInfeasible;
    const Propagation& propagation = dag->getPropagation();
    if (desactivatedConstraintsExist()) {
        if (isConstraintsImproved())
            // A cost against a count: the two agree for unit-cost constraints.
            return static_cast<unsigned long long>(propagation.getTViolatedConstraintsCost()) <
                           bestSolution.getNbViolatedConstraints()
                       ? MoveImproved
                       : MoveAccepted;
        return isConstraintsDegraded() ? MoveRejected : MoveAccepted;
    }
    unsigned int o = optimizedObjective;
    for (unsigned int i = 0; i < o; ++i) {
        if (isObjectiveDegraded(i)) return MoveRejected;
        if (isObjectiveImproved(i)) return MoveImproved;
    }
    const DagFixedFields& fixed = dag->getFixedFields();
    unsigned int node = fixed.objectives()[o];
    bool maximize = fixed.directions()[o] == Maximize;
    long long c = dag->newValue(node), s = dag->currentValue(node), best = bestSolution.getObjectiveValues()[o];
    if (maximize ? c > best : c < best) return MoveImproved;
    if (c == best) return MoveAccepted;
    if (maximize ? c > s : c < s) return MoveAccepted;

    if (temperatureSweep != 0) {
        const double degradation = maximize ? static_cast<double>(s) - static_cast<double>(c)
                                            : static_cast<double>(c) - static_cast<double>(s);
        double& mean = meanDegradations[o];
        mean = mean == 0 ? degradation : mean + (degradation - mean) * DEGRADATION_RATE;
        if (quickrand.nextFloat() >= std::exp(-degradation / (relativeTemperature() * mean))) return MoveRejected;
        ++nbAcceptedDegradations;
        return MoveAccepted;
    }

    if (nbWindowImprovements < objectiveWindowSize || objectiveWindowSize < 2 || !annealingEnabled)
        return isObjectiveDegraded(o) ? MoveRejected : MoveAccepted;
    double average = windowAverages[o];
    double latest = static_cast<double>(objectiveWindows[o][slot()]);
    double value = static_cast<double>(c);
    if (maximize ? average > value : average < value) return MoveRejected;
    float u = quickrand.nextFloat();
    // At or beyond the latest improvement the probability is 1; said
    // directly so that a window whose average equals it divides by nothing.
    bool beyondLatest = maximize ? value >= latest : value <= latest;
    if (beyondLatest || std::exp(std::log(0.01) * (value - latest) / (average - latest)) >= u) {
        ++nbAcceptedDegradations;
        return MoveAccepted;
    }
    return MoveRejected;
}
