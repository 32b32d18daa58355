#pragma once

#include "api/solvegraphs.h"

#include <memory>
#include <vector>

class DagBuilder;
class DagFixedFields;
class QXExpression;
class QXModel;

// A closed model's compiled graphs, seen from the API: the conversions
// between the model's solution (by expression) and the kernel's (by
// variable). Made by QXModel::close; lives as long as the model.
class CompiledModel : public SolveGraphs {
public:
    // Compiles the model (closed, and valid: its checks have passed).
    explicit CompiledModel(const QXModel& model);
    ~CompiledModel() override;

    DagBuilder& getBuilder() { return *builder; }
    const DagBuilder& getBuilder() const { return *builder; }

    const QXModel& getModel() const { return model; }
    const DagFixedFields& getFixedFields() const;
    // The node of an expression of the model, KernelConstants::NO_NODE when
    // it has none.
    unsigned int getNode(const QXExpression* expr) const;

    Dag* getDag(unsigned int i) override;
    void createCopies(unsigned int n) override;
    void convertSolution(QXSolution* from, Solution* to) const override;
    void convertBackSolution(const Solution* from, QXSolution* to) const override;

    // The decisions' values in `from`, in kernel variable order (resized to
    // the number of variables; decision d at the variable index of its node).
    void convertSolution(QXSolution* from, std::vector<long long>& variableValues) const;
    // The reverse: sets every decision of `to` from its variable's value;
    // the API solution recomputes the other expressions when next read.
    void convertBackSolution(const std::vector<long long>& variableValues, QXSolution* to) const;

private:
    const QXModel& model;
    std::unique_ptr<DagBuilder> builder;
};
