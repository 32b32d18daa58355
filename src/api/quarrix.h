#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class AutonomousFixedFields;
class Parallelizer;
class QXModel;
class QXParam;
class QXPhase;
class QXSolution;
class QXStatistics;
class RankLink;
class SolveGraphs;
struct SearchParams;
class ThreadEnv;

enum class QXState : uint8_t { Modeling = 0, Running = 1, Paused = 2, Stopped = 3 };

// The entry object of the API. It owns the model, the parameters, the
// phases, the solution and the statistics, and keeps the solver state:
// Modeling until the model is closed, then Stopped; a solve moves it through
// Paused and Running and back to Stopped. Used on one thread only.
class Quarrix {
public:
    using DisplayCallback = void (*)(void* data);

    Quarrix();
    virtual ~Quarrix();
    Quarrix(const Quarrix&) = delete;
    Quarrix& operator=(const Quarrix&) = delete;

    QXState getState() const { return state; }
    bool isStateModeling() const { return state == QXState::Modeling; }
    bool isStateRunning() const { return state == QXState::Running; }
    bool isStatePaused() const { return state == QXState::Paused; }
    bool isStateStopped() const { return state == QXState::Stopped; }
    // Whether a search has been started at least once.
    bool isStarted() const;

    QXModel* getModel() const;
    QXParam* getParam() const;

    QXPhase* createPhase();
    QXPhase* getPhase(int i) const;
    int getNbPhases() const;
    QXSolution* getSolution() const;
    // The statistics of the whole solve.
    QXStatistics* getStatistics() const;
    bool hasSolution() const { return solution != nullptr; }

    // Runs the phases in order; only from state Stopped.
    void solve();
    // The solve over given compiled graphs: solve() passes the model's.
    void solveOn(SolveGraphs& graphs);
    // Asks the running solve to end after the current phase; for the display
    // callback, which runs in state Paused. Does nothing in state Stopped.
    void stop();

    // The callback called at each display period of a solve, with its data.
    // Initially the solver's own display with the solver as data; a null
    // callback means no display.
    void setDisplayCallback(DisplayCallback callback, void* data);
    DisplayCallback getDisplayCallback() const { return callback; }
    void* getDisplayCallbackData() const { return callbackData; }
    // The default callback: data is the Quarrix; prints getInfo() when the
    // verbosity is not 0.
    static void display(void* data);

    std::string toString() const;
    // One progress line of the running solve.
    std::string getInfo() const;
    // The best solution's objectives, or its infeasibility.
    std::string getObjectiveInfo() const;
    // Effort and outcome of the last solve.
    std::string getEndResolutionInfo() const;
    // Sums of the limits of phases 0..i, saturating at "no limit".
    int computePhaseTimeLimit(int i) const;
    int64_t computePhaseIterationLimit(int i) const;
    // Zeroes the global statistics and those of every phase.
    void clearStats();

    // The other processes of a search spread over several (not owned; it
    // must outlive the solves). Each searches with its own seed; they
    // exchange their best solutions, end every phase together and sum
    // their counters into the global statistics. Null: this process alone.
    void setRankLink(RankLink* rankLink) { link = rankLink; }

private:
    friend class QXModel;
    friend class QXParam;
    friend class QXStatistics;
    friend class QXSolution;
    // Lets the unit tests put the solver in the states that only a search
    // reaches, to check the guards there.
    friend class QuarrixTestAccess;

    // Called by QXModel::close once the model is valid.
    void closeModel();
    // Threads, graphs and starting points of a solve.
    void createSolver(SolveGraphs& graphs, const SearchParams& params);
    void solvePhase(int i);
    // The phase's search loop with other ranks: displays, exchanges, and
    // the exchange that ends the phase on every rank.
    void searchWithRanks(int i, bool byIterations);
    // One exchange, with every local thread halted; true when the phase
    // ends on every rank.
    bool exchange(int i, bool ending);
    // Statistics of phase i and of the solve, and the best solution back
    // into the API solution; with every search thread paused or ended.
    void update(int i);
    void deleteSearch();
    // After the statistics: how many moves an arithmetic error refused
    // (empty when none).
    std::string arithmeticRefusalsInfo() const;

    QXState state = QXState::Modeling;
    bool stopRequested = false;  // never cleared: a later solve stops early too
    std::unique_ptr<QXModel> model;
    std::unique_ptr<QXParam> param;
    DisplayCallback callback;
    void* callbackData;
    std::vector<std::unique_ptr<QXPhase>> phases;
    // The search objects of the last solve, over graphs that the model owns:
    // deleted before the model.
    SolveGraphs* graphs = nullptr;
    std::unique_ptr<AutonomousFixedFields> autonomousFixedFields;
    std::vector<std::unique_ptr<ThreadEnv>> threadEnvs;
    std::unique_ptr<Parallelizer> parallelizer;
    std::unique_ptr<QXSolution> solution;  // made when the model is closed
    std::unique_ptr<QXStatistics> statistics;

    RankLink* link = nullptr;
    // The exchange's advanced parameters, read at the start of a solve.
    int exchangeSeconds = 0;
    int exchangeIterations = 0;
    int restartShare = 0;
    // The other ranks' counters as of the last exchange, which the global
    // statistics add to this rank's own.
    struct Counters {
        int64_t nbIterations = 0, nbMoves = 0, nbAccepted = 0, nbImprovements = 0, nbInfeasibles = 0;
    } otherRanks;
};
