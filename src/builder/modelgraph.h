#pragma once

#include "api/qxoperator.h"

#include <cstdint>
#include <string>
#include <vector>

class ModelGraph;

// A read handle on one expression of a ModelGraph: two words, passed by
// value. Its getters mirror the model's expressions so that the compiler
// reads like a walk over the model.
class ModelExpr {
public:
    ModelExpr() = default;
    ModelExpr(const ModelGraph* graph, int32_t index) : graph(graph), index(index) {}

    bool isNull() const { return index < 0; }
    int32_t getIndex() const { return index; }
    inline QXOperator getOperator() const;
    inline int getNbOperands() const;
    inline ModelExpr getOperand(int i) const;
    // A constant's value, a decision's start value, 0 otherwise.
    inline int64_t getValue() const;
    inline bool isConstraint() const;
    inline bool isDecision() const;

    bool operator==(ModelExpr other) const { return index == other.index; }
    bool operator!=(ModelExpr other) const { return index != other.index; }

private:
    const ModelGraph* graph = nullptr;
    int32_t index = -1;
};

// The structure of a model as the compiler and the model writer read it:
// flat arrays by expression index, filled by the model that owns the
// expressions. Operands of expression i are operands[firstOperand[i] ..
// firstOperand[i + 1]); every operand index is below the expression count.
class ModelGraph {
public:
    // Expressions are added in index order; operand indexes may refer to
    // expressions added later.
    void reserve(std::size_t nbExpressions, std::size_t nbOperands);
    void addExpression(QXOperator op, int64_t value, bool constraint, const int32_t* operands,
                       int count);
    void addDecision(int32_t expr) { decisions.push_back(expr); }
    void addConstraint(int32_t expr) { constraints.push_back(expr); }
    // direction: 0 minimise, 1 maximise; anything else is kept as given.
    void addObjective(int32_t expr, uint8_t direction);
    // For the writer only: the name of each expression, null when unnamed.
    void setNames(std::vector<const std::string*> byIndex) { names = std::move(byIndex); }
    void setClosed(bool isClosed) { closed = isClosed; }
    // Frees the arrays; what a consumer of the graph does once done.
    void release() { *this = ModelGraph(); }

    int getNbExpressions() const { return static_cast<int>(ops.size()); }
    ModelExpr getExpression(int i) const { return ModelExpr(this, i); }
    int getNbDecisions() const { return static_cast<int>(decisions.size()); }
    ModelExpr getDecision(int i) const { return ModelExpr(this, decisions[i]); }
    int getNbConstraints() const { return static_cast<int>(constraints.size()); }
    ModelExpr getConstraint(int i) const { return ModelExpr(this, constraints[i]); }
    int getNbObjectives() const { return static_cast<int>(objectives.size()); }
    ModelExpr getObjective(int i) const { return ModelExpr(this, objectives[i]); }
    uint8_t getObjectiveDirection(int i) const { return directions[i]; }
    bool isClosed() const { return closed; }
    // Whether every operand index is below its expression's: then the
    // indexes, from the last down, list every expression after its users.
    bool operandsPrecedeUsers() const { return ordered; }
    // Null when unnamed or when no names were given.
    const std::string* getName(int i) const { return names.empty() ? nullptr : names[i]; }

private:
    friend class ModelExpr;

    std::vector<QXOperator> ops;
    std::vector<int64_t> values;
    std::vector<uint8_t> constraintFlags;
    std::vector<uint32_t> firstOperand{0};
    std::vector<int32_t> operands;
    bool ordered = true;
    std::vector<int32_t> decisions;
    std::vector<int32_t> constraints;
    std::vector<int32_t> objectives;
    std::vector<uint8_t> directions;
    std::vector<const std::string*> names;
    bool closed = false;
};

QXOperator ModelExpr::getOperator() const { return graph->ops[index]; }
int ModelExpr::getNbOperands() const {
    return static_cast<int>(graph->firstOperand[index + 1] - graph->firstOperand[index]);
}
ModelExpr ModelExpr::getOperand(int i) const {
    return ModelExpr(graph, graph->operands[graph->firstOperand[index] + i]);
}
int64_t ModelExpr::getValue() const { return graph->values[index]; }
bool ModelExpr::isConstraint() const { return graph->constraintFlags[index] != 0; }
bool ModelExpr::isDecision() const { return graph->ops[index] == QXOperator::Bool; }
