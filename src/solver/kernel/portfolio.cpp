#include "solver/kernel/portfolio.h"

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

std::vector<bool> restarters(int nbRanks, int bestRank, int sharePercent, unsigned long long round) {
    std::vector<bool> chosen(nbRanks > 0 ? nbRanks : 0, false);
    // Rank 0 always keeps its own trajectory: a run on N ranks is then
    // never worse than the same run on one, at equal iterations per rank.
    std::vector<int> candidates;
    for (int step = 1; step < nbRanks; ++step) {
        const int r = (bestRank + step) % nbRanks;
        if (r != 0) candidates.push_back(r);
    }
    const int others = static_cast<int>(candidates.size());
    if (others == 0 || sharePercent <= 0) return chosen;
    const int count = sharePercent >= 100 ? others : (sharePercent * others + 50) / 100;
    for (int j = 0; j < count; ++j)
        chosen[candidates[(round * static_cast<unsigned long long>(count) + j) % others]] = true;
    return chosen;
}

unsigned long long iterationPeriod(int parameter, unsigned long long iterationLimit) {
    if (parameter > 0) return static_cast<unsigned long long>(parameter);
    const unsigned long long tenth = iterationLimit / 10;
    return tenth > 0 ? tenth : 1;
}

}  // namespace Portfolio
