#include "solver/kernel/threadenv.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/heuristicautoannealing.h"
#include "solver/kernel/heuristicdescent.h"
#include "solver/move/movechain.h"
#include "solver/move/movekbalance.h"
#include "solver/move/movekdeep.h"
#include "solver/move/movekflip.h"
#include "solver/move/movekgate.h"
#include "solver/move/movekinterval.h"
#include "solver/move/movekreversal.h"
#include "solver/move/movekswap.h"
#include "solver/move/movesimplekflip.h"

#include <algorithm>
#include <limits>

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
const unsigned int QX_MV_FILL_WEIGHTS[16] = {0, 4, 2};
const unsigned int QX_MV_DEEP_WEIGHTS[16] = {0, 0, 1, 1, 1, 1, 1, 1, 1};
const unsigned int QX_MV_DEEP_FILL_WEIGHTS[16] = {0, 0, 1, 1, 1, 1, 1, 1, 1};
// Each gate move's weight, where the model has gates.
const unsigned int GATE_WEIGHT = 8;
// Each interval move's weight, where the model has a time-indexed schedule.
const unsigned int INTERVAL_WEIGHT = 16;
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
        annealing->setTemperatureSweep(static_cast<unsigned int>(params.get(TemperatureSweep)));
        const int plateau = params.get(PlateauLength);
        annealing->setPlateauLength(plateau == 0 ? std::numeric_limits<unsigned long long>::max()
                                                 : static_cast<unsigned long long>(plateau));
        annealing->setDegradingIterationsLimit(params.get(AnnealingEndPercent) / 100.0);
        heuristic = std::move(annealing);
    } else {
        heuristic = std::make_unique<HeuristicDescent>(dag);
    }
}

void ThreadEnv::initHeuristic(const AutonomousFixedFields* fixedFields, unsigned int seed) {
    createHeuristic();
    dag->getPropagation().setKeptScoresEnabled(*dag, params.get(KeptScoresEnabled) != 0);
    dag->getPropagation().setKeptTargetingEnabled(*dag, params.get(KeptTargetingEnabled) != 0);
    structure = std::make_unique<AutonomousStructure>(*dag, *fixedFields);
    moveFilter = std::make_unique<MoveFilter>(heuristic.get());
    moveFilter->setExplorationEnabled(params.get(MoveExplorationEnabled) != 0);
    heuristic->addCallback(moveFilter.get());
    heuristic->setSeed(seed);
    heuristic->setViolationWeightPeriod(static_cast<unsigned int>(params.get(ViolationWeightPeriod)));
    const unsigned int size = static_cast<unsigned int>(std::max(0, std::min(params.get(NeighborhoodSize), 15)));
    // Block reversals were once half of the draws of the cycles, in a model
    // with sequences; as a move of their own (kReversalEnabled) they keep
    // that rate. There every weight counts double and each k-cycle that the
    // model allows hands half of its doubled weight to the reversal: the
    // reversal weighs as much as all the cycles together, and every kind
    // keeps its share of the lottery.
    unsigned int cycles = 0;
    for (unsigned int k = 1; k <= size; ++k)
        if (MoveChain::isValidK(MoveChain::Cycle, k, *fixedFields)) cycles += MoveWeights::QX_MV_CYCLE_WEIGHTS[k];
    const bool reversing = params.get(KReversalEnabled) != 0 && cycles > 0 && MoveKReversal::isValid(*fixedFields);
    weightScale = reversing ? 2 : 1;
    heuristic->addMove(new MoveSimpleKFlip(*dag, heuristic->getQuickrand(), 1, weightScale));
    for (unsigned int k = 1; k <= size; ++k) initMoves(k);
    if (reversing)
        heuristic->addMove(new MoveKReversal(*dag, heuristic->getQuickrand(), *structure, cycles, targeting()));
    // Gate moves only where some boolean gates others.
    if (MoveKGate::isValid(*fixedFields)) {
        const MoveKGate::Kind kinds[3] = {MoveKGate::Close, MoveKGate::Open, MoveKGate::Swap};
        const AdvancedParam switches[3] = {KGateCloseEnabled, KGateOpenEnabled, KGateSwapEnabled};
        const bool swaps = MoveKGate::isValidSwap(*fixedFields);
        for (int i = 0; i < 3; ++i)
            if (params.get(switches[i]) != 0 && (kinds[i] != MoveKGate::Swap || swaps))
                heuristic->addMove(new MoveKGate(*dag, heuristic->getQuickrand(), *structure, kinds[i],
                                                 weightScale * MoveWeights::GATE_WEIGHT, targeting()));
    }
    if (params.get(KIntervalEnabled) != 0 && MoveKInterval::isValid(*fixedFields))
        for (MoveKInterval::Kind kind : {MoveKInterval::Insert, MoveKInterval::Swap})
            heuristic->addMove(new MoveKInterval(*dag, heuristic->getQuickrand(), *structure, kind,
                                                 weightScale * MoveWeights::INTERVAL_WEIGHT, targeting()));
    for (unsigned int i = 0; i < params.objectiveBounds.size(); ++i)
        heuristic->setObjectiveBound(i, params.objectiveBounds[i]);
}

bool ThreadEnv::isWanted(const unsigned int* weights, AdvancedParam enabling, unsigned int k, bool valid) const {
    return weights[k] > 0 && params.get(enabling) != 0 && valid;
}

void ThreadEnv::initMoves(unsigned int k) {
    using namespace MoveWeights;
    const AutonomousFixedFields& fixedFields = structure->getFixedFields();
    const unsigned int targetingValue = targeting();
    Quickrand& rand = heuristic->getQuickrand();
    const bool wholePairs = params.get(WholePairsEnabled) != 0;
    if (isWanted(QX_MV_BALANCE_WEIGHTS, KBalanceEnabled, k, MoveKBalance::isValidK(k, fixedFields))) {
        auto balance = new MoveKBalance(*dag, rand, *structure, k, weightScale * QX_MV_BALANCE_WEIGHTS[k]);
        balance->setWholePairs(wholePairs);
        heuristic->addMove(balance);
    }
    if (isWanted(QX_MV_SWAP_WEIGHTS, KSwapEnabled, k, MoveKSwap::isValidK(k, fixedFields))) {
        auto swap = new MoveKSwap(*dag, rand, *structure, k, weightScale * QX_MV_SWAP_WEIGHTS[k], targetingValue);
        swap->setWholePairs(wholePairs);
        heuristic->addMove(swap);
    }
    // Deep moves score their sequences from the kept scores: not without them.
    if (isWanted(QX_MV_DEEP_WEIGHTS, KDeepEnabled, k,
                 params.get(KeptScoresEnabled) != 0 && MoveKDeep::isValidK(k, *dag)))
        heuristic->addMove(new MoveKDeep(*dag, rand, k, weightScale * QX_MV_DEEP_WEIGHTS[k]));
    if (isWanted(QX_MV_FLIP_WEIGHTS, KFlipEnabled, k, MoveKFlip::isValidK(k, fixedFields)))
        heuristic->addMove(
            new MoveKFlip(*dag, rand, *structure, k, weightScale * QX_MV_FLIP_WEIGHTS[k], targetingValue));
    // The chains: paths, cycles, the forks (cycles then paths, 2 then 3
    // branches), then the fills. Cycles keep their single weight: the other half went to
    // the reversal.
    struct Chain {
        const unsigned int* weights;
        AdvancedParam enabling;
        MoveChain::Shape shape;
        unsigned int nbBranches;
        unsigned int scale;
    };
    const Chain chains[8] = {{QX_MV_PATH_WEIGHTS, KPathEnabled, MoveChain::Path, 1, weightScale},
                             {QX_MV_CYCLE_WEIGHTS, KCycleEnabled, MoveChain::Cycle, 1, 1},
                             {QX_MV_2FORKCYCLE_WEIGHTS, K2ForkCycleEnabled, MoveChain::ForkCycle, 2, weightScale},
                             {QX_MV_3FORKCYCLE_WEIGHTS, K3ForkCycleEnabled, MoveChain::ForkCycle, 3, weightScale},
                             {QX_MV_2FORKPATH_WEIGHTS, K2ForkPathEnabled, MoveChain::ForkPath, 2, weightScale},
                             {QX_MV_3FORKPATH_WEIGHTS, K3ForkPathEnabled, MoveChain::ForkPath, 3, weightScale},
                             {QX_MV_FILL_WEIGHTS, KFillEnabled, MoveChain::Fill, 1, weightScale},
                             {QX_MV_DEEP_FILL_WEIGHTS, KDeepFillEnabled, MoveChain::DeepFill, 1, weightScale}};
    const bool violationTargeting = params.get(ViolationTargetingEnabled) != 0;
    for (const Chain& chain : chains)
        if (isWanted(chain.weights, chain.enabling, k, MoveChain::isValidK(chain.shape, k, fixedFields))) {
            MoveChain* move = new MoveChain(*dag, rand, *structure, chain.shape, k, chain.scale * chain.weights[k],
                                            targetingValue, chain.nbBranches);
            move->setViolationTargeting(violationTargeting);
            heuristic->addMove(move);
        }
}
