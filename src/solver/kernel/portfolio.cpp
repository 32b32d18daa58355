#include "solver/kernel/portfolio.h"

#include <algorithm>

namespace Portfolio {

unsigned int rankSeed(unsigned int seed, int rank) {
    if (rank == 0) return seed;
    // A 32-bit finaliser over the seed moved by the rank: neighbouring
    // ranks and seeds get unrelated generators.
    uint32_t x = seed + 0x9E3779B9u * static_cast<uint32_t>(rank);
    x ^= x >> 16;
    x *= 0x85EBCA6Bu;
    x ^= x >> 13;
    x *= 0xC2B2AE35u;
    x ^= x >> 16;
    return x % 2147483647u;
}

int compareStandings(unsigned long long violatedA, const std::vector<long long>& a,
                     unsigned long long violatedB, const std::vector<long long>& b,
                     const std::vector<ObjectiveDirection>& directions) {
    if (violatedA != violatedB) return violatedA < violatedB ? 1 : -1;
    for (std::size_t i = 0; i < directions.size(); ++i) {
        if (a[i] == b[i]) continue;
        const bool greaterIsBetter = directions[i] == Maximize;
        return (a[i] > b[i]) == greaterIsBetter ? 1 : -1;
    }
    return 0;
}

namespace {
int compare(const Standing& a, const Standing& b, const std::vector<ObjectiveDirection>& directions) {
    return compareStandings(a.violated, a.objectives, b.violated, b.objectives, directions);
}
}  // namespace

int bestRank(const std::vector<Standing>& standings, const std::vector<ObjectiveDirection>& directions) {
    int best = 0;
    for (int r = 1; r < static_cast<int>(standings.size()); ++r)
        if (compare(standings[r], standings[best], directions) > 0) best = r;
    return best;
}

std::vector<bool> restarters(const std::vector<Standing>& standings, int best, int sharePercent,
                             const std::vector<ObjectiveDirection>& directions) {
    const int nbRanks = static_cast<int>(standings.size());
    std::vector<bool> chosen(nbRanks, false);
    std::vector<int> candidates;
    for (int r = 1; r < nbRanks; ++r)
        if (r != best) candidates.push_back(r);
    if (candidates.empty() || sharePercent <= 0) return chosen;
    const std::size_t count = sharePercent >= 100 ? candidates.size() : (sharePercent * candidates.size() + 50) / 100;
    std::stable_sort(candidates.begin(), candidates.end(),
                     [&](int a, int b) { return compare(standings[a], standings[b], directions) < 0; });
    for (std::size_t j = 0; j < count; ++j)
        if (compare(standings[candidates[j]], standings[best], directions) < 0) chosen[candidates[j]] = true;
    return chosen;
}

unsigned long long iterationPeriod(int parameter, unsigned long long iterationLimit) {
    if (parameter > 0) return static_cast<unsigned long long>(parameter);
    const unsigned long long tenth = iterationLimit / 10;
    return tenth > 0 ? tenth : 1;
}

}  // namespace Portfolio
