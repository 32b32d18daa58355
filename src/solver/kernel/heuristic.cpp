#include "solver/kernel/heuristic.h"

#include "api/kernelexception.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/kernelconstants.h"

#include <algorithm>
#include <limits>

namespace {
const char* const SOURCE = "src/solver/kernel/heuristic";
}  // namespace

Heuristic::Heuristic(Dag* dag) : dag(dag) {
    if (!dag->isInit())
        throw KernelException("The dag must be initialized.",
                              QXWhere::contractLine(SOURCE, 29, "Heuristic"));
    const DagFixedFields& fixed = dag->getFixedFields();
    if (fixed.objectives().empty())
        throw KernelException("At least one objective is needed.",
                              QXWhere::contractLine(SOURCE, 31, "Heuristic"));
    // By default only an objective's own range can end the search.
    for (ObjectiveDirection direction : fixed.directions())
        objectiveBounds.push_back(direction == Maximize ? std::numeric_limits<long long>::max()
                                                        : std::numeric_limits<long long>::min());
    timeLimit = SearchClock::NO_LIMIT;
    iterationLimit = QXLimits::NO_ITERATION_LIMIT;
    optimizedObjective = static_cast<unsigned int>(fixed.objectives().size()) - 1;
    dag->addSolutionToNotify(bestSolution);
    bestSolutionIterations = 0;
    bestSolutionTime = 0;
    dag->saveSolutionIncrementally(bestSolution);
}

Heuristic::~Heuristic() {
    dag->removeSolutionToNotify(bestSolution);
    clearMoves();
}

void Heuristic::init() {
    timeLimit = SearchClock::NO_LIMIT;
    iterationLimit = QXLimits::NO_ITERATION_LIMIT;
    optimizedObjective = static_cast<unsigned int>(objectiveBounds.size()) - 1;
    for (Move* move : moves) move->clearStats();
}

void Heuristic::setTimeLimit(unsigned int seconds) {
    timeLimit = seconds == static_cast<unsigned int>(QXLimits::NO_TIME_LIMIT)
                    ? SearchClock::NO_LIMIT
                    : std::chrono::duration_cast<SearchClock::Clock::duration>(std::chrono::seconds(seconds));
}

unsigned int Heuristic::getTimeLimit() const {
    if (timeLimit == SearchClock::NO_LIMIT) return QXLimits::NO_TIME_LIMIT;
    return static_cast<unsigned int>(std::chrono::duration_cast<std::chrono::seconds>(timeLimit).count());
}

void Heuristic::addMove(Move* move) { moves.push_back(move); }

void Heuristic::removeMove(Move* move) {
    auto it = std::find(moves.begin(), moves.end(), move);
    if (it == moves.end())
        throw KernelException("Bad argument value.",
                              QXWhere::contractLine(SOURCE, 75, "removeMove"));
    moves.erase(it);
    delete move;
}

void Heuristic::clearMoves() {
    for (Move* move : moves) delete move;
    moves.clear();
    movesArray.clear();
}

Move* Heuristic::getMove(unsigned int i) const {
    if (i >= moves.size())
        throw KernelException("Bad argument value.", QXWhere::contractLine(SOURCE, 188, "getMove"));
    return moves[i];
}

unsigned int Heuristic::moveIndex(const Move* move) const {
    return static_cast<unsigned int>(std::find(moves.begin(), moves.end(), move) - moves.begin());
}

void Heuristic::removeCallback(HeuristicCallback* callback) {
    callbacks.erase(std::remove(callbacks.begin(), callbacks.end(), callback), callbacks.end());
}

void Heuristic::setOptimizedObjective(unsigned int objective) {
    if (objective >= objectiveBounds.size())
        throw KernelException("The given objective index is invalid",
                              QXWhere::contractLine(SOURCE, 265, "setOptimizedObjective"));
    optimizedObjective = objective;
}

void Heuristic::setObjectiveBound(unsigned int objective, long long bound) {
    if (objective >= objectiveBounds.size())
        throw KernelException("Bad argument.",
                              QXWhere::contractLine(SOURCE, 59, "setObjectiveBound"));
    objectiveBounds[objective] = bound;
}

long long Heuristic::getObjectiveBound(unsigned int objective) const {
    if (objective >= objectiveBounds.size())
        throw KernelException("Bad argument.",
                              QXWhere::contractLine(SOURCE, 64, "getObjectiveBound"));
    return objectiveBounds[objective];
}

void Heuristic::buildMovesArray() {
    movesArray.clear();
    for (Move* move : moves)
        for (unsigned int i = 0; i < move->getUtilRate(); ++i) movesArray.push_back(move);
}

void Heuristic::run() {
    if (moves.empty())
        throw KernelException("At least one move is needed",
                              QXWhere::contractLine(SOURCE, 96, "run"));
    buildMovesArray();
    quickrand.init(seed);
    stopped.store(false, std::memory_order_relaxed);
    nbIterations = 0;
    bestSolutionTime = 0;
    bestSolutionIterations = 0;
    clock.start(timeLimit);
    for (HeuristicCallback* callback : callbacks) callback->heuristicStarted();
    while (!isFinished()) {
        iterate();
        nextIteration();
    }
    clock.stop();
    for (HeuristicCallback* callback : callbacks) callback->heuristicEnded();
}

void Heuristic::nextIteration() {
    ++nbIterations;
    for (HeuristicCallback* callback : callbacks) callback->iterate();
}

bool Heuristic::isFinished() const {
    if (stopped.load(std::memory_order_relaxed)) return true;
    if (nbIterations >= iterationLimit) return true;
    if (clock.isOver(nbIterations)) return true;
    if (!desactivatedConstraintsExist() && areObjectiveBoundsReached()) return true;
    return movesArray.empty();
}

MoveExitCode Heuristic::applyMove(Move* move) {
    moveBuilt = move->modify();
    if (!moveBuilt) {
        move->update(MoveInfeasible);
        return MoveInfeasible;
    }
    const bool evaluated = move->eval();
    const bool lowered = evaluated && dag->getPropagation().getWeightedCostChange() < 0;
    MoveExitCode code = decide(evaluated);
    move->update(code);
    if (violationWeightPeriod != 0) weighViolations(lowered && (code == MoveImproved || code == MoveAccepted));
    return code;
}

// Breaking out of the plateaus of an infeasible search: a constraint that
// stays violated while the moves stall grows heavier, until moves that
// repair it at the price of others are accepted.
void Heuristic::weighViolations(bool lowered) {
    if (lowered || !desactivatedConstraintsExist()) {
        nbMovesWithoutLowering = 0;
        return;
    }
    if (++nbMovesWithoutLowering < violationWeightPeriod) return;
    nbMovesWithoutLowering = 0;
    dag->getPropagation().raiseViolatedWeights();
}

void Heuristic::updateBestSolution() {
    bestSolutionIterations = nbIterations;
    bestSolutionTime = getRunningTime();
    dag->saveSolutionIncrementally(bestSolution);
}

bool Heuristic::restartFrom(const Solution& start) {
    if (!dag->loadSolution(start)) return false;
    if (start.compare(*dag, bestSolution) > 0) updateBestSolution();
    restarted();
    return true;
}

bool Heuristic::isObjectiveImproved(unsigned int objective) const {
    unsigned int node = dag->getFixedFields().objectives()[objective];
    long long current = dag->newValue(node), committed = dag->currentValue(node);
    return dag->getFixedFields().directions()[objective] == Maximize ? current > committed : current < committed;
}

bool Heuristic::isObjectiveDegraded(unsigned int objective) const {
    unsigned int node = dag->getFixedFields().objectives()[objective];
    long long current = dag->newValue(node), committed = dag->currentValue(node);
    return dag->getFixedFields().directions()[objective] == Maximize ? current < committed : current > committed;
}

bool Heuristic::isConstraintsImproved() const {
    const Propagation& p = dag->getPropagation();
    return p.getWeightedCostChange() < 0;
}

bool Heuristic::isConstraintsDegraded() const {
    const Propagation& p = dag->getPropagation();
    return p.getWeightedCostChange() > 0;
}

bool Heuristic::desactivatedConstraintsExist() const {
    return dag->getPropagation().getActiveConstraints().sizeOut() != 0;
}

bool Heuristic::isObjectiveBoundReached(unsigned int objective) const {
    const DagFixedFields& fixed = dag->getFixedFields();
    unsigned int node = fixed.objectives()[objective];
    long long value = dag->currentValue(node);
    switch (fixed.directions()[objective]) {
        case Maximize: return value >= objectiveBounds[objective] || value >= fixed.upperBound(node);
        case Minimize: return value <= objectiveBounds[objective] || value <= fixed.lowerBound(node);
    }
    return true;
}

bool Heuristic::areObjectiveBoundsReached() const {
    if (desactivatedConstraintsExist()) return false;
    for (unsigned int i = 0; i <= optimizedObjective; ++i)
        if (!isObjectiveBoundReached(i)) return false;
    return true;
}

namespace {
template <class Counter>
unsigned long long sumOver(const std::vector<Move*>& moves, Counter counter) {
    unsigned long long total = 0;
    for (const Move* move : moves) total += (move->*counter)();
    return total;
}
}  // namespace

unsigned long long Heuristic::getNbAttempted() const { return sumOver(moves, &Move::getNbAttempted); }
unsigned long long Heuristic::getNbAccepted() const { return sumOver(moves, &Move::getNbAccepted); }
unsigned long long Heuristic::getNbRejected() const { return sumOver(moves, &Move::getNbRejected); }
unsigned long long Heuristic::getNbImprovements() const { return sumOver(moves, &Move::getNbImprovements); }
unsigned long long Heuristic::getNbInfeasibles() const { return sumOver(moves, &Move::getNbInfeasibles); }

unsigned int Heuristic::getRunningTime() const {
    return static_cast<unsigned int>(std::chrono::duration_cast<std::chrono::seconds>(clock.elapsed()).count());
}

void Heuristic::printStats(std::ostream* out) const {
    *out << "NbAttempted =" << getNbAttempted() << std::endl;
    *out << "NbAccepted =" << getNbAccepted() << std::endl;
    *out << "NbImproved =" << getNbImprovements() << std::endl;
    *out << "NbInfeasibles =" << getNbInfeasibles() << std::endl;
    for (const Move* move : moves) move->printStats(*out);
}
