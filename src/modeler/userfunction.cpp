#include "modeler/userfunction.h"

#include "modeler/context.h"
#include "modeler/modelerexception.h"
#include "modeler/mstatement.h"

namespace {
const char* const UNIT = "src/modeler/userfunction";
}  // namespace

UserFunction::UserFunction(const std::string& name, const std::vector<std::string>& parameters_,
                           MBlock* body_, VariableSet* globals)
    : Function(name), parameters(parameters_), body(body_), scope(globals->derivate(true)) {
    for (const std::string& p : parameters) parameterVariables.push_back(scope->createVariable(p));
}

Value UserFunction::call(Context* context, std::vector<Value>& args) {
    if (args.size() != parameters.size())
        throw ModelerException("Function '" + getName() + "' is defined to take " +
                                   std::to_string(parameters.size()) + " argument(s).", QX_HERE);
    if (context->getCallDepth() == 0) {
        Value result;
        Context::runOnInterpreterStack([&] { result = callHere(context, args); });
        return result;
    }
    return callHere(context, args);
}

Value UserFunction::callHere(Context* context, std::vector<Value>& args) {
    context->enterCall(getName());
    MNode* caller = context->getInstructionPointer();
    size_t oldBase = context->pushLocalRegisters();
    size_t scopeDepth = context->getScopeDepth();
    context->pushVariableSet(scope.get());
    try {
        for (size_t i = 0; i < args.size(); ++i)
            context->setValue(parameterVariables[i], std::move(args[i]));
        body->execute(context);
    } catch (...) {
        // The failing statement stays the instruction pointer for the report.
        context->restoreScopeDepth(scopeDepth);
        context->popLocalRegisters(oldBase);
        context->takeReturnValue();
        context->leaveCall();
        throw;
    }
    Value result = context->takeReturnValue();
    context->popVariableSet();
    context->popLocalRegisters(oldBase);
    context->leaveCall();
    // A nested call hands the pointer back to the calling statement, so a
    // later error in it is reported there; the outermost call leaves the last
    // statement run, which the launcher reports for errors after a section.
    if (context->getCallDepth() > 0) context->setInstructionPointer(caller);
    return result;
}
