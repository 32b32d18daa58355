#include "modeler/mstatement.h"

#include "modeler/mexpression.h"
#include "modeler/program.h"
#include "modeler/value/tmap.h"

namespace {
// The condition of owner, which becomes the instruction again for the test
// itself, so that a condition that is not a boolean names owner's line.
bool holds(Context* c, MExpression* cond, MNode* owner) {
    Value v = cond->interpret(c);
    c->setInstructionPointer(owner);
    return v.castToBool();
}

// Runs body in the given scope, made on the first run as a child of the
// current one.
class ScopeEntry {
public:
    ScopeEntry(Context* c_, std::unique_ptr<VariableSet>& scope) : c(c_) {
        if (!scope) scope = c->getCurrentVariableSet()->derivate();
        c->pushVariableSet(scope.get());
    }
    ~ScopeEntry() { c->popVariableSet(); }

private:
    Context* c;
};
}  // namespace

void MBlock::executeReally(Context* c) {
    ScopeEntry entry(c, scope);
    for (MStatement* s : statements) {
        s->execute(c);
        if (c->isReturning()) break;
    }
}

Variable* resolveTarget(Context* c, const std::string& name, bool isLocal) {
    VariableSet* scope = c->getCurrentVariableSet();
    if (isLocal) return scope->createVariable(name);
    Variable* v = scope->findVariable(name);
    return v ? v : c->getProgram()->getGlobalVariables()->createVariable(name);
}

MAssignment::MAssignment(const std::string* file, int line, const std::string* name_,
                         MExpression* e, bool isLocal_, bool isLink_)
    : MStatement(file, line), name(name_), expression(e), isLocal(isLocal_), isLink(isLink_),
      variable(nullptr) {
    nestOver(e);
}

void MAssignment::executeReally(Context* c) {
    Value v = expression->interpret(c);
    c->setInstructionPointer(this);
    if (!variable) variable = resolveTarget(c, *name, isLocal);
    if (isLink) v = v.link(c, *name);
    c->setValue(variable, std::move(v));
}

MForAssignment::MForAssignment(const std::string* file, int line, const std::string* name_,
                               MCompositor* comp, MExpression* e, bool isLocal_, bool isLink_)
    : MStatement(file, line), name(name_), compositor(comp), expression(e), isLocal(isLocal_),
      isLink(isLink_), variable(nullptr) {
    nestOver({comp, e});
}

void MForAssignment::executeReally(Context* c) {
    if (!variable) variable = resolveTarget(c, *name, isLocal);
    compositor->run(c, this);
}

void MForAssignment::onCombination(Context* c, std::vector<Value>& indices) {
    Value v = expression->interpret(c);
    c->setInstructionPointer(this);
    if (isLink) {
        // x[3], x[2][5], x["a"]: the name reads back as the same entry.
        std::string full = *name;
        for (const Value& i : indices) {
            i.checkKey();
            if (i.isString()) {
                full += "[\"";
                full += i.asString();
                full += "\"]";
            } else {
                full += '[';
                full += i.isInt() ? std::to_string(i.asInt()) : i.toString(c);
                full += ']';
            }
        }
        v = v.link(c, full);
    }
    TMap::mapAssign(c->slot(variable), indices.data(), indices.size(), v);
}

void MLocal::executeReally(Context* c) {
    if (!variable) variable = c->getCurrentVariableSet()->createVariable(*name);
}

MIf::MIf(const std::string* file, int line, MExpression* cond_, MStatement* then_,
         MStatement* otherwise_)
    : MStatement(file, line), cond(cond_), thenStatement(then_), elseStatement(otherwise_),
      elseIf(dynamic_cast<MIf*>(otherwise_)) {
    nestOver({cond, thenStatement});
    if (elseIf) nestBeside(elseIf);
    else nestOver(elseStatement);
}

void MIf::executeReally(Context* c) {
    MIf* branch = this;
    while (true) {
        if (holds(c, branch->cond, branch)) return branch->thenStatement->execute(c);
        if (!branch->elseIf) break;
        branch = branch->elseIf;
        c->setInstructionPointer(branch);
    }
    if (branch->elseStatement) branch->elseStatement->execute(c);
}

MFor::MFor(const std::string* file, int line, MCompositor* comp, MStatement* body_)
    : MStatement(file, line), compositor(comp), body(body_) {
    nestOver({comp, body});
}

void MFor::executeReally(Context* c) { compositor->run(c, this); }

void MFor::onCombination(Context* c, std::vector<Value>&) { body->execute(c); }

MWhile::MWhile(const std::string* file, int line, MExpression* cond_, MStatement* body_)
    : MStatement(file, line), cond(cond_), body(body_) {
    nestOver({cond, body});
}

void MWhile::executeReally(Context* c) {
    ScopeEntry entry(c, scope);
    while (holds(c, cond, this)) {
        body->execute(c);
        if (c->isReturning()) break;
    }
}

MDoWhile::MDoWhile(const std::string* file, int line, MStatement* body_, MExpression* cond_)
    : MStatement(file, line), body(body_), cond(cond_) {
    nestOver({body, cond});
}

void MDoWhile::executeReally(Context* c) {
    ScopeEntry entry(c, scope);
    do {
        body->execute(c);
        if (c->isReturning()) break;
    } while (holds(c, cond, this));
}

MModifier::MModifier(const std::string* file, int line, ModifierType kind_, MExpression* e)
    : MStatement(file, line), kind(kind_), expression(e) {
    nestOver(e);
}

void MModifier::executeReally(Context* c) {
    Value v = expression->interpret(c);
    v.modify(c->at(this), kind);
}

MCallStatement::MCallStatement(const std::string* file, int line, MExpression* call_)
    : MStatement(file, line), call(call_) {
    nestOver(call);
}

void MCallStatement::executeReally(Context* c) { call->interpret(c); }

MReturn::MReturn(const std::string* file, int line, MExpression* e)
    : MStatement(file, line), expression(e) {
    nestOver(e);
}

void MReturn::executeReally(Context* c) {
    c->setReturn(expression ? expression->interpret(c) : Value());
}
