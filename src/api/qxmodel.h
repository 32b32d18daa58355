#pragma once

#include "qxexpression.h"

#include <cstdint>
#include <deque>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <vector>

class CompiledModel;
class DagBuilder;
class ModelGraph;
class NameIndex;
class Quarrix;

enum class QXObjectiveDirection : uint8_t { Minimize = 0, Maximize = 1 };

// An operand given to a creation form: an expression of the model, or an
// integer that stands for the model's constant of that value. The int
// constructor lets a literal such as 0 choose the integer, not the null
// pointer.
class QXOperand {
public:
    QXOperand(QXExpression* expr) : expr(expr) {}
    QXOperand(int64_t value) : value(value), isInteger(true) {}
    QXOperand(int value) : value(value), isInteger(true) {}

private:
    friend class QXModel;
    QXExpression* expr = nullptr;
    int64_t value = 0;
    bool isInteger = false;
};

// Owns every expression of one model: creates expressions and the shared
// constants, declares constraints and objectives, resolves names, and is
// closed once, after which its structure is fixed. Getters are refused only
// in state Running; structural changes need state Modeling.
class QXModel {
public:
    explicit QXModel(Quarrix* solver);
    ~QXModel();
    QXModel(const QXModel&) = delete;
    QXModel& operator=(const QXModel&) = delete;

    // One expression per distinct value: a second call returns the first.
    QXExpression* createConstant(int64_t value);
    // A new expression without operands; not for constants.
    QXExpression* createExpression(QXOperator op);
    // Every operand is checked before anything is made; an integer stands for
    // the constant of that value.
    QXExpression* createExpression(QXOperator op, QXOperand e0);
    QXExpression* createExpression(QXOperator op, QXOperand e0, QXOperand e1);
    QXExpression* createExpression(QXOperator op, QXOperand e0, QXOperand e1, QXOperand e2);

    int getNbExpressions() const;
    int getNbOperands() const;
    int getNbDecisions() const;
    int getNbConstraints() const;
    int getNbObjectives() const;
    QXExpression* getExpression(int i) const;
    QXExpression* getExpression(const std::string& name) const;
    QXExpression* getDecision(int i) const;
    QXExpression* getConstraint(int i) const;
    QXExpression* getObjective(int i) const;
    QXObjectiveDirection getObjectiveDirection(int i) const;

    // A second declaration of the same constraint is ignored.
    void addConstraint(QXExpression* expr);
    // Each declaration is a further objective, even of the same expression.
    void addObjective(QXExpression* expr, QXObjectiveDirection direction);

    // Validates every expression, compiles the model (its DagBuilder), then
    // closes it for good and moves the solver to state Stopped. A failure,
    // of the checks or of the compilation, leaves the model open.
    void close();
    bool isClosed() const;
    // The compiled model, made by close(); null before.
    CompiledModel* getCompiledModel() const { return compiled.get(); }
    DagBuilder* getDagBuilder() const;
    // Writes the model, its decisions' values and the solver settings that
    // reproduce a run, as a program of the modeling language.
    void write(const std::string& fileName) const;
    // The same program on a stream; returns the identifier written for each
    // expression, by index.
    std::vector<std::string> write(std::ostream& out) const;
    // The structure as the compiler reads it; names only for the writer.
    void fillGraph(ModelGraph& graph, bool withNames) const;
    std::string toString() const;
    Quarrix* getQuarrix() const { return solver; }

private:
    friend class QXExpression;
    friend class QXSolution;
    friend class QXParam;
    friend class CompiledModel;

    QXExpression* newExpression(QXOperator op);
    QXExpression* createChecked(QXOperator op, const QXOperand* given, int count);
    void checkCanCreate(const QXWhere& where) const;
    // The checks shared by addConstraint and addObjective: state, list full,
    // null, foreign.
    void checkDeclaration(const QXExpression* expr, size_t count, const char* things,
                          const QXWhere& where) const;
    int32_t getNbExpressionsUnchecked() const { return static_cast<int32_t>(expressions.size()); }
    // Withdraws the constants made from index nbBefore on (all of them the
    // last expressions): the undo of a refused call that made some.
    void removeConstantsFrom(int32_t nbBefore);

    Quarrix* solver;
    std::map<int64_t, QXExpression*> constants;  // the constant pool, by value
    // Owned; a deque keeps addresses stable without one allocation each.
    std::deque<QXExpression> expressions;
    // An expression keeps a pointer to its name in here.
    std::unique_ptr<NameIndex> names;
    std::vector<QXExpression*> decisions;
    std::vector<QXExpression*> constraints;
    std::vector<QXExpression*> objectives;
    std::vector<QXObjectiveDirection> directions;  // one per objective
    int32_t nbOperands = 0;
    bool closed = false;
    std::unique_ptr<CompiledModel> compiled;  // made at closing
};
