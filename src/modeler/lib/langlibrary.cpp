#include "modeler/lib/langlibrary.h"

#include "modeler/context.h"
#include "modeler/modelerexception.h"
#include "modeler/program.h"
#include "modeler/solverfunction.h"
#include "modeler/value/tmap.h"
#include "modeler/value/vmap.h"

// Maps, inclusion of other program files, user errors.
namespace {

const char* const UNIT = "src/modeler/lib/langlibrary";

VMap* mapArgument(const Value& v) {
    v.checkType(RefTypes::T_MAP);
    return TMap::asMap(v);
}

Value count(Context*, std::vector<Value>& args) {
    return Value((qxint)mapArgument(args[0])->size());
}

// A new map holding the keys (or the values) of the argument, in order.
Value listOf(const Value& v, bool wantKeys) {
    VMap* source = mapArgument(v);
    VMap* out = new VMap();
    Value result(out);
    if (wantKeys) source->keys(out);
    else source->values(out);
    return result;
}

Value keys(Context*, std::vector<Value>& args) { return listOf(args[0], true); }

Value values(Context*, std::vector<Value>& args) { return listOf(args[0], false); }

Value map(Context*, std::vector<Value>& args) {
    VMap* out = new VMap();
    Value result(out);
    for (const Value& v : args) out->add(v);
    return result;
}

Value add(Context*, std::vector<Value>& args) {
    mapArgument(args[0])->add(args[1]);
    return Value();
}

Value remove(Context*, std::vector<Value>& args) {
    mapArgument(args[0])->unset(args[1]);
    return Value();
}

Value include(Context* context, std::vector<Value>& args) {
    context->getProgram()->parse(args[0].castToString());
    return Value();
}

Value error(Context*, std::vector<Value>& args) {
    std::string message = args.empty() ? std::string("(error)") : args[0].castToString();
    throw ModelerException(message, QX_HERE);
}

}  // namespace

void LangLibrary::addFunctions(Program* program) {
    const int any = SolverFunction::kAnySection;
    program->addFunction(new SolverFunction("count", count, any, 1));
    program->addFunction(new SolverFunction("keys", keys, any, 1));
    program->addFunction(new SolverFunction("values", values, any, 1));
    program->addFunction(new SolverFunction("map", map, any, 0, SolverFunction::kMaxArguments));
    program->addFunction(new SolverFunction("add", add, any, 2));
    program->addFunction(new SolverFunction("remove", remove, any, 2));
    program->addFunction(new SolverFunction("include", include, any, 1));
    program->addFunction(new SolverFunction("error", error, any, 0, 1));
}
