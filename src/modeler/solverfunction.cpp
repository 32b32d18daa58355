#include "modeler/solverfunction.h"

#include "modeler/context.h"
#include "modeler/modelerexception.h"

namespace {
const char* const UNIT = "src/modeler/solverfunction";
}  // namespace

SolverFunction::SolverFunction(const std::string& name, Handler handler_, int sectionMask_,
                               int minArgs_, int maxArgs_)
    : Function(name), handler(handler_), sectionMask(sectionMask_), minArgs(minArgs_),
      maxArgs(maxArgs_) {}

Value SolverFunction::call(Context* context, std::vector<Value>& args) {
    if ((sectionMask & (int)context->getCurrentSection()) == 0)
        throw ModelerException("Function '" + getName() + "' not allowed in this section.",
                               QX_HERE);
    long long n = (long long)args.size();
    if (minArgs == maxArgs && n != minArgs)
        throw ModelerException("Function '" + getName() + "' takes " + std::to_string(minArgs) +
                                   " argument(s).", QX_HERE);
    if (n < minArgs)
        throw ModelerException("Function '" + getName() + "' takes at least " +
                                   std::to_string(minArgs) + " argument(s).", QX_HERE);
    if (n > maxArgs)
        throw ModelerException("Function '" + getName() + "' takes at most " +
                                   std::to_string(maxArgs) + " argument(s).", QX_HERE);
    return handler(context, args);
}
