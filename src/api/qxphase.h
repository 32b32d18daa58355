#pragma once

#include <cstdint>
#include <memory>
#include <string>

class Quarrix;
class QXStatistics;

// One stage of a solve: it optimizes one objective until the sums of the
// time and iteration limits of the phases up to it are reached, counted from
// the start of the solve. Made by Quarrix::createPhase in state Stopped.
class QXPhase {
public:
    ~QXPhase();

    void setTimeLimit(int seconds);
    void setIterationLimit(int64_t iterations);
    void setOptimizedObjective(int i);

    int getTimeLimit() const;
    int64_t getIterationLimit() const;
    int getOptimizedObjective() const;
    QXStatistics* getStatistics() const;

    std::string toString() const;

private:
    friend class Quarrix;
    friend class QXParam;
    friend class QXStatistics;
    explicit QXPhase(Quarrix* solver);

    Quarrix* solver;
    std::unique_ptr<QXStatistics> statistics;
    int32_t timeLimit;           // seconds; no limit by default
    int64_t iterationLimit;      // no limit by default
    int32_t optimizedObjective;  // default: the last objective
};
