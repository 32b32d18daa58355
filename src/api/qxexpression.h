#pragma once

#include "qxoperator.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

class QXModel;
class Quarrix;
struct QXWhere;

// One node of a model's expression graph: a boolean decision, an integer
// constant, or an operator over operands of the same model. Made only by
// QXModel, which owns it; it lives as long as its model. Structure (operands,
// name) changes only in state Modeling; afterwards only values change,
// through the solution.
class QXExpression {
public:
    // Only the model can make the key, so only the model makes expressions.
    class Key {
        Key() {}
        friend class QXModel;
    };
    QXExpression(Key, QXModel* model, QXOperator op, int32_t index);
    QXExpression(const QXExpression&) = delete;
    QXExpression& operator=(const QXExpression&) = delete;
    ~QXExpression() {
        if (operandCount > INLINE) delete[] heapOperands;
    }

    // Getters: refused in state Running.
    QXOperator getOperator() const;
    int getIndex() const;
    QXModel* getModel() const;
    Quarrix* getQuarrix() const;
    bool isDecision() const;
    bool isConstraint() const;
    bool isObjective() const;
    bool isConstant() const;
    int getNbOperands() const;
    QXExpression* getOperand(int i) const;
    bool isNamed() const;
    const std::string& getName() const;

    // Structure: state Modeling only.
    void setName(const std::string& name);
    void addOperand(QXExpression* expr);
    // Adds the model's constant of that value, made if needed.
    void addOperand(int64_t value);
    // Lets a literal such as 0 mean the integer, not the null pointer.
    void addOperand(int value) { addOperand(static_cast<int64_t>(value)); }

    // A constant answers in any state but Running; any other expression
    // reads the current solution, in state Paused or Stopped.
    int64_t getValue() const;
    // Sets a decision's value in the current solution (Paused or Stopped).
    void setValue(int64_t value);

    std::string toString() const;
    std::string getInfo() const;

    // The value of an operator over integer operand values (their count
    // within the operator's bounds), as the model computes it; throws for a
    // zero divisor and the square root of a negative number, and for the
    // leaves, which have no operands to compute from.
    static int64_t evaluate(QXOperator op, const std::vector<int64_t>& operandValues);

private:
    friend class QXModel;
    friend class QXSolution;
    friend class QXParam;
    friend class CompiledModel;
    friend class ExpressionTools;
    friend class ExpressionTypeTools;

    // Refuses the operand at position for this operator: foreign solver,
    // too many operands, wrong kind. Shared by addOperand, the model's
    // creation forms and its closing.
    static void checkOperand(const QXModel* model, QXOperator op, const QXExpression* operand,
                             int position, const QXWhere& where);
    const Quarrix* solver() const;

    // Reading the operands: their indexes in the model.
    struct Operands {
        const int32_t* first;
        uint32_t count;
        std::size_t size() const { return count; }
        int32_t operator[](std::size_t i) const { return first[i]; }
        const int32_t* begin() const { return first; }
        const int32_t* end() const { return first + count; }
    };
    Operands operands() const { return {operandCount > INLINE ? heapOperands : localOperands, operandCount}; }
    void pushOperand(const QXExpression* operand);

    static constexpr uint32_t INLINE = 4;
    static constexpr uint32_t UNNAMED = 0xffffffffu;

    // Fields ordered so that the expression takes 48 bytes: a model of
    // millions of expressions keeps them all. Operands are kept by index, so
    // that reading the structure (compiling, evaluating) needs no visit to
    // each operand. Most expressions have up to four: those are kept inside
    // the expression, so that such a model makes no allocation per
    // expression; longer lists go to the heap, in a block of the power of
    // two at or above their count.
    QXModel* model;
    int64_t value = 0;  // a constant's value, a decision's initial value
    union {
        int32_t localOperands[INLINE];
        int32_t* heapOperands;
    };
    uint32_t operandCount = 0;
    // The name's number in the model's names; UNNAMED.
    uint32_t nameNumber = UNNAMED;
    int32_t index;  // position in the model's expression list
    QXOperator op;
    bool decision : 1;
    bool objective : 1;
    bool constraint : 1;
};
