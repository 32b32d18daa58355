#pragma once

#include "modeler/function.h"

#include <string>
#include <vector>

// A built-in function: checks the section and the argument count, then
// runs its handler, which may rely on both checks.
class SolverFunction : public Function {
public:
    typedef Value (*Handler)(Context* context, std::vector<Value>& args);
    // Any section.
    static const int kAnySection = 255;
    // The count limit used for "any number of arguments".
    static const int kMaxArguments = QXLimits::MAX_COUNT;

    SolverFunction(const std::string& name, Handler handler, int sectionMask, int minArgs,
                   int maxArgs);
    SolverFunction(const std::string& name, Handler handler, int sectionMask, int nbArgs)
        : SolverFunction(name, handler, sectionMask, nbArgs, nbArgs) {}
    Value call(Context* context, std::vector<Value>& args) override;

private:
    Handler handler;
    int sectionMask;
    int minArgs;
    int maxArgs;
};
