#include "api/qxparam.h"

#include "api/apierrors.h"
#include "api/quarrix.h"
#include "api/qxmodel.h"
#include "api/qxphase.h"
#include "solver/kernel/constants.h"
#include "solver/kernel/searchparams.h"

namespace {
const char* const UNIT = "src/api/qxparam";
}

QXParam::QXParam(Quarrix* solver_)
    : solver(solver_),
      iterationLimit(QXLimits::NO_ITERATION_LIMIT),
      timeLimit(QXLimits::NO_TIME_LIMIT) {}

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

void QXParam::checkAdvancedParams() const { searchParams(); }

SearchParams QXParam::searchParams() const {
    SearchParams params;
    params.annealingLevel = annealingLevel;
    for (unsigned int p = 0; p < NB_ADVANCED_PARAMS; ++p) {
        const AdvancedParamInfo& info = ADVANCED_PARAMS[p];
        auto found = advancedParams.find(info.name);
        if (found == advancedParams.end()) continue;
        if (info.refusedOutside && (found->second < info.lowest || found->second > info.highest))
            ApiErrors::fail(QX_HERE, "Advanced parameter '" + std::string(info.name) +
                                         "' must be an integer between " + std::to_string(info.lowest) +
                                         " and " + std::to_string(info.highest) + ".");
        params.set(static_cast<AdvancedParam>(p), found->second);
    }
    params.objectiveBounds.assign(objectiveBounds.begin(), objectiveBounds.end());
    return params;
}

int QXParam::totalTimeLimit() const {
    const int nbPhases = static_cast<int>(solver->phases.size());
    return nbPhases == 0 ? QXLimits::NO_TIME_LIMIT : solver->computePhaseTimeLimit(nbPhases - 1);
}

int64_t QXParam::totalIterationLimit() const {
    const int nbPhases = static_cast<int>(solver->phases.size());
    return nbPhases == 0 ? QXLimits::NO_ITERATION_LIMIT : solver->computePhaseIterationLimit(nbPhases - 1);
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
    text += time == QXLimits::NO_TIME_LIMIT ? "  no time limit, "
                               : "  time limit = " + std::to_string(time) + " sec, ";
    text += iterations == QXLimits::NO_ITERATION_LIMIT ? "no iteration limit"
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
