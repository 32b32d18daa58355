#include "solver/kernel/greedysolution.h"

#include "api/kernelexception.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"
#include "solver/move/autonomousfixedfields.h"

#include <algorithm>
#include <numeric>
#include <vector>

bool GreedySolution::computeSolution(Dag* dag) const {
    if (!dag->isInit())
        throw KernelException("src/solver/kernel/greedysolution", __LINE__, "computeSolution",
                              "The dag must be initialized.");
    Propagation& propagation = dag->getPropagation();
    const DagFixedFields& fixed = dag->getFixedFields();
    propagation.activateAllSatisfiedConstraints(*dag);
    if (propagation.getViolatedConstraints().sizeIn() == 0 && !solutionForced) return true;

    // The visiting order is a random permutation of the variables drawn one
    // place at a time (Fisher-Yates): place t takes the variable at a random
    // place among t..n-1, which swaps to place t. The draws depend on the
    // generator alone, which weighing a variable leaves alone, so they are
    // made ahead without changing the order; meanwhile what the coming
    // visits read loads, stage by stage as they come closer (where each
    // would miss the cache in a model of a million booleans): the drawn
    // place, the variable it names, its value, its kept scores.
    const unsigned int n = fixed.nbVariables();
    const unsigned int AHEAD = 16;
    std::vector<unsigned int> order(n);
    std::iota(order.begin(), order.end(), 0u);
    unsigned int places[AHEAD];
    auto drawPlace = [&](unsigned int t) {
        if (t >= n) return;
        places[t % AHEAD] = t + quickrand->nextInt(n - t);
        __builtin_prefetch(&order[places[t % AHEAD]]);
    };
    // The variable at place t + k as things stand: a hint only, since the
    // swaps to come may still move it.
    auto soon = [&](unsigned int t, unsigned int k) {
        return t + k < n ? fixed.variables()[order[places[(t + k) % AHEAD]]] : KernelConstants::NO_NODE;
    };
    for (unsigned int t = 0; t < AHEAD; ++t) drawPlace(t);
    for (unsigned int t = 0; t < n; ++t) {
        const unsigned int place = places[t % AHEAD];
        const unsigned int rank = order[place];
        order[place] = order[t];
        drawPlace(t + AHEAD);
        if (t + 12 < n) __builtin_prefetch(&fixed.variables()[order[places[(t + 12) % AHEAD]]]);
        for (unsigned int stage = 0; stage <= 2; ++stage) {
            const unsigned int variable = soon(t, 8 >> stage);
            if (variable != KernelConstants::NO_NODE) propagation.prefetchFlip(*dag, variable, stage);
        }
        const unsigned int variable = fixed.variables()[rank];
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

bool GreedySolution::placeIntervals(Dag* dag, const AutonomousFixedFields& sums) const {
    const IntervalRows& rows = sums.getIntervals();
    const DagFixedFields& fixed = dag->getFixedFields();
    Propagation& propagation = dag->getPropagation();
    if (rows.empty()) return false;
    // What each boolean costs on the objective sums while at 1.
    auto costOf = [&](unsigned int boolean) {
        __int128 cost = 0;
        for (const RootBool::Entry& entry : sums.getRootBool(fixed.variableIndex(boolean)).freeEntries())
            cost -= static_cast<__int128>(sums.objectiveSign(entry.sum)) * entry.coefficient;
        return cost;
    };
    std::vector<unsigned int> order(rows.nbRows()), latest(rows.nbRows(), 0);
    std::iota(order.begin(), order.end(), 0u);
    for (unsigned int row = 0; row < rows.nbRows(); ++row) {
        __int128 least = 0;
        for (unsigned int i = 0; i < rows.sizeOf(row); ++i) {
            unsigned int boolean = rows.firstOf(row)[i];
            __int128 cost = costOf(boolean);
            if (i == 0 || cost <= least) {
                latest[row] = rows.startOf(fixed.variableIndex(boolean));
                least = cost;
            }
        }
    }
    // Ties in random order.
    for (unsigned int i = rows.nbRows(); i > 1; --i) std::swap(order[i - 1], order[quickrand->nextInt(i)]);
    std::stable_sort(order.begin(), order.end(), [&](unsigned int a, unsigned int b) { return latest[a] < latest[b]; });
    std::vector<unsigned int> busy(rows.lineLength() + 1, 0), chosen(rows.nbRows());
    for (unsigned int row : order) {
        // Overlaps by start from the prefix sums of the places' loads.
        for (unsigned int place = 0; place < rows.lineLength(); ++place) busy[place + 1] += busy[place];
        unsigned int best = 0, bestOverlap = 0;
        for (unsigned int i = 0; i < rows.sizeOf(row); ++i) {
            unsigned int start = rows.startOf(fixed.variableIndex(rows.firstOf(row)[i]));
            unsigned int overlap = busy[start + rows.length(row)] - busy[start];
            if (i == 0 || overlap < bestOverlap) {
                best = i;
                bestOverlap = overlap;
            }
        }
        for (unsigned int place = rows.lineLength(); place > 0; --place) busy[place] -= busy[place - 1];
        chosen[row] = rows.firstOf(row)[best];
        unsigned int start = rows.startOf(fixed.variableIndex(chosen[row]));
        for (unsigned int place = start; place < start + rows.length(row); ++place) ++busy[place + 1];
    }
    propagation.desactivateAllConstraints();
    for (unsigned int row = 0; row < rows.nbRows(); ++row)
        for (unsigned int i = 0; i < rows.sizeOf(row); ++i) {
            unsigned int boolean = rows.firstOf(row)[i];
            propagation.modifyVariable(*dag, boolean, boolean == chosen[row] ? 1 : 0);
        }
    if (!propagation.eval(*dag)) {
        propagation.rollback(*dag);
        return false;
    }
    propagation.commit(*dag);
    propagation.activateAllSatisfiedConstraints(*dag);
    propagation.check(*dag);
    return propagation.getActiveConstraints().sizeOut() == 0;
}
