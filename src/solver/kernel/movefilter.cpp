#include "solver/kernel/movefilter.h"

#include "solver/kernel/heuristic.h"

#include <algorithm>

void MoveFilter::heuristicStarted() {
    lastFilteringIteration = heuristic->getNbIterations();
    nextFilteringIteration = lastFilteringIteration + filteringPeriod;
    totalUtilRate = sumWeights();
}

void MoveFilter::iterate() {
    unsigned long long iterations = heuristic->getNbIterations();
    if (iterations < nextFilteringIteration) return;
    lastFilteringIteration = iterations;
    nextFilteringIteration = iterations + filteringPeriod;
    adjustUtilRates();
    if (explorationEnabled) explore();
    heuristic->buildMovesArray();
}

void MoveFilter::adjustUtilRates() {
    unsigned int improvements = sumImprovements(), accepted = sumAccepted();
    if (improvements == 0 && accepted == 0) return;
    raise.clear();
    lower.clear();
    for (unsigned int m = 0; m < heuristic->getNbMoves(); ++m) {
        Move* move = heuristic->getMove(m);
        unsigned int i = move->getNbImprovements(), a = move->getNbAccepted();
        // A move better at improving than at being accepted is weighed by its
        // improvements. The 32-bit products may wrap; kept as they are.
        double share = accepted * i > improvements * a
                           ? static_cast<double>(i) / improvements
                           : static_cast<double>(a) / accepted;
        unsigned int target = static_cast<unsigned int>(totalUtilRate * share);
        if (move->getUtilRate() < target) raise.push_back(move);
        else if (move->getUtilRate() > target) lower.push_back(move);
    }
    unsigned int n = static_cast<unsigned int>(std::min(raise.size(), lower.size()));
    changeUtilRates(raise, n, 1);
    changeUtilRates(lower, n, -1);
}

void MoveFilter::changeUtilRates(const std::vector<Move*>& list, unsigned int count, int delta) {
    for (unsigned int done = 0; done < count;) {
        Move* move = list[quickrand.nextInt(static_cast<unsigned int>(list.size()))];
        if (move->getUtilRate() == 0 && delta < 0) continue;
        move->setUtilRate(static_cast<unsigned int>(static_cast<int>(move->getUtilRate()) + delta));
        ++done;
    }
}

void MoveFilter::explore() {
    unsigned int n = heuristic->getNbMoves();
    if (n == 0) return;
    unsigned int amount = 2 * totalUtilRate / n;
    unsigned int collected = 0;
    for (unsigned int step = 0; step < 2 * n && amount > 0; ++step) {
        Move* move = heuristic->getMove(quickrand.nextInt(n));
        unsigned int taken = std::min(move->getUtilRate(), amount);
        move->setUtilRate(move->getUtilRate() - taken);
        amount -= taken;
        collected += taken;
    }
    Move* receiver = heuristic->getMove(quickrand.nextInt(n));
    receiver->setUtilRate(receiver->getUtilRate() + collected);
}

unsigned int MoveFilter::sumWeights() const {
    unsigned int total = 0;
    for (unsigned int m = 0; m < heuristic->getNbMoves(); ++m) total += heuristic->getMove(m)->getUtilRate();
    return total;
}

unsigned int MoveFilter::sumAccepted() const {
    unsigned int total = 0;
    for (unsigned int m = 0; m < heuristic->getNbMoves(); ++m) total += heuristic->getMove(m)->getNbAccepted();
    return total;
}

unsigned int MoveFilter::sumImprovements() const {
    unsigned int total = 0;
    for (unsigned int m = 0; m < heuristic->getNbMoves(); ++m) total += heuristic->getMove(m)->getNbImprovements();
    return total;
}
