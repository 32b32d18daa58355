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

namespace {
// Restores the caller's frame and scopes when a call ends, by return or by
// error. A destructor rather than a handler: an error raised a million calls
// deep then unwinds in one pass instead of being caught and rethrown at
// every level. A failure leaves the failing node as the instruction.
class CallFrame {
public:
    explicit CallFrame(Context* c_)
        : c(c_), oldBase(c_->pushLocalRegisters()), scopeDepth(c_->getScopeDepth()) {}
    ~CallFrame() {
        c->takeReturnValue();
        c->restoreScopeDepth(scopeDepth);
        c->popLocalRegisters(oldBase);
        c->leaveCall();
    }
    CallFrame(const CallFrame&) = delete;
    CallFrame& operator=(const CallFrame&) = delete;

private:
    Context* c;
    size_t oldBase;
    size_t scopeDepth;
};
}  // namespace

Value UserFunction::callHere(Context* context, std::vector<Value>& args) {
    context->enterCall(getName());
    MNode* caller = context->getInstructionPointer();
    CallFrame frame(context);
    context->pushVariableSet(scope.get());
    for (size_t i = 0; i < args.size(); ++i)
        context->setValue(parameterVariables[i], std::move(args[i]));
    body->execute(context);
    Value result = context->takeReturnValue();
    // A nested call hands the pointer back to the calling node, so a later
    // error in it is reported there; the outermost call leaves the last
    // statement run, which the launcher reports for errors after a section.
    if (context->getCallDepth() > 1) context->setInstructionPointer(caller);
    return result;
}
