#include "api/quarrix.h"

#include "api/apierrors.h"
#include "api/qxmodel.h"
#include "api/qxparam.h"
#include "api/qxphase.h"
#include "api/qxsolution.h"
#include "api/qxstatistics.h"

#include <iostream>

namespace {
const char* const UNIT = "src/api/quarrix";
}

Quarrix::Quarrix()
    : model(new QXModel(this)),
      param(new QXParam(this)),
      callback(&Quarrix::display),
      callbackData(this),
      statistics(new QXStatistics(this, nullptr)) {}

Quarrix::~Quarrix() = default;

bool Quarrix::isStarted() const { return false; }

QXModel* Quarrix::getModel() const {
    ApiErrors::checkNotRunning(this, QX_HERE);
    return model.get();
}

QXParam* Quarrix::getParam() const {
    ApiErrors::checkNotRunning(this, QX_HERE);
    return param.get();
}

QXPhase* Quarrix::createPhase() {
    ApiErrors::checkStopped(this, QX_HERE);
    phases.emplace_back(new QXPhase(this));
    return phases.back().get();
}

QXPhase* Quarrix::getPhase(int i) const {
    ApiErrors::checkPausedOrStopped(this, QX_HERE);
    ApiErrors::checkIndex(i, static_cast<int64_t>(phases.size()), "phase", QX_HERE);
    return phases[i].get();
}

int Quarrix::getNbPhases() const {
    ApiErrors::checkPausedOrStopped(this, QX_HERE);
    return static_cast<int>(phases.size());
}

QXSolution* Quarrix::getSolution() const {
    ApiErrors::checkPausedOrStopped(this, QX_HERE);
    return solution.get();
}

QXStatistics* Quarrix::getStatistics() const {
    ApiErrors::checkPausedOrStopped(this, QX_HERE);
    return statistics.get();
}

void Quarrix::closeModel() {
    state = QXState::Stopped;
    solution.reset(new QXSolution(this));
    param->resizeObjectiveArrays(model->getNbObjectives());
}

void Quarrix::solve() {
    ApiErrors::checkStopped(this, QX_HERE);
    ApiErrors::fail(QX_HERE, "The local search is not available in this build.");
}

void Quarrix::stop() {
    ApiErrors::checkPausedOrStopped(this, QX_HERE);
    ApiErrors::checkStarted(this, QX_HERE);
    if (isStateStopped()) return;
    // Paused inside a solve: the solve loop sees the request when the
    // callback returns, and stops the search threads itself.
    stopRequested = true;
}

void Quarrix::setDisplayCallback(DisplayCallback newCallback, void* data) {
    ApiErrors::checkNotRunning(this, QX_HERE);
    callback = newCallback;
    callbackData = data;
}

void Quarrix::display(void* data) {
    const Quarrix* solver = static_cast<const Quarrix*>(data);
    if (solver->param->verbosity != 0) std::cout << solver->getInfo() << std::endl;
}

std::string Quarrix::toString() const {
    ApiErrors::checkNotRunning(this, QX_HERE);
    std::string text = model->toString() + "\n" + param->toString() + "\nPhases:\n";
    if (phases.empty()) text += "  (no phases)\n";
    for (size_t i = 0; i < phases.size(); ++i)
        text += "  Phase " + std::to_string(i) + ": " + phases[i]->toString() + "\n";
    return text + "\n";
}

std::string Quarrix::getInfo() const {
    ApiErrors::checkPausedOrStopped(this, QX_HERE);
    ApiErrors::checkStarted(this, QX_HERE);
    // Reached only once a search has run: the line needs its running time,
    // its iteration count and its best solution's objectives.
    ApiErrors::fail(QX_HERE, "The local search is not available in this build.");
}

void Quarrix::clearStats() {
    statistics->init();
    for (auto& phase : phases) phase->statistics->init();
}
