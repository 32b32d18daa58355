#pragma once

#include "solver/kernel/heuristiccallback.h"
#include "solver/kernel/move.h"
#include "solver/kernel/quickrand.h"
#include "solver/kernel/searchclock.h"
#include "solver/kernel/solution.h"
#include "solver/kernel/constants.h"

#include <atomic>
#include <ostream>
#include <vector>

class Dag;

// The local-search driver of one thread: draws a move per iteration from a
// lottery weighted by the moves' util rates, lets it change the Dag, has the
// subclass judge the evaluated change, keeps the best solution, and stops on
// its limits, on stop() or when the objective bounds are reached.
// The Dag must outlive the heuristic.
class Heuristic {
public:
    explicit Heuristic(Dag* dag);
    virtual ~Heuristic();
    Heuristic(const Heuristic&) = delete;
    Heuristic& operator=(const Heuristic&) = delete;

    virtual void printStats(std::ostream* out) const;
    // One search step: draw, modify, eval, decide, update.
    virtual void iterate() = 0;
    // The verdict on the evaluated move; `evaluated` is eval's result.
    virtual MoveExitCode decide(bool evaluated) = 0;

    // Limits and optimized objective back to their defaults; move counters
    // cleared.
    void init();

    // The heuristic owns its moves.
    void addMove(Move* move);
    void removeMove(Move* move);
    void clearMoves();
    Move* getMove(unsigned int i) const;
    unsigned int getNbMoves() const { return static_cast<unsigned int>(moves.size()); }
    unsigned int moveIndex(const Move* move) const;

    void addCallback(HeuristicCallback* callback) { callbacks.push_back(callback); }
    void removeCallback(HeuristicCallback* callback);

    // Whole seconds; QXLimits::NO_TIME_LIMIT means none.
    void setTimeLimit(unsigned int seconds);
    // Any duration, such as what remains of a phase's limit.
    void setTimeLimit(SearchClock::Clock::duration limit) { timeLimit = limit; }
    // Whole seconds, rounded down; NO_TIME_LIMIT when there is none.
    unsigned int getTimeLimit() const;
    void setIterationLimit(unsigned long long limit) { iterationLimit = limit; }
    unsigned long long getIterationLimit() const { return iterationLimit; }
    void setSeed(unsigned int value) { seed = value; }
    // While the solution is infeasible: after this many built moves in a
    // row that did not lower the weighted violation cost, the violated
    // constraints weigh one unit more. 0 keeps every weight at 1.
    void setViolationWeightPeriod(unsigned int period) { violationWeightPeriod = period; }
    unsigned int getSeed() const { return seed; }
    void setOptimizedObjective(unsigned int objective);
    unsigned int getOptimizedObjective() const { return optimizedObjective; }
    void setObjectiveBound(unsigned int objective, long long bound);
    long long getObjectiveBound(unsigned int objective) const;

    void run();
    // May be called from another thread: takes effect after the iteration
    // under way.
    void stop() { stopped.store(true, std::memory_order_relaxed); }
    // Reads the clock only every so many iterations (SearchClock).
    bool isFinished() const;
    // The counter and the callbacks of one iteration, for external drivers.
    void nextIteration();
    void buildMovesArray();
    void updateBestSolution();
    // Moves the search to `start` (a solution of the same model, with its
    // objectives and violations), keeping the counters, the moves' rates and
    // the generator; it becomes the best solution when it is better. With
    // the thread paused. False when it cannot be evaluated (nothing changes).
    bool restartFrom(const Solution& start);

    // Current (evaluated) against committed state.
    bool isObjectiveImproved(unsigned int objective) const;
    bool isObjectiveDegraded(unsigned int objective) const;
    bool isConstraintsImproved() const;
    bool isConstraintsDegraded() const;
    bool desactivatedConstraintsExist() const;
    bool isObjectiveBoundReached(unsigned int objective) const;
    bool areObjectiveBoundsReached() const;

    unsigned long long getNbAttempted() const;
    unsigned long long getNbAccepted() const;
    unsigned long long getNbRejected() const;
    unsigned long long getNbImprovements() const;
    unsigned long long getNbInfeasibles() const;
    unsigned long long getNbIterations() const { return nbIterations; }
    // Time since run() started, or that run's length once it has ended; in
    // whole seconds, rounded down, and as a duration.
    unsigned int getRunningTime() const;
    SearchClock::Clock::duration getRunningDuration() const { return clock.elapsed(); }
    const Solution& getBestSolution() const { return bestSolution; }
    unsigned int getBestSolutionTime() const { return bestSolutionTime; }
    unsigned long long getBestSolutionIterations() const { return bestSolutionIterations; }
    Dag* getDag() const { return dag; }
    Quickrand& getQuickrand() { return quickrand; }

protected:
    // The lottery's draw of this iteration.
    Move* drawMove() { return movesArray[quickrand.nextInt(static_cast<unsigned int>(movesArray.size()))]; }
    // The shared body of an iteration; returns the verdict (infeasible when
    // the move could not be built).
    MoveExitCode applyMove(Move* move);
    void weighViolations(bool lowered);
    // What a subclass keeps of the search's past, after restartFrom.
    virtual void restarted() {}

    Dag* dag;
    std::vector<HeuristicCallback*> callbacks;
    unsigned int seed = 0;
    std::atomic<bool> stopped{false};
    Quickrand quickrand;
    std::vector<long long> objectiveBounds;
    unsigned int optimizedObjective;
    SearchClock::Clock::duration timeLimit;
    unsigned long long iterationLimit;
    std::vector<Move*> moves;
    std::vector<Move*> movesArray;
    // Advanced by isFinished(), on the search's thread only.
    mutable SearchClock clock;
    unsigned long long nbIterations = 0;
    // Whether the last applyMove built its move.
    bool moveBuilt = false;
    unsigned int violationWeightPeriod = 0;
    unsigned int nbMovesWithoutLowering = 0;
    unsigned int bestSolutionTime = 0;
    unsigned long long bestSolutionIterations = 0;
    Solution bestSolution;
};
