#pragma once

#include "modeler/mnode.h"

#include <string>
#include <utility>
#include <vector>

class Function;
class MCompositor;

// A constant: integer, boolean, string or nil.
class MValue : public MExpression {
public:
    MValue(const std::string* file, int line, Value v) : MExpression(file, line), value(std::move(v)) {}
    Value interpretReally(Context*) override { return value; }

private:
    Value value;
};

// A variable read. A name no scope defines becomes a global reading nil.
class MIdentifier : public MExpression {
public:
    MIdentifier(const std::string* file, int line, const std::string* name_)
        : MExpression(file, line), name(name_), variable(nullptr) {}
    Value interpretReally(Context* c) override {
        if (!variable) variable = resolve(c);
        return c->getValue(variable);
    }

private:
    Variable* resolve(Context* c);
    const std::string* name;
    Variable* variable;
};

class MIndexer : public MExpression {
public:
    MIndexer(const std::string* file, int line, MExpression* container, MExpression* key);
    Value interpretReally(Context* c) override;

private:
    MExpression* container;
    MExpression* key;
};

// A binary operator. Chains nested on the left, as the parser builds
// a + b + c + ..., are walked down their left spine without recursion, so a
// generated sum of a million terms runs within the interpreter's stack; such
// a chain counts as one level of nesting.
class MBinary : public MExpression {
public:
    MBinary(const std::string* file, int line, MExpression* left_, MExpression* right_)
        : MExpression(file, line), left(left_), right(right_),
          leftChain(dynamic_cast<MBinary*>(left_)) {
        nestOver(right);
        if (leftChain) nestBeside(left);
        else nestOver(left);
    }
    Value interpretReally(Context* c) final;

protected:
    // The operator applied to the value of the left operand; evaluates the
    // right one as the operator needs it.
    virtual Value combine(Context* c, Value l) = 0;

    MExpression* left;
    MExpression* right;

private:
    MBinary* leftChain;
};

#define QX_BINARY_NODE(Name) \
    class Name : public MBinary { \
    public: \
        using MBinary::MBinary; \
    protected: \
        Value combine(Context* c, Value l) override; \
    };
QX_BINARY_NODE(MSum)
QX_BINARY_NODE(MSub)
QX_BINARY_NODE(MProduct)
QX_BINARY_NODE(MDivide)
QX_BINARY_NODE(MModulo)
QX_BINARY_NODE(MAnd)
QX_BINARY_NODE(MOr)
#undef QX_BINARY_NODE

class MComparison : public MBinary {
public:
    enum Op { Lt, Leq, Gt, Geq, Eq, Neq };
    MComparison(const std::string* file, int line, Op op_, MExpression* l, MExpression* r)
        : MBinary(file, line, l, r), op(op_) {}

protected:
    Value combine(Context* c, Value l) override;

private:
    Op op;
};

class MUnary : public MExpression {
public:
    MUnary(const std::string* file, int line, MExpression* operand_)
        : MExpression(file, line), operand(operand_) {
        nestOver(operand);
    }

protected:
    MExpression* operand;
};

class MMinus : public MUnary {
public:
    using MUnary::MUnary;
    Value interpretReally(Context* c) override;
};

class MNot : public MUnary {
public:
    using MUnary::MUnary;
    Value interpretReally(Context* c) override;
};

// c ? a : b. With an integer condition only the chosen branch runs, so a
// recursive definition terminates; other conditions (model expressions)
// take both branches to their type.
class MTernary : public MExpression {
public:
    MTernary(const std::string* file, int line, MExpression* cond_, MExpression* a_,
             MExpression* b_)
        : MExpression(file, line), cond(cond_), a(a_), b(b_) {
        nestOver({cond, a, b});
    }
    Value interpretReally(Context* c) override;

private:
    MExpression* cond;
    MExpression* a;
    MExpression* b;
};

// f(args), or f[iterators](args) called once per combination (nil result).
class MFunctionCall : public MExpression {
public:
    MFunctionCall(const std::string* file, int line, const std::string* name_)
        : MExpression(file, line), name(name_), function(nullptr), compositor(nullptr) {}
    void addArgument(MExpression* e) {
        args.push_back(e);
        nestOver(e);
    }
    void setName(const std::string* name_) { name = name_; }
    void setCompositor(MCompositor* comp);
    Value interpretReally(Context* c) override;
    // Evaluates the arguments and calls.
    Value callOnce(Context* c);

private:
    const std::string* name;
    Function* function;
    std::vector<MExpression*> args;
    MCompositor* compositor;
};

// { e1, e2, "k" = e3 }: positional elements appended, keyed ones set.
class MTableDeclaration : public MExpression {
public:
    MTableDeclaration(const std::string* file, int line) : MExpression(file, line) {}
    void addElement(const std::string* key, MExpression* e) {
        elements.emplace_back(key, e);
        nestOver(e);
    }
    Value interpretReally(Context* c) override;

private:
    std::vector<std::pair<const std::string*, MExpression*>> elements;
};
