#pragma once

#include <cstdint>
#include <vector>

class Quarrix;
class QXExpression;
struct QXWhere;

enum class QXSolutionStatus : uint8_t { Infeasible = 0, Feasible = 1, Optimal = 2 };

// One value per expression of a closed model. Only decisions are set (by the
// user before a solve, or from the search's best solution); every other value
// is computed on demand from its operands and memoised until the next change.
// Reading an expression evaluates only what it depends on, so an expression
// that cannot be evaluated and that nothing reads never makes a reading fail.
class QXSolution {
public:
    // Needs a closed model (state Paused or Stopped).
    explicit QXSolution(Quarrix* solver);

    // Infeasible when some constraint is 0, else Optimal when every objective
    // has reached its bound, else Feasible.
    QXSolutionStatus getStatus();
    int64_t getValue(const QXExpression* expr);
    // Decisions only.
    void setValue(QXExpression* expr, int64_t value);
    // Every decision and computed value back to 0, status Infeasible.
    void clear();
    void copyTo(QXSolution* dest);
    // Compares the objective values in declaration order, whatever their
    // direction: 1 when this one is greater at the first difference, -1 when
    // smaller, 0 when all are equal. Both solutions must be feasible.
    int compare(QXSolution* other);
    bool isOptimal();
    bool isInfeasible();

private:
    enum Mark : uint8_t { Pending, InProgress, Done };

    void checkExpression(const QXExpression* expr, const QXWhere& where) const;
    void checkSolution(const QXSolution* other, const char* argument,
                       const QXWhere& where) const;
    // After a change, forgets every computed value but those of the leaves.
    void autoPropagate();
    int64_t evaluate(const QXExpression* expr);
    int64_t evaluateUnknown(const QXExpression* expr);
    void computeStatus();

    Quarrix* solver;
    std::vector<int64_t> values;    // by expression index
    std::vector<uint8_t> computed;  // Mark by expression index
    QXSolutionStatus status = QXSolutionStatus::Infeasible;
    bool statusKnown = false;       // the status is computed on demand too
    bool dirty = true;

    // Marks with only the leaves done: what autoPropagate restores.
    std::vector<uint8_t> leafMarks;
    // Scratch of evaluate, kept to avoid allocating at each reading.
    struct Frame {
        int32_t expr;   // its index
        uint32_t next;  // first operand not yet known to be done
    };
    std::vector<Frame> work;
    std::vector<int64_t> operandValues;
};
