#pragma once

#include "solver/kernel/heuristiccallback.h"

#include <boost/thread/condition_variable.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/thread/shared_mutex.hpp>
#include <boost/thread/thread.hpp>
#include <boost/thread/tss.hpp>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <vector>

class Heuristic;

// What the solver object learns of the search threads.
enum ParallelizerState { ParallelizerIdle = 0, ParallelizerRunning = 1, ParallelizerPaused = 2, ParallelizerEnded = 3 };

// Runs one heuristic per thread and coordinates them: pause and resume
// (for the display), stop, equal-effort stopping (once one thread ends, the
// others stop at the same iteration count) and the choice of the best
// heuristic. Search threads read the shared flags under a shared lock once
// per iteration; every writer takes it exclusively; nobody waits holding it.
class Parallelizer : public HeuristicCallback {
public:
    Parallelizer() = default;
    ~Parallelizer() override;
    Parallelizer(const Parallelizer&) = delete;
    Parallelizer& operator=(const Parallelizer&) = delete;

    void addHeuristic(Heuristic* heuristic);
    void removeHeuristic(Heuristic* heuristic);
    void clearHeuristics();
    Heuristic* getHeuristic(unsigned int i) const;
    unsigned int getNbHeuristics() const { return static_cast<unsigned int>(heuristics.size()); }
    // The heuristic of the calling search thread, null elsewhere.
    Heuristic* getRunningHeuristic() const;

    void start();
    void resetStates();
    void join();
    void solve();
    void stop();
    void stopHeuristics();
    void pause();
    void resume();
    // Waits until every thread has ended or `seconds` have passed on the
    // monotonic clock; true when the search has ended.
    bool wait(unsigned int seconds);
    // Checkpoints: with a period p, each thread stops after every p-th
    // iteration (short of its iteration limit) and waits there until
    // releaseCheckpoint(), so that whatever the main thread does then
    // happens at the same point of every thread's trajectory. 0: none.
    // Set before start().
    void setCheckpointPeriod(unsigned long long period) { checkpointPeriod = period; }
    void releaseCheckpoint();
    enum WaitOutcome { WaitEnded, WaitCheckpoint, WaitTimedOut };
    // Waits until every thread has ended, every running thread waits at a
    // checkpoint, or the deadline.
    WaitOutcome waitUntil(std::chrono::steady_clock::time_point deadline);
    ParallelizerState getState();
    // Whether some thread's run has ended (its limit, or its bounds).
    bool someEnded();
    Heuristic* getBestHeuristic();

    void heuristicStarted() override {}
    void iterate() override;
    void heuristicEnded() override;

private:
    void startHeuristic(unsigned int i);
    void checkpoint(Heuristic* heuristic);
    // Threads that are not searching: paused, or waiting at a checkpoint.
    int nbHalted() const { return nbPaused + nbAtCheckpoint; }
    bool isStarted() const { return !threads.empty(); }

    std::vector<Heuristic*> heuristics;
    boost::shared_mutex stateLock;
    boost::mutex pauseMutex;
    boost::condition_variable resumeCondition;
    // Waited on with stateLock held exclusively (released while waiting):
    // told whenever a thread pauses or ends. The standard one, for its
    // timed waits on the monotonic clock.
    std::condition_variable_any stateCondition;
    boost::thread_specific_ptr<unsigned int> threadIndex;
    bool oneEnded = false;
    bool pauseRequested = false;
    // oneEnded || pauseRequested, written with them under the exclusive
    // lock and read without any lock: the search threads take the shared
    // lock only when one of the two may be set, not at every iteration
    // (an uncontended lock and unlock cost as much as a small move).
    std::atomic<bool> attention{false};
    int nbRunning = 0;
    int nbPaused = 0;
    unsigned int firstEndedIterations = 0;
    // Bumped at each resume, so a paused thread knows its wake-up is real.
    unsigned long long resumeGeneration = 0;
    unsigned long long checkpointPeriod = 0;
    int nbAtCheckpoint = 0;
    // Bumped at each release, as resumeGeneration is at each resume.
    unsigned long long checkpointGeneration = 0;
    std::vector<std::unique_ptr<boost::thread>> threads;
};
