#include "solver/kernel/threadenv.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/heuristicautoannealing.h"
#include "solver/kernel/heuristicdescent.h"
#include "solver/move/movekbalance.h"
#include "solver/move/movekcycle.h"
#include "solver/move/movekflip.h"
#include "solver/move/movekpath.h"
#include "solver/move/movekswap.h"
#include "solver/move/moveklforkcycle.h"
#include "solver/move/moveklforkpath.h"
#include "solver/move/movesimplekflip.h"

namespace MoveWeights {
const unsigned int QX_MV_BALANCE_WEIGHTS[16] = {0, 4, 2, 1, 1};
const unsigned int QX_MV_SWAP_WEIGHTS[16] = {0, 4, 2, 1, 1};
const unsigned int QX_MV_FLIP_WEIGHTS[16] = {0, 8, 8, 2, 1, 1, 1, 1, 1};
const unsigned int QX_MV_PATH_WEIGHTS[16] = {0, 0, 6, 6, 8, 8, 4, 2, 1};
const unsigned int QX_MV_CYCLE_WEIGHTS[16] = {0, 0, 2, 4, 8, 8, 4, 2, 1};
const unsigned int QX_MV_2FORKCYCLE_WEIGHTS[16] = {0, 0, 0, 2};
const unsigned int QX_MV_3FORKCYCLE_WEIGHTS[16] = {0, 0, 0, 1};
const unsigned int QX_MV_2FORKPATH_WEIGHTS[16] = {0, 0, 0, 1};
const unsigned int QX_MV_3FORKPATH_WEIGHTS[16] = {0, 0, 0, 1};
}  // namespace MoveWeights

ThreadEnv::ThreadEnv(const SearchParams& params, Dag* dag, const AutonomousFixedFields* fixedFields,
                     unsigned int seed)
    : params(params), dag(dag) {
    initHeuristic(fixedFields, seed);
}

// The heuristic goes first: its moves refer to the structure.
ThreadEnv::~ThreadEnv() {
    heuristic.reset();
    structure.reset();
}

void ThreadEnv::createHeuristic() {
    if (params.annealingLevel != 0) {
        auto annealing = std::make_unique<HeuristicAutoAnnealing>(dag);
        annealing->setObjectiveWindowSize(params.annealingLevel);
        heuristic = std::move(annealing);
    } else {
        heuristic = std::make_unique<HeuristicDescent>(dag);
    }
}

void ThreadEnv::initHeuristic(const AutonomousFixedFields* fixedFields, unsigned int seed) {
    createHeuristic();
    structure = std::make_unique<AutonomousStructure>(*dag, *fixedFields);
    moveFilter = std::make_unique<MoveFilter>(heuristic.get());
    moveFilter->setExplorationEnabled(params.get(MoveExplorationEnabled) != 0);
    heuristic->addCallback(moveFilter.get());
    heuristic->setSeed(seed);
    heuristic->addMove(new MoveSimpleKFlip(*dag, heuristic->getQuickrand(), 1, 1));
    int size = params.get(NeighborhoodSize);
    for (int k = 1; k <= size && k < 16; ++k) initMoves(static_cast<unsigned int>(k));
    for (unsigned int i = 0; i < params.objectiveBounds.size(); ++i)
        heuristic->setObjectiveBound(i, params.objectiveBounds[i]);
}

void ThreadEnv::initMoves(unsigned int k) {
    using namespace MoveWeights;
    const AutonomousFixedFields& fixedFields = structure->getFixedFields();
    unsigned int targeting = static_cast<unsigned int>(10 * params.get(TargetingLevel));
    Quickrand& rand = heuristic->getQuickrand();
    auto wanted = [&](const unsigned int* table, AdvancedParam enabling, bool valid) {
        return table[k] > 0 && params.get(enabling) != 0 && valid;
    };
    if (wanted(QX_MV_BALANCE_WEIGHTS, KBalanceEnabled, MoveKBalance::isValidK(k, fixedFields)))
        heuristic->addMove(new MoveKBalance(*dag, rand, *structure, k, QX_MV_BALANCE_WEIGHTS[k]));
    if (wanted(QX_MV_SWAP_WEIGHTS, KSwapEnabled, MoveKSwap::isValidK(k, fixedFields)))
        heuristic->addMove(new MoveKSwap(*dag, rand, *structure, k, QX_MV_SWAP_WEIGHTS[k], targeting));
    if (wanted(QX_MV_FLIP_WEIGHTS, KFlipEnabled, MoveKFlip::isValidK(k, fixedFields)))
        heuristic->addMove(new MoveKFlip(*dag, rand, *structure, k, QX_MV_FLIP_WEIGHTS[k], targeting));
    if (wanted(QX_MV_PATH_WEIGHTS, KPathEnabled, MoveKPath::isValidK(k, fixedFields)))
        heuristic->addMove(new MoveKPath(*dag, rand, *structure, k, QX_MV_PATH_WEIGHTS[k], targeting));
    if (wanted(QX_MV_CYCLE_WEIGHTS, KCycleEnabled, MoveKCycle::isValidK(k, fixedFields)))
        heuristic->addMove(new MoveKCycle(*dag, rand, *structure, k, QX_MV_CYCLE_WEIGHTS[k], targeting));
    // The forks, in the order cycles then paths, 2 then 3 branches.
    struct Fork {
        const unsigned int* weights;
        AdvancedParam enabling;
        unsigned int l;
        bool cycle;
    };
    const Fork forks[4] = {{QX_MV_2FORKCYCLE_WEIGHTS, K2ForkCycleEnabled, 2, true},
                           {QX_MV_3FORKCYCLE_WEIGHTS, K3ForkCycleEnabled, 3, true},
                           {QX_MV_2FORKPATH_WEIGHTS, K2ForkPathEnabled, 2, false},
                           {QX_MV_3FORKPATH_WEIGHTS, K3ForkPathEnabled, 3, false}};
    for (const Fork& fork : forks) {
        bool valid = fork.cycle ? MoveKLForkCycle::isValidK(k, fixedFields) : MoveKLForkPath::isValidK(k, fixedFields);
        if (!wanted(fork.weights, fork.enabling, valid)) continue;
        if (fork.cycle)
            heuristic->addMove(new MoveKLForkCycle(*dag, rand, *structure, fork.l, k, fork.weights[k], targeting));
        else
            heuristic->addMove(new MoveKLForkPath(*dag, rand, *structure, fork.l, k, fork.weights[k], targeting));
    }
}
