#include "modeler/mexpression.h"

#include "modeler/function.h"
#include "modeler/miterator.h"
#include "modeler/program.h"
#include "modeler/value/tint.h"
#include "modeler/value/vmap.h"
#include "solver/kernel/wraparith.h"

Variable* MIdentifier::resolve(Context* c) {
    Variable* v = c->getCurrentVariableSet()->findVariable(*name);
    return v ? v : c->getProgram()->getGlobalVariables()->createVariable(*name);
}

MIndexer::MIndexer(const std::string* file, int line, MExpression* container_, MExpression* key_)
    : MExpression(file, line), container(container_), key(key_) {
    nestOver({container, key});
}

Value MIndexer::interpretReally(Context* c) {
    Value m = container->interpret(c);
    Value k = key->interpret(c);
    c->at(this);
    if (m.getType() == RefTypes::T_MAP) return static_cast<VMap*>(m.getReference())->get(k);
    return m.index(c, k);
}

Value MBinary::interpretReally(Context* c) {
    if (!leftChain) return combine(c, left->interpret(c));
    // Short chains (a + b + c) are the common case and run in every loop:
    // their links are gathered on the stack.
    const std::size_t SHORT = 16;
    MBinary* local[SHORT];
    std::vector<MBinary*> longChain;
    std::size_t n = 0;
    for (MBinary* link = this; link; link = link->leftChain) {
        if (n < SHORT) {
            local[n++] = link;
            continue;
        }
        if (longChain.empty()) longChain.assign(local, local + SHORT);
        longChain.push_back(link);
        ++n;
    }
    MBinary** chain = longChain.empty() ? local : longChain.data();
    Value value = chain[n - 1]->left->interpret(c);
    for (std::size_t i = n; i-- > 0;) value = chain[i]->combine(c, std::move(value));
    return value;
}

// Integers take the inline path; anything else goes through its type.
Value MSum::combine(Context* c, Value l) {
    Value r = right->interpret(c);
    c->at(this);
    if (l.isInt() && r.isInt()) return Value(WrapArith::add(l.asInt(), r.asInt()));
    return l.add(c, r);
}

Value MSub::combine(Context* c, Value l) {
    Value r = right->interpret(c);
    c->at(this);
    if (l.isInt() && r.isInt()) return Value(WrapArith::sub(l.asInt(), r.asInt()));
    return l.sub(c, r);
}

Value MProduct::combine(Context* c, Value l) {
    Value r = right->interpret(c);
    c->at(this);
    if (l.isInt() && r.isInt()) return Value(WrapArith::mul(l.asInt(), r.asInt()));
    return l.mul(c, r);
}

Value MDivide::combine(Context* c, Value l) {
    Value r = right->interpret(c);
    c->at(this);
    if (l.isInt() && r.isInt()) return Value(TInt::checkedDiv(l.asInt(), r.asInt()));
    return l.div(c, r);
}

Value MModulo::combine(Context* c, Value l) {
    Value r = right->interpret(c);
    c->at(this);
    if (l.isInt() && r.isInt()) return Value(TInt::checkedMod(l.asInt(), r.asInt()));
    return l.mod(c, r);
}

Value MAnd::combine(Context* c, Value l) {
    if (l.isInt() && l.asInt() == 0) return Value(0);
    Value r = right->interpret(c);
    return l.band(c->at(this), r);
}

Value MOr::combine(Context* c, Value l) {
    if (l.isInt() && l.asInt() == 1) return Value(1);
    Value r = right->interpret(c);
    return l.bor(c->at(this), r);
}

Value MComparison::combine(Context* c, Value l) {
    Value r = right->interpret(c);
    c->at(this);
    if (l.isInt() && r.isInt()) {
        qxint a = l.asInt(), b = r.asInt();
        switch (op) {
            case Lt: return Value(a < b);
            case Leq: return Value(a <= b);
            case Gt: return Value(a > b);
            case Geq: return Value(a >= b);
            case Eq: return Value(a == b);
            case Neq: return Value(a != b);
        }
    }
    switch (op) {
        case Lt: return l.lt(c, r);
        case Leq: return l.leq(c, r);
        case Gt: return l.gt(c, r);
        case Geq: return l.geq(c, r);
        case Eq: return l.eq(c, r);
        case Neq: break;
    }
    return l.neq(c, r);
}

Value MMinus::interpretReally(Context* c) { return operand->interpret(c).opp(c->at(this)); }

Value MNot::interpretReally(Context* c) { return operand->interpret(c).bnot(c->at(this)); }

Value MTernary::interpretReally(Context* c) {
    Value v = cond->interpret(c);
    c->at(this);
    if (v.isInt()) return v.castToBool() ? a->interpret(c) : b->interpret(c);
    Value x = a->interpret(c);
    Value y = b->interpret(c);
    return v.ternary(c->at(this), x, y);
}

void MFunctionCall::setCompositor(MCompositor* comp) {
    compositor = comp;
    nestOver(comp);
}

Value MFunctionCall::callOnce(Context* c) {
    std::vector<Value> values;
    values.reserve(args.size());
    for (MExpression* e : args) values.push_back(e->interpret(c));
    c->at(this);
    if (!function) function = c->getProgram()->getFunction(*name);
    return function->call(c, values);
}

namespace {
class CallUser : public CompositorUser {
public:
    explicit CallUser(MFunctionCall* call_) : call(call_) {}
    void onCombination(Context* c, std::vector<Value>&) override { call->callOnce(c); }

private:
    MFunctionCall* call;
};
}  // namespace

Value MFunctionCall::interpretReally(Context* c) {
    if (!compositor) return callOnce(c);
    CallUser user(this);
    compositor->run(c, &user);
    return Value();
}

Value MTableDeclaration::interpretReally(Context* c) {
    VMap* map = new VMap();
    Value result(map);
    for (auto& element : elements) {
        if (element.first) map->set(*element.first, element.second->interpret(c));
        else map->add(element.second->interpret(c));
    }
    return result;
}
