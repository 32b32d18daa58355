#pragma once

#include "modeler/function.h"
#include "modeler/variableset.h"

#include <memory>
#include <string>
#include <vector>

class MBlock;

// A function written in the program: parameters are its first local slots.
class UserFunction : public Function {
public:
    UserFunction(const std::string& name, const std::vector<std::string>& parameters,
                 MBlock* body, VariableSet* globals);
    Value call(Context* context, std::vector<Value>& args) override;
    const std::vector<std::string>& getParameters() const { return parameters; }

private:
    Value callHere(Context* context, std::vector<Value>& args);
    std::vector<std::string> parameters;
    std::vector<Variable*> parameterVariables;
    MBlock* body;
    std::unique_ptr<VariableSet> scope;
};
