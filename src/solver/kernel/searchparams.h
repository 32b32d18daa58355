#pragma once

#include <vector>

// The advanced parameters that the search reads, declared once: the search
// takes their names and defaults from here, the solver checks their ranges
// here before a solve, and the README's table of them is checked against
// this one by a unit test. Other names may be set too; the search ignores
// them.
enum AdvancedParam : unsigned int {
    TargetingLevel,
    NeighborhoodSize,
    MoveExplorationEnabled,
    KFlipEnabled,
    KSwapEnabled,
    KBalanceEnabled,
    KPathEnabled,
    KCycleEnabled,
    K2ForkCycleEnabled,
    K3ForkCycleEnabled,
    K2ForkPathEnabled,
    K3ForkPathEnabled,
    KReversalEnabled,
    KGateCloseEnabled,
    KGateOpenEnabled,
    KGateSwapEnabled,
    KeptScoresEnabled,
    KeptTargetingEnabled,
    TemperatureSweep,
    ViolationWeightPeriod,
    WholePairsEnabled,
    ExchangePeriod,
    ExchangeIterationPeriod,
    RestartShare,
    ViolationTargetingEnabled,
    KIntervalEnabled,
    PlateauLength,
    AnnealingEndPercent,
    KFillEnabled,
    LargePagesEnabled,
    KDeepEnabled,
    KDeepFillEnabled,
    NB_ADVANCED_PARAMS
};

struct AdvancedParamInfo {
    const char* name;
    int defaultValue;
    int lowest;
    int highest;
    // Outside the range: refused (the search cannot use the value), or read
    // as the search always has (a size as the nearest end, a switch as on
    // for anything but 0).
    bool refusedOutside;
    const char* help;
};

// One row per AdvancedParam, in its order.
extern const AdvancedParamInfo ADVANCED_PARAMS[NB_ADVANCED_PARAMS];

// What a thread's search is built from: the annealing level, the advanced
// parameters (each its default unless set) and one bound per objective.
struct SearchParams {
    SearchParams();

    int get(AdvancedParam param) const { return advanced[param]; }
    void set(AdvancedParam param, int value) { advanced[param] = value; }

    int annealingLevel = 1;
    int advanced[NB_ADVANCED_PARAMS];
    std::vector<long long> objectiveBounds;
};
