#include "modeler/operatorfunction.h"

#include "api/qxexpression.h"
#include "api/qxmodel.h"
#include "api/qxoperator.h"
#include "modeler/context.h"
#include "modeler/modelerexception.h"
#include "modeler/program.h"
#include "modeler/value/tnode.h"

namespace {
const char* const UNIT = "src/modeler/operatorfunction";

QXOperand toOperand(const Value& v) {
    if (TNode::isNode(v)) return QXOperand(TNode::asExpression(v));
    return QXOperand(static_cast<int64_t>(v.asInt()));
}
}  // namespace

OperatorFunction::OperatorFunction(QXOperator op_)
    : Function(getOperatorInfo(op_).name), op(op_) {}

void OperatorFunction::checkCount(size_t n) const {
    const long long min = getOperatorInfo(op).minOperands;
    const long long max = getOperatorInfo(op).maxOperands;
    const long long count = (long long)n;
    std::string expected;
    if (min == max && count != min) expected = std::to_string(min);
    else if (count < min) expected = "at least " + std::to_string(min);
    else if (count > max) expected = "at most " + std::to_string(max);
    else return;
    throw ModelerException("Function '" + getName() + "' takes " + expected + " arguments.",
                           QX_WHERE(UNIT, "call"));
}

// Expressions are left to the model, which knows their kinds. Positions in
// the message count from 1, as the user reads the call.
void OperatorFunction::checkTypes(const std::vector<Value>& args) const {
    for (size_t i = 0; i < args.size(); ++i) {
        const Value& v = args[i];
        if (TNode::isNode(v)) continue;
        const bool boolean =
            getOperandType(op, static_cast<int>(i)) == QXValueType::Boolean;
        if (boolean ? v.isBool() : v.isInt()) continue;
        throw ModelerException("Function '" + getName() + "' : " +
                                   (boolean ? "Boolean" : "Integer or Boolean") +
                                   " expected for argument " + std::to_string(i + 1) + ".",
                               QX_WHERE(UNIT, "call"));
    }
}

Value OperatorFunction::call(Context* context, std::vector<Value>& args) {
    checkCount(args.size());
    checkTypes(args);
    bool anyNode = args.empty();
    for (const Value& v : args) anyNode = anyNode || TNode::isNode(v);
    if (anyNode) return callNode(context, op, args.data(), args.size());
    return callEval(op, args);
}

void OperatorFunction::checkModelSection(Context* context, QXOperator op) {
    if (context->getCurrentSection() != Section::model)
        throw ModelerException("Function '" + std::string(getOperatorInfo(op).name) +
                                   "' not allowed in this section.", QX_WHERE(UNIT, "callNode"));
}

// Up to three operands go through the model's checked creation, which
// refuses the whole call before making anything; longer lists are added one
// by one.
Value OperatorFunction::callNode(Context* context, QXOperator op, const Value* args, size_t n) {
    checkModelSection(context, op);
    QXModel* model = context->getModel();
    QXExpression* expr = nullptr;
    switch (n) {
    case 1: expr = model->createExpression(op, toOperand(args[0])); break;
    case 2: expr = model->createExpression(op, toOperand(args[0]), toOperand(args[1])); break;
    case 3:
        expr = model->createExpression(op, toOperand(args[0]), toOperand(args[1]),
                                       toOperand(args[2]));
        break;
    default:
        expr = model->createExpression(op);
        for (size_t i = 0; i < n; ++i) {
            if (TNode::isNode(args[i])) expr->addOperand(TNode::asExpression(args[i]));
            else expr->addOperand(static_cast<int64_t>(args[i].asInt()));
        }
    }
    return TNode::make(expr);
}

Value OperatorFunction::callEval(QXOperator op, const std::vector<Value>& args) {
    std::vector<int64_t> values;
    values.reserve(args.size());
    for (const Value& v : args) values.push_back(v.asInt());
    return Value(static_cast<long long>(QXExpression::evaluate(op, values)));
}

void OperatorLibrary::addFunctions(Program* program) {
    for (int code = 0; code < QX_NB_OPERATORS; ++code)
        program->addFunction(new OperatorFunction(static_cast<QXOperator>(code)));
}
