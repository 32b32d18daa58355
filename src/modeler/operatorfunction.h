#pragma once

#include "api/qxoperator.h"
#include "modeler/function.h"

#include <string>
#include <vector>

class Program;

// The language's call of one operator of the catalogue, by its name ("sum",
// "iif"...). On plain integers it computes the value in any section; with an
// expression among its arguments, or with none at all, it builds a model
// expression, in section "model" only.
class OperatorFunction : public Function {
public:
    explicit OperatorFunction(QXOperator op);
    QXOperator getOperator() const { return op; }
    // Count, then types, then builds or evaluates.
    Value call(Context* context, std::vector<Value>& args) override;

    // Builds op over the given expressions and integers (integers become the
    // model's pooled constants). Also the builder of the language's
    // operators on expressions.
    static Value callNode(Context* context, QXOperator op, const Value* args, size_t n);
    // Evaluates op over integers with the operator's evaluator.
    static Value callEval(QXOperator op, const std::vector<Value>& args);
    // Refuses, naming op, outside section "model".
    static void checkModelSection(Context* context, QXOperator op);

private:
    void checkCount(size_t n) const;
    void checkTypes(const std::vector<Value>& args) const;

    QXOperator op;
};

// Registers one OperatorFunction per operator of the catalogue.
class OperatorLibrary {
public:
    static void addFunctions(Program* program);
};
