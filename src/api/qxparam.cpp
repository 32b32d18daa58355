#include "api/qxparam.h"

#include "api/apierrors.h"
#include "api/quarrix.h"
#include "api/qxmodel.h"
#include "api/qxphase.h"

namespace {
const char* const UNIT = "src/api/qxparam";
}

QXParam::QXParam(Quarrix* solver_) : solver(solver_) {}

void QXParam::setSeed(int value) {
    ApiErrors::checkStopped(solver, QX_HERE);
    if (value < 0) ApiErrors::fail(QX_HERE, ApiErrors::notPositive("seed"));
    seed = value;
}

void QXParam::setNbThreads(int value) {
    ApiErrors::checkStopped(solver, QX_HERE);
    if (value <= 0) ApiErrors::fail(QX_HERE, ApiErrors::notStrictlyPositive("nbThreads"));
    if (value > 1024) ApiErrors::fail(QX_HERE, "The number of threads cannot exceed 1024.");
    nbThreads = value;
}

void QXParam::setAnnealingLevel(int value) {
    ApiErrors::checkStopped(solver, QX_HERE);
    if (value < 0 || value > 9)
        ApiErrors::fail(QX_HERE, "The annealing level size must be an integer between 0 and 9.");
    annealingLevel = value;
}

void QXParam::setVerbosity(int value) {
    ApiErrors::checkStopped(solver, QX_HERE);
    if (value < 0) ApiErrors::fail(QX_HERE, ApiErrors::notPositive("verbosity"));
    verbosity = value;
}

void QXParam::setTimeBetweenDisplays(int value) {
    ApiErrors::checkStopped(solver, QX_HERE);
    if (value <= 0)
        ApiErrors::fail(QX_HERE, ApiErrors::notStrictlyPositive("timeBetweenDisplays"));
    if (value > 65535)
        ApiErrors::fail(QX_HERE, "The time between displays cannot exceed 65535.");
    timeBetweenDisplays = value;
}

void QXParam::setObjectiveBound(int i, int64_t bound) {
    ApiErrors::checkStopped(solver, QX_HERE);
    ApiErrors::checkIndex(i, static_cast<int64_t>(objectiveBounds.size()), "objective",
                          QX_HERE);
    objectiveBounds[i] = bound;
}

void QXParam::setAdvancedParam(const std::string& name, int value) {
    ApiErrors::checkStopped(solver, QX_HERE);
    advancedParams[name] = value;
}

int QXParam::getSeed() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return seed;
}

int QXParam::getNbThreads() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return nbThreads;
}

int QXParam::getAnnealingLevel() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return annealingLevel;
}

int QXParam::getVerbosity() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return verbosity;
}

int QXParam::getTimeBetweenDisplays() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return timeBetweenDisplays;
}

int64_t QXParam::getObjectiveBound(int i) const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    ApiErrors::checkIndex(i, static_cast<int64_t>(objectiveBounds.size()), "objective",
                          QX_HERE);
    return objectiveBounds[i];
}

int QXParam::getAdvancedParam(const std::string& name) const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    auto found = advancedParams.find(name);
    if (found == advancedParams.end())
        ApiErrors::fail(QX_HERE, "Advanced parameter '" + name + "' does not exist.");
    return found->second;
}

int QXParam::getAdvancedParam(const std::string& name, int defaultValue) const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    auto found = advancedParams.find(name);
    return found == advancedParams.end() ? defaultValue : found->second;
}

int QXParam::totalTimeLimit() const {
    if (solver->phases.empty()) return 2147483647;
    int64_t total = 0;
    for (const auto& phase : solver->phases) {
        total += phase->timeLimit;
        if (total > 2147483647) return 2147483647;
    }
    return static_cast<int>(total);
}

int64_t QXParam::totalIterationLimit() const {
    if (solver->phases.empty()) return INT64_MAX;
    int64_t total = 0;
    for (const auto& phase : solver->phases) {
        // Limits are never negative, so only the upper end can overflow.
        if (phase->iterationLimit > INT64_MAX - total) return INT64_MAX;
        total += phase->iterationLimit;
    }
    return total;
}

int QXParam::getTotalTimeLimit() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return totalTimeLimit();
}

int64_t QXParam::getTotalIterationLimit() const {
    ApiErrors::checkPausedOrStopped(solver, QX_HERE);
    return totalIterationLimit();
}

void QXParam::resizeObjectiveArrays(int nbObjectives) {
    const QXModel* model = solver->model.get();
    for (size_t i = objectiveBounds.size(); i < static_cast<size_t>(nbObjectives); ++i) {
        const QXExpression* objective = model->objectives[i];
        if (objective->op == QXOperator::Const)
            objectiveBounds.push_back(objective->value);
        else if (model->directions[i] == QXObjectiveDirection::Maximize)
            objectiveBounds.push_back(INT64_MAX);
        else
            objectiveBounds.push_back(INT64_MIN);
    }
}

std::string QXParam::toString() const {
    ApiErrors::checkNotRunning(solver, QX_HERE);
    const int time = totalTimeLimit();
    const int64_t iterations = totalIterationLimit();
    std::string text = "Param: \n";
    text += time == 2147483647 ? "  no time limit, "
                               : "  time limit = " + std::to_string(time) + " sec, ";
    text += iterations == INT64_MAX ? "no iteration limit"
                                    : "iteration limit = " + std::to_string(iterations);
    text += "\n  seed = " + std::to_string(seed) + ", nb threads = " +
            std::to_string(nbThreads) + ", annealing level = " +
            std::to_string(annealingLevel) + "\n\nObjectives:";
    const QXModel* model = solver->model.get();
    for (size_t i = 0; i < objectiveBounds.size(); ++i) {
        const int64_t bound = objectiveBounds[i];
        text += "\n  Obj " + std::to_string(i) + ": " +
                (model->directions[i] == QXObjectiveDirection::Maximize ? "maximize"
                                                                        : "minimize") +
                ", " +
                (bound == INT64_MAX || bound == INT64_MIN ? "no bound"
                                                          : "bound = " + std::to_string(bound));
    }
    return text;
}
