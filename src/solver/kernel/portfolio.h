#pragma once

#include "solver/kernel/kernelconstants.h"

#include <cstdint>
#include <vector>

// A search spread over several processes (ranks), each running its own
// threads on its own copy of the model: the rules every rank applies alike.
// Plain functions, so that every build tests them; only the multi-process
// build links ranks (api/ranklink.h).
namespace Portfolio {

// The seed of a rank's search. Rank 0 keeps the user's seed, so that one
// rank searches exactly as a plain run; the others get seeds spread by a
// mixing function, in [0, 2147483647) like every seed.
unsigned int rankSeed(unsigned int seed, int rank);

// 1 when (violatedA, a) is the better standing, -1 when worse, 0 when
// equal: fewer violated constraints first (a feasible solution has none),
// then the objectives in the model's order, each in its direction.
int compareStandings(unsigned long long violatedA, const std::vector<long long>& a,
                     unsigned long long violatedB, const std::vector<long long>& b,
                     const std::vector<ObjectiveDirection>& directions);

// What a rank tells the others of its best solution.
struct Standing {
    unsigned long long violated;
    std::vector<long long> objectives;
};

// The rank of the best standing, the lowest such rank on ties.
int bestRank(const std::vector<Standing>& standings, const std::vector<ObjectiveDirection>& directions);

// The ranks that restart from the best rank's solution: sharePercent of
// the ranks other than the best one and rank 0, rounded to the nearest (a
// half up), the worst standings first (the lower rank first among equals);
// a rank as good as the best one stays. Rank 0 never restarts, so that a
// run on N ranks is never worse than the same run on one at equal
// iterations per rank; the best searches keep their own trajectories.
// Indexed by rank.
std::vector<bool> restarters(const std::vector<Standing>& standings, int best, int sharePercent,
                             const std::vector<ObjectiveDirection>& directions);

// The period, in iterations per thread, of the exchanges of a phase that
// ends on an iteration limit: the advanced parameter when it is set, else
// a tenth of the limit (at least one iteration).
unsigned long long iterationPeriod(int parameter, unsigned long long iterationLimit);

}  // namespace Portfolio
