#pragma once

#include "solver/kernel/bipartition.h"
#include "solver/kernel/daglistener.h"

#include <vector>

class Dag;

// A stored state of a Dag: every decision variable, the objective values and
// the number of violated constraints. Registered with a Dag, it follows the
// committed moves and remembers which variables may differ from what it
// holds, so a save costs the variables changed since the last one, not the
// model's size.
class Solution {
public:
    Solution() : listener(*this) {}
    Solution(const Solution& other);
    Solution& operator=(const Solution& other);
    virtual ~Solution() = default;

    // Re-initialises the modification set to n ranks, all Out.
    void setNbVariables(unsigned int n) { modifications.init(n); }
    // A committed change of the variable of this rank.
    void notifyVariableModification(unsigned int rank, long long value) {
        if (value == variableValues[rank]) modifications.setOut(rank);
        else modifications.setIn(rank);
    }
    void clearModifications() { modifications.clearIn(); }
    // Objective and variable values only.
    void copy(Solution& target) const;
    // 1 when this solution is better, -1 when worse, 0 when equal: fewer
    // violated constraints first, then the objectives in order.
    int compare(const Dag& dag, const Solution& other) const;

    unsigned long long getNbViolatedConstraints() const { return nbViolatedConstraints; }
    const std::vector<long long>& getObjectiveValues() const { return objectiveValues; }
    const std::vector<long long>& getVariableValues() const { return variableValues; }
    // Filled directly by the conversion from an API solution.
    std::vector<long long>& variables() { return variableValues; }
    std::vector<long long>& objectives() { return objectiveValues; }
    void setNbViolatedConstraints(unsigned long long n) { nbViolatedConstraints = n; }
    const Bipartition& getModifications() const { return modifications; }

private:
    friend class Dag;

    // Forwards the committed variables of a Dag's moves to the solution.
    class CommitListener : public DagListener {
    public:
        explicit CommitListener(Solution& solution) : solution(solution) {}
        void notifyCommit() override;
        Solution& solution;
        Dag* dag = nullptr;
    };

    unsigned long long nbViolatedConstraints = 0;
    std::vector<long long> objectiveValues;
    std::vector<long long> variableValues;
    Bipartition modifications;
    CommitListener listener;
};
