#include "api/apierrors.h"

#include "api/qxexception.h"
#include "api/quarrix.h"

namespace {

const std::string RunningRefused =
    "This method cannot be called in state Running"
    " (the model must not be closed or the solver must be paused or stopped).";
const std::string ModelingOnly =
    "This method is only allowed in state Modeling (the model must not be closed).";
const std::string PausedOrStoppedOnly =
    "This method is only allowed in states Paused or Stopped"
    " (the model must be closed and the solver must be paused or stopped).";
const std::string StoppedOnly =
    "This method is only allowed in state Stopped"
    " (the model must be closed and the solver must be stopped).";
const std::string NeverStarted =
    "This method cannot be called if the solver has not been started at least once.";

}  // namespace

void ApiErrors::fail(const QXWhere& where, const std::string& explanation) {
    throw QXException(explanation, where);
}

void ApiErrors::checkNotRunning(const Quarrix* solver, const QXWhere& where) {
    if (solver->isStateRunning()) fail(where, RunningRefused);
}

void ApiErrors::checkModeling(const Quarrix* solver, const QXWhere& where) {
    if (!solver->isStateModeling()) fail(where, ModelingOnly);
}

void ApiErrors::checkPausedOrStopped(const Quarrix* solver, const QXWhere& where) {
    if (!solver->isStatePaused() && !solver->isStateStopped()) fail(where, PausedOrStoppedOnly);
}

void ApiErrors::checkStopped(const Quarrix* solver, const QXWhere& where) {
    if (!solver->isStateStopped()) fail(where, StoppedOnly);
}

void ApiErrors::checkStarted(const Quarrix* solver, const QXWhere& where) {
    if (!solver->isStarted()) fail(where, NeverStarted);
}

void ApiErrors::checkIndex(int64_t i, int64_t count, const std::string& thing,
                           const QXWhere& where) {
    if (i >= 0 && i < count) return;
    fail(where, "The " + thing + " with index " + std::to_string(i) + " does not exist.\n" +
                    "Only indices from 0 to " + std::to_string(count - 1) +
                    " are currently allowed.");
}

std::string ApiErrors::nullArgument(const std::string& name) {
    return "Argument " + name + " cannot be null.";
}

std::string ApiErrors::emptyArgument(const std::string& name) {
    return "Argument " + name + " cannot be an empty string.";
}

std::string ApiErrors::foreignArgument(const std::string& text) {
    return "Argument " + text + " does not belong to this instance of Quarrix.";
}

std::string ApiErrors::tooMany(const std::string& things) {
    return "Number of " + things + " cannot exceed " + std::to_string(MaxCount) + ".";
}

std::string ApiErrors::notPositive(const std::string& name) {
    return "Argument " + name + " must be a positive number.";
}

std::string ApiErrors::notStrictlyPositive(const std::string& name) {
    return "Argument " + name + " must be a strictly positive number.";
}

std::string ApiErrors::operandCount(int64_t count, const char* bound, int64_t limit,
                                    const std::string& operatorName) {
    return "Number of operands (" + std::to_string(count) + ") is too " + bound + " " +
           std::to_string(limit) + " operands are expected for operator with type " +
           operatorName + ".";
}
