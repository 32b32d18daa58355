#pragma once

#include "solver/kernel/bipartition.h"
#include "solver/kernel/keptscores.h"

#include <memory>
#include <vector>

class Dag;
class DagListener;

// Incremental evaluation of one Dag and its constraint bookkeeping.
//
// A move is: any number of modifyVariable, one eval, then exactly one of
// commit or rollback (rollback after a false eval). Nodes are scheduled once
// per move (flag + per-level list) and evaluated level by level; nodes that
// can reach a constraint (priority 1 and 2) are evaluated in a first pass
// over all levels, the others in a second, so that a move breaking an active
// constraint stops before the objective part is touched. No allocation
// happens in a move: every list is reserved at init.
//
// A move that flips only booleans of the graph's pseudo-Boolean part is
// evaluated from kept scores (KeptScores) instead of through the graph; the
// graph catches up when such a move is committed. The verdicts and values
// that the caller reads are the same either way.
//
// Active constraints are hard: eval returns false when one becomes 0.
// Inactive ones are soft and costed; once the cost reaches 0 at a commit
// every constraint becomes active.
class Propagation {
public:
    Propagation() = default;
    virtual ~Propagation() = default;

    void init(Dag& dag);
    // On by default; switching on computes the scores from scratch.
    void setKeptScoresEnabled(Dag& dag, bool enabled);
    const KeptScores* getKeptScores() const { return kept.get(); }
    // A flip of the variable is likely to be weighed soon: what the
    // evaluation reads first of it (stage 0), then what that points at
    // (stages 1 and 2, each some time after the previous one).
    void prefetchFlip(const Dag& dag, unsigned int node, unsigned int stage) const;
    // Off by default: the kept scores also keep, per scored objective, the
    // booleans whose flip improves it, and moves draw their targets there.
    void setKeptTargetingEnabled(Dag& dag, bool enabled);

    // Sets a variable's new value for this move; ignored when equal to the
    // committed value or when the variable was already changed in the move.
    void modifyVariable(Dag& dag, unsigned int node, long long value);
    // For a variable not modified yet and known to take a new value: stores
    // only, so that a move over data far in memory does not wait on it.
    void modifyUnmodifiedVariable(Dag& dag, unsigned int node, long long value);
    // Takes back the last variable modified, before the move is evaluated:
    // a move that looked further than it keeps.
    void unmodifyLastVariable(Dag& dag);
    // False when an active constraint became violated, or a node could not
    // be evaluated; the move was left half-evaluated and must be rolled back.
    bool eval(Dag& dag);
    void commit(Dag& dag);
    void rollback(Dag& dag);
    // Schedules a node once per move (called by nodes for their parents).
    void notifyImpactedNodes(Dag& dag, unsigned int node);

    void connectListener(DagListener* listener) { listeners.push_back(listener); }
    void disconnectListener(DagListener* listener);
    void notifyCommitListeners();

    void activateConstraint(Dag& dag, unsigned int node);
    void desactivateConstraint(Dag& dag, unsigned int node);
    void activateAllConstraints();
    // Also sets every violation weight back to 1: a new start.
    void desactivateAllConstraints();
    void activateAllSatisfiedConstraints(Dag& dag);
    bool isConstraintActive(const Dag& dag, unsigned int node) const;
    void extractActiveConstraints(std::vector<unsigned int>& out) const;
    void setConstraintPriority(Dag& dag, unsigned int node);
    void evalConstraint(Dag& dag, unsigned int node);
    void commitConstraint(Dag& dag, unsigned int node);

    const std::vector<unsigned int>& getModifiedVariables() const { return modifiedVariables; }
    const Bipartition& getActiveConstraints() const { return activeConstraints; }
    const Bipartition& getViolatedConstraints() const { return violatedConstraints; }
    const Bipartition& getEvalViolatedConstraints() const { return evalViolatedConstraints; }
    // The inactive constraints that the last committed move satisfied: the
    // only ones a caller may newly activate after that move.
    const std::vector<unsigned int>& getConstraintsSatisfiedByLastCommit() const { return satisfiedByLastCommit; }
    long long getViolatedConstraintsCost() const { return violatedConstraintsCost; }
    long long getTViolatedConstraintsCost() const { return tViolatedConstraintsCost; }
    // Sign of the move's change of the weighted violation cost, the sum of
    // each inactive constraint's cost times its weight. While every weight
    // is 1 it is the sign of the plain cost's change.
    int getWeightedCostChange() const { return tWeightedChange < 0 ? -1 : tWeightedChange > 0 ? 1 : 0; }
    // One more unit of weight for every violated inactive constraint, up to
    // MAX_VIOLATION_WEIGHT: where the search stalls, the constraints it
    // keeps breaking weigh more against those it keeps satisfied.
    void raiseViolatedWeights();
    long long getViolationWeight(unsigned int position) const { return violationWeights[position]; }
    static constexpr long long MAX_VIOLATION_WEIGHT = 2147483647;
    unsigned long long getNbViolatedConstraints() const { return nbViolatedConstraints; }
    unsigned long long getTNbViolatedConstraints() const { return tNbViolatedConstraints; }
    unsigned int getPriority(unsigned int node) const { return priorities[node]; }
    // Node evaluations since init, for statistics and benchmarks.
    unsigned long long getNbEvaluatedNodes() const { return nbEvaluatedNodes; }
    // Moves evaluated from the kept scores since init.
    unsigned long long getNbKeptEvaluations() const { return nbKeptEvaluations; }
    // Moves refused because a node could not be evaluated (division by
    // zero, square root of a negative number) since init.
    unsigned long long getNbArithmeticRefusals() const { return nbArithmeticRefusals; }

    // Throws KernelException when the constraint sets are incoherent.
    void check(const Dag& dag) const;

private:
    friend class KeptScores;

    bool evalScheduled(Dag& dag);
    void addCostChange(unsigned int position, long long change) {
        tViolatedConstraintsCost += change;
        tWeightedChange += static_cast<__int128>(violationWeights[position]) * change;
    }
    void scheduleVariables();
    void initializeConstraints(Dag& dag);
    void initializePriorities(Dag& dag);
    void initializeImpacted(Dag& dag);
    void initializeViolatedConstraintsCost(Dag& dag);
    void schedule(unsigned int node);
    // The nodes of a level lie anywhere in a large graph: the object, the
    // values and the links of the one evaluated a few places later are
    // asked for ahead.
    static constexpr std::size_t EVAL_AHEAD = 4;
    static void prefetchEval(const Dag& dag, unsigned int node);
    // Evaluates one node and the class-0 queue; false on a broken active
    // constraint.
    bool evalNode(Dag& dag, unsigned int node);
    // The node's eval and its constraint bookkeeping, without the queue.
    bool evalOne(Dag& dag, unsigned int node);
    void costInactiveConstraint(Dag& dag, unsigned int node, unsigned int position);
    bool drainQueue(Dag& dag);
    // Empties the move's lists once its nodes are committed or rolled back.
    void endMove();
    // The committed state's totals after a commit.
    void endCommit();
    unsigned int popLowestLevel(unsigned int pass);

    unsigned long long tNbViolatedConstraints = 0;
    unsigned long long nbViolatedConstraints = 0;
    long long tViolatedConstraintsCost = 0;
    long long violatedConstraintsCost = 0;
    // impacted[level * 4 + k]: pending nodes of priority class k (1..3).
    std::vector<std::vector<unsigned int>> impacted;
    std::vector<unsigned int> queue;
    std::vector<unsigned int> satisfiedByLastCommit;
    unsigned int queueHead = 0;
    std::vector<unsigned int> modifiedVariables;
    Bipartition activeConstraints;
    Bipartition violatedConstraints;
    Bipartition evalViolatedConstraints;
    std::vector<unsigned int> priorities;
    std::vector<DagListener*> listeners;
    unsigned long long nbEvaluatedNodes = 0;
    unsigned long long nbKeptEvaluations = 0;
    unsigned long long nbArithmeticRefusals = 0;
    // Per constraint position; the move's weighted change, exact: a weight
    // below 2^31 times a cost change below 2^63, summed over fewer than
    // 2^32 constraints.
    std::vector<long long> violationWeights;
    __int128 tWeightedChange = 0;
    std::unique_ptr<KeptScores> kept;
    bool keptEnabled = true;
    bool keptTargeting = false;
    // The move under way was evaluated from the kept scores.
    bool keptEvaluated = false;
    // The move's variables are in the graph's lists.
    bool variablesScheduled = false;

    // Per node, level * 4 + priority class: the index of its impacted list,
    // one read when a node is scheduled.
    std::vector<unsigned int> slots;
    // Cached from the fixed fields at init, read on every evaluation.
    const unsigned int* constraintPositions = nullptr;
    // Levels holding scheduled nodes in this move: all of them in
    // first-scheduling order, and per pass (lists 1-2, list 3) a min-heap of
    // those still to evaluate; levelFlags says where each level is listed.
    static constexpr unsigned char TOUCHED = 1, PENDING_FIRST_PASS = 2;
    std::vector<unsigned char> levelFlags;
    std::vector<unsigned int> touchedLevels;
    std::vector<unsigned int> pendingLevels[2];
};
