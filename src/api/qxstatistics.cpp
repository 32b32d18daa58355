#include "api/qxstatistics.h"

#include "api/apierrors.h"
#include "api/quarrix.h"
#include "api/qxphase.h"
#include "solver/kernel/heuristic.h"
#include "solver/kernel/constants.h"
#include "solver/kernel/threadenv.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <sstream>

namespace {

const char* const UNIT = "src/api/qxstatistics";

std::string formatPercent(double value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

// Adds without overflow: the phases of an idle solve hold "no limit" values.
template <typename T>
T saturatedAdd(T a, T b) {
    const T max = std::numeric_limits<T>::max();
    return a > max - b ? max : a + b;
}

// Percentages up to 0.1 are shown as "< 0.1%": the test is on the value
// rounded up to one decimal.
std::string roughPercent(const char* label, double value) {
    const double rounded = std::ceil(value * 10) / 10;
    if (rounded > 0.1) return std::string(label) + " = " + formatPercent(rounded) + "%, ";
    return std::string(label) + " < 0.1%, ";
}

}  // namespace

QXStatistics::QXStatistics(Quarrix* solver_, QXPhase* phase_) : solver(solver_), phase(phase_) {}

double QXStatistics::percent(int64_t count, int64_t moves) {
    return moves == 0 ? 0.0 : 100.0 * static_cast<double>(count) / static_cast<double>(moves);
}

int QXStatistics::getRunningTime() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return runningTime;
}

int64_t QXStatistics::getNbIterations() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return nbIterations;
}

int64_t QXStatistics::getNbMoves() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return nbMoves;
}

int64_t QXStatistics::getNbAcceptedMoves() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return nbAccepted;
}

int64_t QXStatistics::getNbImprovingMoves() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return nbImprovements;
}

int64_t QXStatistics::getNbInfeasibleMoves() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return nbInfeasibles;
}

int64_t QXStatistics::getNbRejectedMoves() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return nbMoves - nbAccepted;
}

double QXStatistics::getPercentAcceptedMoves() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return percent(nbAccepted, nbMoves);
}

double QXStatistics::getPercentImprovingMoves() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return percent(nbImprovements, nbMoves);
}

double QXStatistics::getPercentInfeasibleMoves() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return percent(nbInfeasibles, nbMoves);
}

double QXStatistics::getPercentRejectedMoves() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return percent(nbMoves - nbAccepted, nbMoves);
}

void QXStatistics::init() {
    runningTime = 0;
    runningNanoseconds = 0;
    nbIterations = nbMoves = nbAccepted = nbImprovements = nbInfeasibles = 0;
}

void QXStatistics::update() {
    if (phase)
        updatePhase();
    else
        updateGlobal();
}

// Over the threads' heuristics: the slowest thread gives the time and the
// iterations, the moves are summed. With no thread: no limit reached, no
// move.
void QXStatistics::updatePhase() {
    runningTime = QXLimits::NO_TIME_LIMIT;
    runningNanoseconds = std::numeric_limits<int64_t>::max();
    nbIterations = QXLimits::NO_ITERATION_LIMIT;
    nbMoves = nbAccepted = nbImprovements = nbInfeasibles = 0;
    for (const auto& env : solver->threadEnvs) {
        const Heuristic& h = *env->getHeuristic();
        runningTime = std::min<int32_t>(runningTime, static_cast<int32_t>(h.getRunningTime()));
        runningNanoseconds = std::min<int64_t>(
            runningNanoseconds, std::chrono::duration_cast<std::chrono::nanoseconds>(h.getRunningDuration()).count());
        nbIterations = std::min<int64_t>(nbIterations, static_cast<int64_t>(h.getNbIterations()));
        nbMoves = saturatedAdd(nbMoves, static_cast<int64_t>(h.getNbIterations()));
        nbAccepted = saturatedAdd(nbAccepted, static_cast<int64_t>(h.getNbAccepted()));
        nbImprovements = saturatedAdd(nbImprovements, static_cast<int64_t>(h.getNbImprovements()));
        nbInfeasibles = saturatedAdd(nbInfeasibles, static_cast<int64_t>(h.getNbInfeasibles()));
    }
}

void QXStatistics::updateGlobal() {
    init();
    for (const auto& each : solver->phases) {
        const QXStatistics& other = *each->statistics;
        runningTime = saturatedAdd(runningTime, other.runningTime);
        runningNanoseconds = saturatedAdd(runningNanoseconds, other.runningNanoseconds);
        nbIterations = saturatedAdd(nbIterations, other.nbIterations);
        nbMoves = saturatedAdd(nbMoves, other.nbMoves);
        nbAccepted = saturatedAdd(nbAccepted, other.nbAccepted);
        nbImprovements = saturatedAdd(nbImprovements, other.nbImprovements);
        nbInfeasibles = saturatedAdd(nbInfeasibles, other.nbInfeasibles);
    }
    // The other processes of a multi-process search, as of their last
    // exchange (zero otherwise).
    const Quarrix::Counters& others = solver->otherRanks;
    nbIterations = saturatedAdd(nbIterations, others.nbIterations);
    nbMoves = saturatedAdd(nbMoves, others.nbMoves);
    nbAccepted = saturatedAdd(nbAccepted, others.nbAccepted);
    nbImprovements = saturatedAdd(nbImprovements, others.nbImprovements);
    nbInfeasibles = saturatedAdd(nbInfeasibles, others.nbInfeasibles);
}

std::string QXStatistics::getInfo() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    ApiErrors::checkStarted(solver, QX_HERE);
    return infoText();
}

std::string QXStatistics::infoText() const {
    return "mov = " + std::to_string(nbMoves) + ", " +
           roughPercent("inf", percent(nbInfeasibles, nbMoves)) +
           roughPercent("acc", percent(nbAccepted, nbMoves)) +
           "imp = " + std::to_string(nbImprovements);
}

std::string QXStatistics::toString() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    const int64_t rejected = nbMoves - nbAccepted;
    return "running time = " + std::to_string(runningTime) + " sec" +
           ", nb iterations = " + std::to_string(nbIterations) +
           ", nb moves = " + std::to_string(nbMoves) +
           "\naccepted = " + std::to_string(nbAccepted) + " (" +
           formatPercent(percent(nbAccepted, nbMoves)) + "%)" +
           ", improving = " + std::to_string(nbImprovements) + " (" +
           formatPercent(percent(nbImprovements, nbMoves)) + "%)" +
           "\nrejected = " + std::to_string(rejected) + " (" +
           formatPercent(percent(rejected, nbMoves)) + "%)" +
           ", infeasible = " + std::to_string(nbInfeasibles) + " (" +
           formatPercent(percent(nbInfeasibles, nbMoves)) + "%)";
}
