#pragma once

#include "qxoperator.h"

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

    // Most expressions have one or two operands: those are kept inside the
    // expression, so that a model of millions of them makes no allocation
    // per expression; longer lists go to the heap.
    class OperandList {
    public:
        OperandList() {}
        OperandList(const OperandList&) = delete;
        OperandList& operator=(const OperandList&) = delete;
        ~OperandList() {
            if (capacity > INLINE) delete[] heap;
        }
        std::size_t size() const { return count; }
        QXExpression* operator[](std::size_t i) const { return data()[i]; }
        QXExpression* const* begin() const { return data(); }
        QXExpression* const* end() const { return data() + count; }
        void push_back(QXExpression* operand) {
            if (count == capacity) grow();
            (capacity > INLINE ? heap : local)[count++] = operand;
        }
        void assign(QXExpression* const* first, QXExpression* const* last) {
            count = 0;
            while (first != last) push_back(*first++);
        }

    private:
        static constexpr uint32_t INLINE = 2;
        QXExpression* const* data() const { return capacity > INLINE ? heap : local; }
        void grow();
        union {
            QXExpression* local[INLINE];
            QXExpression** heap;
        };
        uint32_t count = 0;
        uint32_t capacity = INLINE;
    };

    QXModel* model;
    // The model's kept copy of the name (never moves); null: unnamed.
    const std::string* name = nullptr;
    OperandList operands; // owned by the model
    int64_t value = 0;                   // a constant's value, a decision's initial value
    int32_t index;                       // position in the model's expression list
    QXOperator op;
    bool decision : 1;
    bool objective : 1;
    bool constraint : 1;
};
