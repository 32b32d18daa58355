#include "solver/kernel/parallelizer.h"

#include "api/kernelexception.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/heuristic.h"

#include <algorithm>
#include <chrono>

namespace {
const char* const SOURCE = "src/solver/kernel/parallelizer";
typedef boost::unique_lock<boost::shared_mutex> ExclusiveLock;
typedef boost::shared_lock<boost::shared_mutex> SharedLock;
}  // namespace

Parallelizer::~Parallelizer() {
    if (isStarted()) stop();
}

void Parallelizer::addHeuristic(Heuristic* heuristic) {
    if (isStarted()) throw KernelException(SOURCE, __LINE__, "addHeuristic", "You cannot add an heuristic during resolution");
    heuristics.push_back(heuristic);
    heuristic->addCallback(this);
}

void Parallelizer::removeHeuristic(Heuristic* heuristic) {
    if (isStarted())
        throw KernelException(SOURCE, __LINE__, "removeHeuristic", "You cannot remove an heuristic during resolution");
    auto it = std::find(heuristics.begin(), heuristics.end(), heuristic);
    if (it == heuristics.end()) return;
    heuristic->removeCallback(this);
    heuristics.erase(it);
}

void Parallelizer::clearHeuristics() {
    if (isStarted())
        throw KernelException(SOURCE, __LINE__, "clearHeuristics", "You cannot clear heuristics during resolution");
    for (Heuristic* heuristic : heuristics) heuristic->removeCallback(this);
    heuristics.clear();
}

Heuristic* Parallelizer::getHeuristic(unsigned int i) const {
    if (i >= heuristics.size()) throw KernelException(SOURCE, __LINE__, "getHeuristic", "Wrong heuristic number.");
    return heuristics[i];
}

Heuristic* Parallelizer::getRunningHeuristic() const {
    const unsigned int* index = threadIndex.get();
    return index == nullptr ? nullptr : heuristics[*index];
}

void Parallelizer::resetStates() {
    oneEnded = false;
    pauseRequested = false;
    attention.store(false, std::memory_order_release);
    firstEndedIterations = 0;
}

void Parallelizer::start() {
    if (heuristics.empty()) throw KernelException(SOURCE, __LINE__, "start", "No heuristic to start");
    if (isStarted()) throw KernelException(SOURCE, __LINE__, "start", "Heuristics already started");
    {
        ExclusiveLock lock(stateLock);
        resetStates();
        nbRunning = static_cast<int>(heuristics.size());
        nbPaused = 0;
        nbAtCheckpoint = 0;
    }
    threads.reserve(heuristics.size());
    try {
        for (unsigned int i = 0; i < heuristics.size(); ++i)
            threads.push_back(std::make_unique<boost::thread>([this, i] { startHeuristic(i); }));
    } catch (...) {
        // A thread that cannot start ends the solve. The started ones stop
        // at their next iteration (a stop before their run began would be
        // lost) and end before the failure goes on: a running thread may
        // not outlive this object.
        {
            ExclusiveLock lock(stateLock);
            nbRunning = static_cast<int>(threads.size());
            oneEnded = true;
            firstEndedIterations = 0;
            attention.store(true, std::memory_order_release);
        }
        stop();
        throw;
    }
}

void Parallelizer::startHeuristic(unsigned int i) {
    threadIndex.reset(new unsigned int(i));
    heuristics[i]->run();
}

void Parallelizer::join() {
    for (std::unique_ptr<boost::thread>& thread : threads) thread->join();
    threads.clear();
}

void Parallelizer::solve() {
    start();
    join();
}

void Parallelizer::stopHeuristics() {
    for (Heuristic* heuristic : heuristics) heuristic->stop();
}

void Parallelizer::stop() {
    stopHeuristics();
    // Paused threads must run again to see the stop.
    resume();
    releaseCheckpoint();
    join();
}

void Parallelizer::iterate() {
    if (checkpointPeriod != 0) checkpoint(heuristics[*threadIndex]);
    if (!attention.load(std::memory_order_acquire)) return;
    Heuristic* heuristic = heuristics[*threadIndex];
    bool pausing, ended;
    unsigned long long endedIterations;
    {
        SharedLock lock(stateLock);
        pausing = pauseRequested;
        ended = oneEnded;
        endedIterations = firstEndedIterations;
    }
    if (ended && heuristic->getNbIterations() >= endedIterations) {
        heuristic->stop();
        return;
    }
    if (!pausing) return;
    unsigned long long generation;
    {
        ExclusiveLock lock(stateLock);
        // The request may have been withdrawn (the pause already served).
        if (!pauseRequested) return;
        ++nbPaused;
        generation = resumeGeneration;
        stateCondition.notify_all();
    }
    boost::unique_lock<boost::mutex> lock(pauseMutex);
    while (resumeGeneration == generation) resumeCondition.wait(lock);
}

void Parallelizer::checkpoint(Heuristic* heuristic) {
    const unsigned long long n = heuristic->getNbIterations();
    // The last iteration ends the run instead: the thread ends there.
    if (n % checkpointPeriod != 0 || n >= heuristic->getIterationLimit()) return;
    unsigned long long generation;
    {
        ExclusiveLock lock(stateLock);
        // Equal effort: a thread that is to stop here does not wait first.
        if (oneEnded && n >= firstEndedIterations) return;
        ++nbAtCheckpoint;
        generation = checkpointGeneration;
        stateCondition.notify_all();
    }
    boost::unique_lock<boost::mutex> lock(pauseMutex);
    while (checkpointGeneration == generation) resumeCondition.wait(lock);
}

void Parallelizer::releaseCheckpoint() {
    ExclusiveLock lock(stateLock);
    if (nbAtCheckpoint == 0) return;
    nbAtCheckpoint = 0;
    boost::lock_guard<boost::mutex> pauseLock(pauseMutex);
    ++checkpointGeneration;
    resumeCondition.notify_all();
}

void Parallelizer::heuristicEnded() {
    {
        ExclusiveLock lock(stateLock);
        oneEnded = true;
        attention.store(true, std::memory_order_release);
        if (firstEndedIterations == 0)
            firstEndedIterations = static_cast<unsigned int>(heuristics[*threadIndex]->getNbIterations());
        --nbRunning;
        stateCondition.notify_all();
    }
    threadIndex.reset();
}

void Parallelizer::pause() {
    ExclusiveLock lock(stateLock);
    if (nbPaused == 0 && nbRunning > 0) {
        pauseRequested = true;
        attention.store(true, std::memory_order_release);
        while (nbHalted() < nbRunning) stateCondition.wait(lock);
    }
    // A pause also forgets the equal-effort state: after it the threads run
    // to their own limits again.
    resetStates();
}

void Parallelizer::resume() {
    ExclusiveLock lock(stateLock);
    if (nbPaused > 0 && nbRunning > 0) {
        nbPaused = 0;
        boost::lock_guard<boost::mutex> pauseLock(pauseMutex);
        ++resumeGeneration;
        resumeCondition.notify_all();
    }
}

bool Parallelizer::wait(unsigned int seconds) {
    return waitUntil(std::chrono::steady_clock::now() + std::chrono::seconds(seconds)) == WaitEnded;
}

Parallelizer::WaitOutcome Parallelizer::waitUntil(std::chrono::steady_clock::time_point deadline) {
    ExclusiveLock lock(stateLock);
    for (;;) {
        if (nbRunning == 0) return WaitEnded;
        if (nbAtCheckpoint >= nbRunning) return WaitCheckpoint;
        if (stateCondition.wait_until(lock, deadline) == std::cv_status::timeout) {
            if (nbRunning == 0) return WaitEnded;
            return nbAtCheckpoint >= nbRunning ? WaitCheckpoint : WaitTimedOut;
        }
    }
}

bool Parallelizer::someEnded() {
    SharedLock lock(stateLock);
    return isStarted() && nbRunning < static_cast<int>(heuristics.size());
}

ParallelizerState Parallelizer::getState() {
    SharedLock lock(stateLock);
    if (!isStarted()) return ParallelizerIdle;
    if (nbRunning == 0) return ParallelizerEnded;
    if (nbPaused > 0) return ParallelizerPaused;
    return ParallelizerRunning;
}

Heuristic* Parallelizer::getBestHeuristic() {
    ExclusiveLock lock(stateLock);
    if (heuristics.empty()) throw KernelException(SOURCE, __LINE__, "getBestHeuristic", "No heuristic to start");
    if (nbRunning != 0 && nbPaused <= 0 && nbAtCheckpoint < nbRunning)
        throw KernelException(SOURCE, __LINE__, "getBestHeuristic", "Solver must be paused or stopped to do this action");
    Heuristic* best = heuristics[0];
    // The reference starts at 0, not at heuristic 0's count: a tie with
    // heuristic 0 never replaces it.
    unsigned long long reference = 0;
    for (unsigned int i = 1; i < heuristics.size(); ++i) {
        Heuristic* candidate = heuristics[i];
        int comparison = candidate->getBestSolution().compare(*candidate->getDag(), best->getBestSolution());
        if (comparison > 0 || (comparison == 0 && candidate->getBestSolutionIterations() < reference)) {
            best = candidate;
            reference = candidate->getBestSolutionIterations();
        }
    }
    return best;
}
