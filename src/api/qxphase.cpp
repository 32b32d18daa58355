#include "api/qxphase.h"

#include "api/apierrors.h"
#include "api/quarrix.h"
#include "api/qxmodel.h"
#include "api/qxstatistics.h"
#include "solver/kernel/constants.h"

namespace {
const char* const UNIT = "src/api/qxphase";
}

QXPhase::QXPhase(Quarrix* solver_)
    : solver(solver_),
      timeLimit(QXLimits::NO_TIME_LIMIT),
      iterationLimit(QXLimits::NO_ITERATION_LIMIT) {
    ApiErrors::checkStopped(solver, QX_HERE);
    optimizedObjective = solver->getModel()->getNbObjectives() - 1;
    statistics.reset(new QXStatistics(solver, this));
}

QXPhase::~QXPhase() = default;

void QXPhase::setTimeLimit(int seconds) {
    ApiErrors::checkStopped(solver, QX_HERE);
    if (seconds < 0) ApiErrors::fail(QX_HERE, ApiErrors::notPositive("timeLimit"));
    timeLimit = seconds;
}

void QXPhase::setIterationLimit(int64_t iterations) {
    ApiErrors::checkStopped(solver, QX_HERE);
    if (iterations < 0) ApiErrors::fail(QX_HERE, ApiErrors::notPositive("iterationLimit"));
    iterationLimit = iterations;
}

void QXPhase::setOptimizedObjective(int i) {
    ApiErrors::checkStopped(solver, QX_HERE);
    ApiErrors::checkIndex(i, solver->getModel()->getNbObjectives(), "objective", QX_HERE);
    optimizedObjective = i;
}

int QXPhase::getTimeLimit() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return timeLimit;
}

int64_t QXPhase::getIterationLimit() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return iterationLimit;
}

int QXPhase::getOptimizedObjective() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return optimizedObjective;
}

QXStatistics* QXPhase::getStatistics() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return statistics.get();
}

std::string QXPhase::toString() const {
    ApiErrors::checkNotRunning(solver, QX_HERE);
    std::string text = timeLimit == QXLimits::NO_TIME_LIMIT
                           ? "no time limit, "
                           : "time limit = " + std::to_string(timeLimit) + " sec, ";
    text += iterationLimit == QXLimits::NO_ITERATION_LIMIT
                ? "no iteration limit, "
                : "iteration limit = " + std::to_string(iterationLimit) + ", ";
    return text + "optimized objective = " + std::to_string(optimizedObjective);
}
