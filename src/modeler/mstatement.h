#pragma once

#include "modeler/miterator.h"
#include "modeler/mnode.h"

#include <memory>
#include <string>
#include <vector>

class MExpression;
class MFunctionCall;

// { statements } in its own scope; also the empty statement ";".
class MBlock : public MStatement {
public:
    MBlock(const std::string* file, int line) : MStatement(file, line) {}
    void addStatement(MStatement* s) {
        statements.push_back(s);
        nestOver(s);
    }
    void executeReally(Context* c) override;

private:
    std::vector<MStatement*> statements;
    std::unique_ptr<VariableSet> scope;
};

// x = e and x <- e, optionally declaring x local.
class MAssignment : public MStatement {
public:
    MAssignment(const std::string* file, int line, const std::string* name_, MExpression* e,
                bool isLocal_, bool isLink_);
    void executeReally(Context* c) override;

private:
    const std::string* name;
    MExpression* expression;
    bool isLocal;
    bool isLink;
    Variable* variable;
};

// Finds the target of an assignment on its first run: with local, a new
// variable of the current scope; otherwise the visible one, else a global.
Variable* resolveTarget(Context* c, const std::string& name, bool isLocal);

// x[i][j in m] = e: e is evaluated and stored once per combination.
class MForAssignment : public MStatement, public CompositorUser {
public:
    MForAssignment(const std::string* file, int line, const std::string* name_,
                   MCompositor* comp, MExpression* e, bool isLocal_, bool isLink_);
    void executeReally(Context* c) override;
    void onCombination(Context* c, std::vector<Value>& indices) override;

private:
    const std::string* name;
    MCompositor* compositor;
    MExpression* expression;
    bool isLocal;
    bool isLink;
    Variable* variable;
};

// local x;
class MLocal : public MStatement {
public:
    MLocal(const std::string* file, int line, const std::string* name_)
        : MStatement(file, line), name(name_), variable(nullptr) {}
    void executeReally(Context* c) override;

private:
    const std::string* name;
    Variable* variable;
};

// if/else. An else-if chain runs in a loop, not by recursion, so a
// generated chain of any length runs within the stack; the chain counts as
// one level of nesting.
class MIf : public MStatement {
public:
    MIf(const std::string* file, int line, MExpression* cond_, MStatement* then_,
        MStatement* otherwise_);
    void executeReally(Context* c) override;

private:
    MExpression* cond;
    MStatement* thenStatement;
    MStatement* elseStatement;
    MIf* elseIf;
};

class MFor : public MStatement, public CompositorUser {
public:
    MFor(const std::string* file, int line, MCompositor* comp, MStatement* body_);
    void executeReally(Context* c) override;
    void onCombination(Context* c, std::vector<Value>& indices) override;

private:
    MCompositor* compositor;
    MStatement* body;
};

class MWhile : public MStatement {
public:
    MWhile(const std::string* file, int line, MExpression* cond_, MStatement* body_);
    void executeReally(Context* c) override;

private:
    MExpression* cond;
    MStatement* body;
    std::unique_ptr<VariableSet> scope;
};

class MDoWhile : public MStatement {
public:
    MDoWhile(const std::string* file, int line, MStatement* body_, MExpression* cond_);
    void executeReally(Context* c) override;

private:
    MStatement* body;
    MExpression* cond;
    std::unique_ptr<VariableSet> scope;
};

// minimize e; maximize e; constraint e;
class MModifier : public MStatement {
public:
    MModifier(const std::string* file, int line, ModifierType kind_, MExpression* e);
    void executeReally(Context* c) override;

private:
    ModifierType kind;
    MExpression* expression;
};

// f(...); as a statement, its result dropped.
class MCallStatement : public MStatement {
public:
    MCallStatement(const std::string* file, int line, MExpression* call_);
    void executeReally(Context* c) override;

private:
    MExpression* call;
};

class MReturn : public MStatement {
public:
    MReturn(const std::string* file, int line, MExpression* e);
    void executeReally(Context* c) override;

private:
    MExpression* expression;  // null: return nil
};
