#include "solver/kernel/greedysolution.h"

#include "api/kernelexception.h"
#include "solver/kernel/bipartition.h"
#include "solver/kernel/dag.h"

bool GreedySolution::computeSolution(Dag* dag) const {
    if (!dag->isInit())
        throw KernelException("src/solver/kernel/greedysolution", __LINE__, "computeSolution",
                              "The dag must be initialized.");
    Propagation& propagation = dag->getPropagation();
    const DagFixedFields& fixed = dag->getFixedFields();
    propagation.activateAllSatisfiedConstraints(*dag);
    if (propagation.getViolatedConstraints().sizeIn() == 0 && !solutionForced) return true;

    Bipartition visited(fixed.nbVariables());
    while (visited.sizeOut() != 0) {
        unsigned int rank = visited.getRandomOut(*quickrand);
        visited.setIn(rank);
        unsigned int variable = fixed.variables()[rank];
        if (dag->currentValue(variable) == 1) continue;
        propagation.modifyVariable(*dag, variable, 1);
        bool evaluated = propagation.eval(*dag);
        if (evaluated &&
            propagation.getEvalViolatedConstraints().sizeIn() <= propagation.getViolatedConstraints().sizeIn()) {
            propagation.commit(*dag);
            // Every other inactive constraint was violated before the move
            // and untouched by it: activating those this move satisfied is
            // activating every satisfied one, at the cost of the move.
            for (unsigned int node : propagation.getConstraintsSatisfiedByLastCommit())
                if (!propagation.isConstraintActive(*dag, node) && dag->currentValue(node) != 0)
                    propagation.activateConstraint(*dag, node);
        } else {
            propagation.rollback(*dag);
        }
    }
    propagation.check(*dag);
    return propagation.getActiveConstraints().sizeOut() == 0;
}
