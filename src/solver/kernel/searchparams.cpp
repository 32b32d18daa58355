#include "solver/kernel/searchparams.h"

const AdvancedParamInfo ADVANCED_PARAMS[NB_ADVANCED_PARAMS] = {
    {"targetingLevel", 5, 0, 10, true, "chance, in tenths, that a move starts from a variable improving the objective"},
    {"neighborhoodSize", 8, 0, 15, false, "largest size of the k-moves; 0 leaves single random flips only"},
    {"moveExplorationEnabled", 1, 0, 1, false, "1: the move filter regularly hands weight to random moves"},
    {"kFlipEnabled", 1, 0, 1, false, "1: flips of k free variables"},
    {"kSwapEnabled", 1, 0, 1, false, "1: flips paired with an opposite flip in the same sum"},
    {"kBalanceEnabled", 1, 0, 1, false, "1: paired flips that keep equalities balanced"},
    {"kPathEnabled", 1, 0, 1, false, "1: chains of flips from the objective across constrained sums"},
    {"kCycleEnabled", 1, 0, 1, false, "1: chains of flips that close on their first sum"},
    {"k2ForkCycleEnabled", 1, 0, 1, false, "1: cycles whose first flip is cancelled by two branches"},
    {"k3ForkCycleEnabled", 1, 0, 1, false, "1: cycles whose first flip is cancelled by three branches"},
    {"k2ForkPathEnabled", 1, 0, 1, false, "1: paths whose first flip is cancelled by two branches"},
    {"k3ForkPathEnabled", 1, 0, 1, false, "1: paths whose first flip is cancelled by three branches"},
    {"kReversalEnabled", 1, 0, 1, false, "1: block reversals of sequences (columns of an assignment with unit rows)"},
    {"kGateCloseEnabled", 1, 0, 1, false, "1: a boolean that gates others (x <= g, sum <= C * g) closes and what it held moves to open ones"},
    {"kGateOpenEnabled", 1, 0, 1, false, "1: a boolean that gates others opens and takes over what it serves better"},
    {"kGateSwapEnabled", 1, 0, 1, false, "1: one gate closes and another opens, the contents of the first re-placed"},
    {"keptScoresEnabled", 1, 0, 1, false, "1: flips of booleans in sums of booleans and pairs are scored without the graph"},
    {"keptTargetingEnabled", 0, 0, 1, false, "1: moves targeting an improving variable draw it from the kept scores instead of through the graph"},
    {"temperatureSweep", 0, 0, 100000, true, "with annealing: moves per decision in one cooling of a temperature that replaces the window; 0: the window"},
    {"violationWeightPeriod", 0, 0, 1000000000, true, "while infeasible, moves without progress before the violated constraints weigh more; 0: never"},
    {"wholePairsEnabled", 1, 0, 1, false, "1: a swap or balance pair sharing a boolean with an earlier pair of the move is left out"},
    {"exchangePeriod", 3, 1, 3600, true, "several processes (mpirun): seconds between exchanges of the best solution"},
    {"exchangeIterationPeriod", 0, 0, 2147483647, true, "several processes: iterations per thread between exchanges; 0: a tenth of an iteration limit without time limit, else by time"},
    {"restartShare", 50, 0, 100, true, "several processes: percentage of the other processes that restart from the best solution at an exchange"},
    {"violationTargetingEnabled", 1, 0, 1, false, "1: while infeasible, targeted cycles start from a violated constraint's sum"},
    {"kIntervalEnabled", 1, 0, 1, false, "1: jobs of a time-indexed schedule (one-of-many rows over intervals of unit capacity rows) placed one after another at the start, inserted and swapped with the jobs between shifting"},
    {"plateauLength", 1000000, 0, 2147483647, true, "with annealing: moves without a new best after which the annealing pauses until the next one; 0: never"},
    {"annealingEndPercent", 90, 1, 1000, true, "with annealing: share of the estimated moves, in percent, after which the search is a descent (above 100: never within the time limit)"},
    {"kFillEnabled", 1, 0, 1, false, "1: k booleans of an objective sum given up, then every flip that the room they leave lets in, the most valuable first"},
    {"largePagesEnabled", 1, 0, 1, false, "1: the search's largest arrays on 2 MB pages where the system grants them"},
    {"kDeepEnabled", 1, 0, 1, false, "1: over an unconstrained quadratic objective, a random flip answered by up to k - 1 greedy flips, the best-ending prefix kept"},
    {"kDeepFillEnabled", 1, 0, 1, false, "1: up to k rounds of one boolean of an objective sum given up and the room it leaves filled, the rounds up to the best-ending one kept"},
};

SearchParams::SearchParams() {
    for (unsigned int p = 0; p < NB_ADVANCED_PARAMS; ++p) advanced[p] = ADVANCED_PARAMS[p].defaultValue;
}

