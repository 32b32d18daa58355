#pragma once

#include <cstdint>
#include <string>

class Quarrix;
class QXPhase;

// Counters of a search: one per phase, and one for the whole solve (no
// phase), which sums the phases'. Getters need state Paused or Stopped.
class QXStatistics {
public:
    int getRunningTime() const;  // seconds
    int64_t getNbIterations() const;
    int64_t getNbMoves() const;
    int64_t getNbAcceptedMoves() const;
    int64_t getNbImprovingMoves() const;
    int64_t getNbInfeasibleMoves() const;
    int64_t getNbRejectedMoves() const;
    // 100 * count / moves; 0 with no move.
    double getPercentAcceptedMoves() const;
    double getPercentImprovingMoves() const;
    double getPercentInfeasibleMoves() const;
    double getPercentRejectedMoves() const;

    void init();
    // A phase's statistics gather its threads' heuristics; the global ones
    // sum the phases'.
    void update();

    // The counters on one line, for the progress line of a running solve.
    std::string getInfo() const;
    std::string toString() const;

private:
    friend class Quarrix;
    friend class QXPhase;
    friend class QXStatisticsTestAccess;
    QXStatistics(Quarrix* solver, QXPhase* phase);

    void updatePhase();
    void updateGlobal();
    std::string infoText() const;
    static double percent(int64_t count, int64_t moves);

    Quarrix* solver;
    QXPhase* phase;  // null for the global statistics
    int32_t runningTime = 0;  // seconds, rounded down
    // The same to the nanosecond, for what remains of the phases' limits.
    int64_t runningNanoseconds = 0;
    int64_t nbIterations = 0;
    int64_t nbMoves = 0;
    int64_t nbAccepted = 0;
    int64_t nbImprovements = 0;
    int64_t nbInfeasibles = 0;
};
