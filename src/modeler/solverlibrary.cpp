#include "modeler/solverlibrary.h"

#include "api/apierrors.h"
#include "api/quarrix.h"
#include "api/qxexpression.h"
#include "api/qxmodel.h"
#include "api/qxparam.h"
#include "modeler/context.h"
#include "modeler/program.h"
#include "modeler/solverfunction.h"
#include "modeler/value/tnode.h"

#include <climits>

namespace {
const char* const UNIT = "src/modeler/solverlibrary";

QXExpression* expressionArgument(const Value& v) {
    v.checkType(RefTypes::T_NODE);
    return TNode::asExpression(v);
}

Value getValue(Context*, std::vector<Value>& args) {
    return Value(static_cast<long long>(expressionArgument(args[0])->getValue()));
}

// Both arguments are checked before the value is set.
Value setValue(Context*, std::vector<Value>& args) {
    QXExpression* expr = expressionArgument(args[0]);
    qxint value = args[1].castToInt();
    expr->setValue(value);
    return Value();
}

Value setObjectiveBound(Context* context, std::vector<Value>& args) {
    qxint index = args[0].castToInt();
    qxint bound = args[1].castToInt();
    // The parameters take a 32-bit index: one beyond that range is refused
    // here with the same message, rather than truncated to a valid one.
    if (index < INT_MIN || index > INT_MAX)
        ApiErrors::checkIndex(index, context->getModel()->getNbObjectives(), "objective",
                              QX_HERE);
    context->getSolver()->getParam()->setObjectiveBound(static_cast<int>(index), bound);
    return Value();
}
}  // namespace

void SolverLibrary::addFunctions(Program* program) {
    const int param = (int)Section::param;
    const int readable = param | (int)Section::display | (int)Section::output;
    program->addFunction(new SolverFunction("getValue", getValue, readable, 1));
    program->addFunction(new SolverFunction("setValue", setValue, param, 2));
    program->addFunction(new SolverFunction("setObjectiveBound", setObjectiveBound, param, 2));
}
