#pragma once

#include "solver/kernel/heuristic.h"
#include "solver/kernel/movefilter.h"
#include "solver/kernel/searchparams.h"
#include "solver/move/autonomousstructure.h"

#include <memory>

// Initial util rates of each move kind by neighbourhood size k (0..15).
namespace MoveWeights {
extern const unsigned int QX_MV_BALANCE_WEIGHTS[16];
extern const unsigned int QX_MV_SWAP_WEIGHTS[16];
extern const unsigned int QX_MV_FLIP_WEIGHTS[16];
extern const unsigned int QX_MV_PATH_WEIGHTS[16];
extern const unsigned int QX_MV_CYCLE_WEIGHTS[16];
extern const unsigned int QX_MV_2FORKCYCLE_WEIGHTS[16];
extern const unsigned int QX_MV_3FORKCYCLE_WEIGHTS[16];
extern const unsigned int QX_MV_2FORKPATH_WEIGHTS[16];
extern const unsigned int QX_MV_3FORKPATH_WEIGHTS[16];
extern const unsigned int GATE_WEIGHT;
extern const unsigned int INTERVAL_WEIGHT;
}  // namespace MoveWeights

// One search thread's objects: its heuristic with its moves, move filter and
// sum structure, over a Dag and shared sum fields that outlive it.
class ThreadEnv {
public:
    ThreadEnv(const SearchParams& params, Dag* dag, const AutonomousFixedFields* fixedFields, unsigned int seed);
    ~ThreadEnv();
    ThreadEnv(const ThreadEnv&) = delete;
    ThreadEnv& operator=(const ThreadEnv&) = delete;

    Heuristic* getHeuristic() const { return heuristic.get(); }
    MoveFilter* getMoveFilter() const { return moveFilter.get(); }
    Dag* getDag() const { return dag; }

private:
    void initHeuristic(const AutonomousFixedFields* fixedFields, unsigned int seed);
    void createHeuristic();
    void initMoves(unsigned int k);
    // Whether the kind is created for k: a positive weight, its switch on,
    // and k valid for it.
    bool isWanted(const unsigned int* weights, AdvancedParam enabling, unsigned int k, bool valid) const;
    // Ten times the targeting level: the percentage of targeted starts.
    unsigned int targeting() const { return static_cast<unsigned int>(10 * params.get(TargetingLevel)); }

    const SearchParams params;
    // 2 where block reversals share the cycles' weight, else 1.
    unsigned int weightScale = 1;
    Dag* dag;
    std::unique_ptr<Heuristic> heuristic;
    std::unique_ptr<AutonomousStructure> structure;
    std::unique_ptr<MoveFilter> moveFilter;
};
