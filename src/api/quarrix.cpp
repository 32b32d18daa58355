#include "api/quarrix.h"

#include "api/apierrors.h"
#include "api/qxmodel.h"
#include "api/qxparam.h"
#include "api/qxphase.h"
#include "api/qxsolution.h"
#include "api/qxstatistics.h"
#include "api/ranklink.h"
#include "api/solvegraphs.h"
#include "api/compiledmodel.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/greedysolution.h"
#include "solver/kernel/largepages.h"
#include "solver/kernel/constants.h"
#include "solver/kernel/parallelizer.h"
#include "solver/kernel/portfolio.h"
#include "solver/kernel/quickrand.h"
#include "solver/kernel/solution.h"
#include "solver/kernel/threadenv.h"
#include "solver/move/autonomousfixedfields.h"

#include <boost/thread/lock_guard.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/thread/thread.hpp>
#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <algorithm>
#include <atomic>
#include <exception>
#include <chrono>
#include <iostream>

namespace {
const char* const UNIT = "src/api/quarrix";
}

Quarrix::Quarrix()
    : model(new QXModel(this)),
      param(new QXParam(this)),
      callback(&Quarrix::display),
      callbackData(this),
      statistics(new QXStatistics(this, nullptr)) {}

// The search objects point into graphs that the model owns.
Quarrix::~Quarrix() { deleteSearch(); }

void Quarrix::deleteSearch() {
    parallelizer.reset();
    threadEnvs.clear();
    autonomousFixedFields.reset();
}

bool Quarrix::isStarted() const { return parallelizer != nullptr; }

QXModel* Quarrix::getModel() const {
    ApiErrors::checkNotRunning(this, QX_HERE);
    return model.get();
}

QXParam* Quarrix::getParam() const {
    ApiErrors::checkNotRunning(this, QX_HERE);
    return param.get();
}

QXPhase* Quarrix::createPhase() {
    ApiErrors::checkStopped(this, QX_HERE);
    phases.emplace_back(new QXPhase(this));
    return phases.back().get();
}

QXPhase* Quarrix::getPhase(int i) const {
    ApiErrors::checkPausedOrStopped(this, QX_HERE);
    ApiErrors::checkIndex(i, static_cast<int64_t>(phases.size()), "phase", QX_HERE);
    return phases[i].get();
}

int Quarrix::getNbPhases() const {
    ApiErrors::checkPausedOrStopped(this, QX_HERE);
    return static_cast<int>(phases.size());
}

QXSolution* Quarrix::getSolution() const {
    ApiErrors::checkPausedOrStopped(this, QX_HERE);
    return solution.get();
}

QXStatistics* Quarrix::getStatistics() const {
    ApiErrors::checkPausedOrStopped(this, QX_HERE);
    return statistics.get();
}

void Quarrix::closeModel() {
    state = QXState::Stopped;
    solution.reset(new QXSolution(this));
    param->resizeObjectiveArrays(model->getNbObjectives());
}

void Quarrix::solve() {
    ApiErrors::checkStopped(this, QX_HERE);
    solveOn(*model->getCompiledModel());
}

void Quarrix::solveOn(SolveGraphs& compiled) {
    ApiErrors::checkStopped(this, QX_HERE);
    const SearchParams params = param->searchParams();
    exchangeSeconds = params.get(ExchangePeriod);
    exchangeIterations = params.get(ExchangeIterationPeriod);
    restartShare = params.get(RestartShare);
    otherRanks = Counters();
    deleteSearch();
    createSolver(compiled, params);
    clearStats();
    if (phases.empty()) createPhase();  // no limit, the last objective
    const bool verbose = param->verbosity > 0;
    if (verbose) std::cout << std::endl << toString();
    state = QXState::Paused;
    for (size_t i = 0; i < phases.size() && !stopRequested; ++i) solvePhase(static_cast<int>(i));
    state = QXState::Stopped;
    if (verbose) std::cout << getEndResolutionInfo() << std::endl << arithmeticRefusalsInfo() << std::endl;
}

// A move whose evaluation divides by zero or takes the square root of a
// negative number is refused and the search goes on; the user learns once,
// at the end, that the model is undefined on part of the space.
std::string Quarrix::arithmeticRefusalsInfo() const {
    unsigned long long refused = 0;
    for (const auto& env : threadEnvs) refused += env->getDag()->getPropagation().getNbArithmeticRefusals();
    if (refused == 0) return "";
    return std::to_string(refused) + (refused == 1 ? " move was" : " moves were") +
           " refused for an arithmetic error (division by zero or square root of a negative number)\n";
}

void Quarrix::createSolver(SolveGraphs& compiled, const SearchParams& params) {
    graphs = &compiled;
#ifdef __GLIBC__
    // What closing the model freed goes back to the system: the search's
    // large arrays are mapped apart and would not reuse it.
    malloc_trim(0);
#endif
    largepages::setEnabled(params.get(LargePagesEnabled) != 0);
    parallelizer.reset(new Parallelizer());
    const unsigned int seed = static_cast<unsigned int>(param->seed);
    const unsigned int baseSeed = link ? Portfolio::rankSeed(seed, link->rank()) : seed;
    Solution start;
    compiled.convertSolution(solution.get(), &start);
    const unsigned int nbThreads = static_cast<unsigned int>(param->nbThreads);
    compiled.createCopies(nbThreads - 1);
    const DagFixedFields& fixed = compiled.getDag(0)->getFixedFields();
    autonomousFixedFields.reset(new AutonomousFixedFields(fixed));
    threadEnvs.resize(nbThreads);
    // Only the first failure is kept, and the threads not yet prepared then
    // give up: each kept exception holds its object, and a thousand
    // out-of-memory ones would exhaust the little memory the runtime keeps
    // for throwing.
    std::exception_ptr failure;
    boost::mutex failureMutex;
    std::atomic<bool> failed{false};
    auto prepare = [&](unsigned int t) {
        if (failed.load(std::memory_order_acquire)) return;
        try {
            // Each thread draws its start and its search from its own
            // generator: the first thread's run is a one-thread run's.
            Quickrand rand(t == 0 ? baseSeed : Portfolio::rankSeed(baseSeed ^ 0x6A09E667u, static_cast<int>(t)));
            GreedySolution greedy(&rand);
            Dag* dag = compiled.getDag(t);
            // The user's values break a constraint (or cannot be evaluated):
            // a greedy start instead, and failing that every constraint
            // soft, to be worked back in.
            const bool loaded = dag->loadSolution(start);
            // A time-indexed schedule is placed job after job first: the
            // greedy pass alone leaves jobs overlapping.
            if ((!loaded || dag->getPropagation().getViolatedConstraints().sizeIn() != 0) &&
                !(params.get(KIntervalEnabled) != 0 && greedy.placeIntervals(dag, *autonomousFixedFields)) &&
                !greedy.computeSolution(dag))
                dag->getPropagation().desactivateAllConstraints();
            const unsigned int threadSeed = rand.nextInt(2147483647u);
            threadEnvs[t].reset(new ThreadEnv(params, dag, autonomousFixedFields.get(), threadSeed));
        } catch (...) {
            boost::lock_guard<boost::mutex> lock(failureMutex);
            if (!failure) failure = std::current_exception();
            failed.store(true, std::memory_order_release);
        }
    };
    // The threads prepare their starts side by side: on a large model each
    // greedy pass and each search structure takes a good part of a second.
    // A thread that cannot be started prepares here, after the others.
    std::vector<std::unique_ptr<boost::thread>> workers;
    workers.reserve(nbThreads);
    // Reserved: a failure to grow it in the handler below would leave the
    // started workers unjoined.
    std::vector<unsigned int> here{0};
    here.reserve(nbThreads);
    for (unsigned int t = 1; t < nbThreads; ++t) {
        try {
            workers.push_back(std::make_unique<boost::thread>([&prepare, t] { prepare(t); }));
        } catch (...) {
            here.push_back(t);
        }
    }
    for (unsigned int t : here) prepare(t);
    for (std::unique_ptr<boost::thread>& worker : workers) worker->join();
    if (failure) {
        threadEnvs.clear();
        std::rethrow_exception(failure);
    }
    for (const std::unique_ptr<ThreadEnv>& env : threadEnvs) parallelizer->addHeuristic(env->getHeuristic());
}

int Quarrix::computePhaseTimeLimit(int i) const {
    int64_t total = 0;
    for (int k = 0; k <= i && k < static_cast<int>(phases.size()); ++k) {
        total += phases[k]->timeLimit;
        if (total < 0 || total >= QXLimits::NO_TIME_LIMIT) return QXLimits::NO_TIME_LIMIT;
    }
    return static_cast<int>(total);
}

int64_t Quarrix::computePhaseIterationLimit(int i) const {
    int64_t total = 0;
    for (int k = 0; k <= i && k < static_cast<int>(phases.size()); ++k) {
        int64_t limit = phases[k]->iterationLimit;
        if (limit < 0 || total > QXLimits::NO_ITERATION_LIMIT - limit) return QXLimits::NO_ITERATION_LIMIT;
        total += limit;
    }
    return total;
}

void Quarrix::solvePhase(int i) {
    // The limits are sums from the start of the solve: what remains of them
    // after the earlier phases, the time to the nanosecond.
    const int timeLimit = computePhaseTimeLimit(i);
    std::chrono::nanoseconds remainingTime =
        std::chrono::seconds(timeLimit) - std::chrono::nanoseconds(statistics->runningNanoseconds);
    const bool timed = timeLimit != QXLimits::NO_TIME_LIMIT;
    const int64_t iterationLimit = computePhaseIterationLimit(i);
    // This rank's own iterations: the limits hold per thread.
    int64_t remainingIterations = iterationLimit - (statistics->nbIterations - otherRanks.nbIterations);
    bool skipped = (timed && remainingTime.count() <= 0) || remainingIterations <= 0;
    if (link) {
        // Every rank runs the phase or none does, as rank 0's clock says;
        // a rank whose own clock is past the limit ends at once.
        std::vector<long long> word{skipped ? 1 : 0};
        link->broadcast(word, 0);
        skipped = word[0] != 0;
        remainingTime = std::max(remainingTime, std::chrono::nanoseconds(0));
        remainingIterations = std::max<int64_t>(remainingIterations, 0);
    }
    if (skipped) return;
    if (param->verbosity > 0) std::cout << "Phase " << i << ":" << std::endl << std::endl;
    for (unsigned int t = 0; t < parallelizer->getNbHeuristics(); ++t) {
        Heuristic* heuristic = parallelizer->getHeuristic(t);
        heuristic->init();
        heuristic->setOptimizedObjective(static_cast<unsigned int>(phases[i]->optimizedObjective));
        if (timed) heuristic->setTimeLimit(std::chrono::duration_cast<SearchClock::Clock::duration>(remainingTime));
        heuristic->setIterationLimit(static_cast<unsigned long long>(remainingIterations));
    }
    // Exchanges at fixed iteration counts make a run on iteration limits
    // reproducible; under a time limit they follow the clock.
    const bool byIterations =
        link && (exchangeIterations > 0 || (!timed && iterationLimit != QXLimits::NO_ITERATION_LIMIT));
    parallelizer->setCheckpointPeriod(
        byIterations ? Portfolio::iterationPeriod(exchangeIterations, static_cast<unsigned long long>(remainingIterations))
                     : 0);
    state = QXState::Running;
    parallelizer->start();
    if (link) searchWithRanks(i, byIterations);
    while (!link && parallelizer->getState() == ParallelizerRunning) {
        if (parallelizer->wait(static_cast<unsigned int>(param->timeBetweenDisplays))) break;
        if (callback == nullptr) continue;
        parallelizer->pause();
        state = QXState::Paused;
        update(i);
        callback(callbackData);
        if (stopRequested) break;
        state = QXState::Running;
        parallelizer->resume();
    }
    parallelizer->stop();
    state = QXState::Paused;
    update(i);
    if (callback != nullptr) callback(callbackData);
}

void Quarrix::searchWithRanks(int i, bool byIterations) {
    typedef std::chrono::steady_clock Clock;
    const Clock::duration displayPeriod = std::chrono::seconds(param->timeBetweenDisplays);
    const Clock::duration exchangePeriod = std::chrono::seconds(exchangeSeconds);
    Clock::time_point nextDisplay = Clock::now() + displayPeriod;
    Clock::time_point nextExchange = Clock::now() + exchangePeriod;
    for (;;) {
        // Checkpoint exchanges wake the wait themselves.
        Clock::time_point deadline = byIterations ? nextDisplay : std::min(nextDisplay, nextExchange);
        const Parallelizer::WaitOutcome outcome = parallelizer->waitUntil(deadline);
        const Clock::time_point now = Clock::now();
        if (outcome == Parallelizer::WaitTimedOut && (byIterations || now < nextExchange)) {
            nextDisplay = now + displayPeriod;
            // Another rank's failure ends the run now, not at the next
            // exchange, which may be far.
            link->takeFailures();
            if (callback == nullptr) continue;
            parallelizer->pause();
            state = QXState::Paused;
            update(i);
            callback(callbackData);
            // A stop asked by the display ends the phase on every rank
            // through an exchange, now.
            if (!stopRequested) {
                state = QXState::Running;
                parallelizer->resume();
                continue;
            }
        } else if (outcome == Parallelizer::WaitTimedOut) {
            parallelizer->pause();
        }
        state = QXState::Paused;
        if (exchange(i, stopRequested || parallelizer->someEnded())) return;
        nextExchange = Clock::now() + exchangePeriod;
        state = QXState::Running;
        parallelizer->resume();
        parallelizer->releaseCheckpoint();
    }
}

bool Quarrix::exchange(int i, bool ending) {
    phases[i]->statistics->update();
    const Solution& mine = parallelizer->getBestHeuristic()->getBestSolution();
    const std::vector<long long>& objectives = mine.getObjectiveValues();
    const std::size_t nbObjectives = objectives.size();
    // A rank's word: whether it ends the phase and whether a stop asked it,
    // its best standing, then its own counters (its phases' sums).
    std::vector<long long> word{ending ? 1 : 0, stopRequested ? 1 : 0,
                                static_cast<long long>(mine.getNbViolatedConstraints())};
    word.insert(word.end(), objectives.begin(), objectives.end());
    Counters own;
    for (const auto& phase : phases) {
        own.nbIterations += phase->statistics->nbIterations;
        own.nbMoves += phase->statistics->nbMoves;
        own.nbAccepted += phase->statistics->nbAccepted;
        own.nbImprovements += phase->statistics->nbImprovements;
        own.nbInfeasibles += phase->statistics->nbInfeasibles;
    }
    word.insert(word.end(), {own.nbIterations, own.nbMoves, own.nbAccepted, own.nbImprovements, own.nbInfeasibles});
    const std::vector<long long> all = link->allGather(word);

    const std::size_t width = word.size();
    const int me = link->rank(), nbRanks = link->size();
    bool end = false, stop = false;
    std::vector<Portfolio::Standing> standings;
    otherRanks = Counters();
    for (int r = 0; r < nbRanks; ++r) {
        const long long* w = &all[r * width];
        end = end || w[0] != 0;
        stop = stop || w[1] != 0;
        standings.push_back({static_cast<unsigned long long>(w[2]), std::vector<long long>(w + 3, w + 3 + nbObjectives)});
        if (r == me) continue;
        const long long* counters = w + 3 + nbObjectives;
        otherRanks.nbIterations += counters[0];
        otherRanks.nbMoves += counters[1];
        otherRanks.nbAccepted += counters[2];
        otherRanks.nbImprovements += counters[3];
        otherRanks.nbInfeasibles += counters[4];
    }
    const std::vector<ObjectiveDirection>& directions = graphs->getDag(0)->getFixedFields().directions();
    const int best = Portfolio::bestRank(standings, directions);
    // No restart at the end: rank 0 takes the best solution for the result.
    std::vector<bool> restarting(nbRanks, false);
    if (!end) restarting = Portfolio::restarters(standings, best, restartShare, directions);
    const bool anyRestart = std::find(restarting.begin(), restarting.end(), true) != restarting.end();
    const bool toRankZero = end && best != 0;
    if (anyRestart || toRankZero) {
        Solution incoming;
        if (me == best) incoming.variables() = mine.getVariableValues();
        link->broadcast(incoming.variables(), best);
        incoming.objectives() = standings[best].objectives;
        incoming.setNbViolatedConstraints(standings[best].violated);
        if (restarting[me]) {
            for (unsigned int t = 0; t < parallelizer->getNbHeuristics(); ++t) {
                Heuristic* heuristic = parallelizer->getHeuristic(t);
                if (incoming.compare(*heuristic->getDag(), heuristic->getBestSolution()) > 0)
                    heuristic->restartFrom(incoming);
            }
        } else if (toRankZero && me == 0) {
            parallelizer->getHeuristic(0)->restartFrom(incoming);
        }
    }
    if (stop) stopRequested = true;
    return end;
}

void Quarrix::update(int i) {
    phases[i]->statistics->update();
    statistics->update();
    Heuristic* best = parallelizer->getBestHeuristic();
    graphs->convertBackSolution(&best->getBestSolution(), solution.get());
}

void Quarrix::stop() {
    ApiErrors::checkPausedOrStopped(this, QX_HERE);
    ApiErrors::checkStarted(this, QX_HERE);
    if (isStateStopped()) return;
    // Paused inside a solve (the display callback): the phase loop ends
    // when the callback returns, and no further phase starts.
    stopRequested = true;
    parallelizer->stop();
}

void Quarrix::setDisplayCallback(DisplayCallback newCallback, void* data) {
    ApiErrors::checkNotRunning(this, QX_HERE);
    callback = newCallback;
    callbackData = data;
}

void Quarrix::display(void* data) {
    const Quarrix* solver = static_cast<const Quarrix*>(data);
    if (solver->param->verbosity != 0) std::cout << solver->getInfo() << std::endl;
}

std::string Quarrix::toString() const {
    ApiErrors::checkNotRunning(this, QX_HERE);
    std::string text = model->toString() + "\n" + param->toString() + "\nPhases:\n";
    if (phases.empty()) text += "  (no phases)\n";
    for (size_t i = 0; i < phases.size(); ++i)
        text += "  Phase " + std::to_string(i) + ": " + phases[i]->toString() + "\n";
    return text + "\n";
}

std::string Quarrix::getInfo() const {
    ApiErrors::checkPausedOrStopped(this, QX_HERE);
    ApiErrors::checkStarted(this, QX_HERE);
    return "[" + std::to_string(statistics->runningTime) + " sec, " + std::to_string(statistics->nbIterations) +
           " itr]: " + getObjectiveInfo() + ", " + statistics->getInfo() + "\n";
}

std::string Quarrix::getObjectiveInfo() const {
    const Solution& best = parallelizer->getBestHeuristic()->getBestSolution();
    if (best.getNbViolatedConstraints() != 0)
        return "infeas = (" + std::to_string(best.getNbViolatedConstraints()) + ")";
    std::string text = "obj = (";
    const std::vector<long long>& values = best.getObjectiveValues();
    for (size_t i = 0; i < values.size(); ++i) text += (i ? ", " : "") + std::to_string(values[i]);
    return text + ")";
}

std::string Quarrix::getEndResolutionInfo() const {
    static const char* const STATUS[] = {"Infeasible solution: ", "Feasible solution: ", "Optimal solution: "};
    return std::to_string(statistics->nbIterations) + " iterations, " + std::to_string(statistics->nbMoves) +
           " moves performed in " + std::to_string(statistics->runningTime) + " seconds\n" +
           STATUS[static_cast<int>(solution->getStatus())] + getObjectiveInfo();
}

void Quarrix::clearStats() {
    statistics->init();
    for (auto& phase : phases) phase->statistics->init();
}
