#pragma once

#include "modeler/section.h"
#include "modeler/value.h"
#include "modeler/variableset.h"

#include <functional>
#include <string>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#define QX_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QX_ADDRESS_SANITIZER 1
#endif
#endif
#ifndef QX_ADDRESS_SANITIZER
#define QX_ADDRESS_SANITIZER 0
#endif

class MNode;
class Program;
class QXModel;
class Quarrix;

// The state of one execution of a program: global and local storage, call
// frames, the scope stack used to resolve names, the return signal, the
// current section and the statement being executed.
class Context {
public:
    Context(Program* program, Quarrix* solver);
    ~Context();
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    Program* getProgram() const { return program; }
    Quarrix* getSolver() const { return solver; }
    // The solver's model, where the language's expressions are built.
    QXModel* getModel() const;

    // ---- variables: a slot never written reads as nil
    Value getValue(Variable* v) const {
        const std::vector<Value>& store = v->isGlobal() ? globals : locals;
        size_t i = v->isGlobal() ? v->getSlot() : base + v->getSlot();
        return i < store.size() ? store[i] : Value();
    }
    void setValue(Variable* v, Value value) { slot(v) = std::move(value); }
    // The storage of v, grown as needed (autoResize).
    Value& slot(Variable* v) {
        std::vector<Value>& store = v->isGlobal() ? globals : locals;
        size_t i = v->isGlobal() ? v->getSlot() : base + v->getSlot();
        if (i >= store.size()) store.resize(i + 1);
        return store[i];
    }
    bool isGlobalVariable(Variable* v) const { return v->isGlobal(); }

    // ---- call frames
    // Opens a frame above everything in use; returns the previous base.
    size_t pushLocalRegisters() {
        size_t old = base;
        base = locals.size();
        return old;
    }
    void popLocalRegisters(size_t oldBase) {
        locals.resize(base);
        base = oldBase;
    }
    // Depth and stack checks around every user call; see context.cpp.
    void enterCall(const std::string& functionName);
    // Runs work (an outermost user call) on a thread of its own with a large
    // stack, waiting for it; its error, if any, is raised here.
    static void runOnInterpreterStack(const std::function<void()>& work);
    void leaveCall() { --callDepth; }
    int getCallDepth() const { return callDepth; }

    // ---- scopes
    void pushVariableSet(VariableSet* s) { scopes.push_back(s); }
    void popVariableSet() { scopes.pop_back(); }
    VariableSet* getCurrentVariableSet() const { return scopes.back(); }
    size_t getScopeDepth() const { return scopes.size(); }
    // Drops the scopes an interrupted (failed) execution left pushed.
    void restoreScopeDepth(size_t depth) { scopes.resize(depth); }

    // ---- return signal
    bool isReturning() const { return returning; }
    void setReturn(Value v) {
        returnValue = std::move(v);
        returning = true;
    }
    // The returned value (nil when no return ran); clears the signal.
    Value takeReturnValue() {
        returning = false;
        Value r = std::move(returnValue);
        returnValue = Value();
        return r;
    }

    // ---- section and instruction pointer
    Section getCurrentSection() const { return section; }
    void setCurrentSection(Section s) { section = s; }
    MNode* getInstructionPointer() const { return instructionPointer; }
    void setInstructionPointer(MNode* node) {
        instructionPointer = node;
        if (instructionBudget >= 0 && --instructionBudget < 0) budgetExhausted();
    }
    // Bounds the nodes a run may execute (negative: no bound), for callers
    // that run untrusted programs with a time budget (the fuzzing harness);
    // the run then fails with an error.
    void setInstructionBudget(long long nodes) { instructionBudget = nodes; }
    // Stack of the interpreter threads started from now on (tests and
    // harnesses that start many use a smaller one).
    static void setInterpreterStackSize(size_t bytes);
    // Makes node the instruction again after its operands ran; returns c.
    Context* at(MNode* node) {
        instructionPointer = node;
        return this;
    }

    // Nested user calls allowed at most.
    static const int kMaxCallDepth = 1000000;
    // Stack of the interpreter's thread: room for kMaxCallDepth calls of a
    // simple recursive function (about 1 KB each in an optimised build).
    // Only the pages used are ever committed; deeper frames meet the stack
    // budget of enterCall first, with the same error. AddressSanitizer
    // cannot unwind an error through more than 64 MB of stack (it stops
    // clearing its marks and then reports false errors), so instrumented
    // builds run on 64 MB and reach the budget after some 20,000 calls.
#if QX_ADDRESS_SANITIZER
    static const size_t kInterpreterStackSize = size_t(64) << 20;
#else
    static const size_t kInterpreterStackSize = size_t(4) << 30;
#endif

private:
    Program* program;
    Quarrix* solver;
    std::vector<Value> globals;
    std::vector<Value> locals;
    size_t base;
    std::vector<VariableSet*> scopes;
    bool returning;
    Value returnValue;
    Section section;
    MNode* instructionPointer;
    long long instructionBudget = -1;
    [[noreturn]] static void budgetExhausted();
    int callDepth;
    const char* stackBase;
};
