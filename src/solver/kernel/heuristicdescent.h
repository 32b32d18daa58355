#pragma once

#include "solver/kernel/heuristic.h"

// Accepts a move that does not make things worse: constraints first while
// infeasible, then the objectives up to the optimized one in order. Moves
// of equal value pass, so the descent walks across plateaus.
class HeuristicDescent : public Heuristic {
public:
    explicit HeuristicDescent(Dag* dag) : Heuristic(dag) {}
    void iterate() override;
    MoveExitCode decide(bool evaluated) override;

private:
    Move* currentMove = nullptr;
};
