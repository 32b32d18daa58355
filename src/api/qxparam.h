#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

class Quarrix;
struct SearchParams;

// The settings of one solver object. Setters need state Stopped, getters
// state Paused or Stopped.
class QXParam {
public:
    void setSeed(int seed);
    void setNbThreads(int nbThreads);
    void setAnnealingLevel(int level);
    void setVerbosity(int verbosity);
    void setTimeBetweenDisplays(int seconds);
    void setObjectiveBound(int i, int64_t bound);
    // Creates or replaces the entry.
    void setAdvancedParam(const std::string& name, int value);

    int getSeed() const;
    int getNbThreads() const;
    int getAnnealingLevel() const;
    int getVerbosity() const;
    int getTimeBetweenDisplays() const;
    int64_t getObjectiveBound(int i) const;
    int getAdvancedParam(const std::string& name) const;
    int getAdvancedParam(const std::string& name, int defaultValue) const;
    // Sums over the phases, 2147483647 (resp. the largest 64-bit value) with
    // no phase or when the sum overflows: no limit.
    int getTotalTimeLimit() const;
    int64_t getTotalIterationLimit() const;

    // Extends the bounds to nbObjectives, keeping the existing ones: a
    // constant objective is bounded by its value, any other is unbounded in
    // its direction. Called when the model is closed.
    void resizeObjectiveArrays(int nbObjectives);

    std::string toString() const;
    // Raises the error that a solve would raise for an advanced parameter
    // out of its range.
    void checkAdvancedParams() const;

private:
    friend class Quarrix;
    friend class QXSolution;
    explicit QXParam(Quarrix* solver);

    // What the search reads, its advanced parameters checked against their
    // ranges; raised from the solve before it changes anything.
    SearchParams searchParams() const;
    int totalTimeLimit() const;
    int64_t totalIterationLimit() const;

    Quarrix* solver;
    int32_t seed = 0;
    int32_t nbThreads = 2;
    int32_t annealingLevel = 1;
    int32_t timeBetweenDisplays = 1;  // seconds
    int32_t verbosity = 1;
    // Kept for the layout of the settings; the totals are computed from the
    // phases instead.
    int64_t iterationLimit;
    int32_t timeLimit;
    std::vector<int64_t> objectiveBounds;  // one per objective
    std::map<std::string, int32_t> advancedParams;
};
