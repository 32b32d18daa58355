#include "solver/kernel/heuristicdescent.h"

void HeuristicDescent::iterate() {
    currentMove = drawMove();
    if (applyMove(currentMove) == MoveImproved) updateBestSolution();
}

MoveExitCode HeuristicDescent::decide(bool evaluated) {
    if (!evaluated) return MoveInfeasible;
    if (desactivatedConstraintsExist()) {
        if (isConstraintsImproved()) return MoveImproved;
        return isConstraintsDegraded() ? MoveRejected : MoveAccepted;
    }
    for (unsigned int i = 0; i <= optimizedObjective; ++i) {
        if (isObjectiveDegraded(i)) return MoveRejected;
        if (isObjectiveImproved(i)) return MoveImproved;
    }
    return MoveAccepted;
}
