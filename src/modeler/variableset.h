#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class VariableSet;

// A named slot. Globals index the context's global vector; locals are an
// offset from the current call frame.
class Variable {
public:
    Variable(std::string name_, VariableSet* scope_, size_t slot_, bool global_)
        : name(std::move(name_)), scope(scope_), slot(slot_), global(global_) {}
    const std::string& getName() const { return name; }
    VariableSet* getScope() const { return scope; }
    size_t getSlot() const { return slot; }
    bool isGlobal() const { return global; }

private:
    std::string name;
    VariableSet* scope;
    size_t slot;
    bool global;
};

// A scope. Lookups search this scope, then its parents. All the scopes of
// one function share one slot counter, so each of its variables has its own
// offset in the call frame.
class VariableSet {
public:
    // The global scope.
    VariableSet();
    ~VariableSet();

    // A child scope; with newFrame it starts a function's own slot numbering.
    std::unique_ptr<VariableSet> derivate(bool newFrame = false);

    bool isVariableDefined(const std::string& name) const;
    // Throws "Variable '<name>' undefined." when no visible scope has it.
    Variable* getVariable(const std::string& name) const;
    // The visible variable, or null.
    Variable* findVariable(const std::string& name) const;
    // In this scope only, or null.
    Variable* findOwnVariable(const std::string& name) const;
    // Adds to this scope; throws "Variable '<name>' already defined." when
    // this scope has it.
    Variable* createVariable(const std::string& name);
    // The existing visible variable or a new one in this scope.
    Variable* autoCreateVariable(const std::string& name);
    VariableSet* getParent() const { return parent; }
    bool isGlobalScope() const { return global; }
    // Slots used so far by the frame this scope belongs to.
    size_t getFrameSize() const { return *slotCounter; }
    VariableSet* getRoot();

private:
    VariableSet(VariableSet* parent, bool newFrame);

    VariableSet* parent;
    bool global;
    size_t ownCounter;
    size_t* slotCounter;
    std::unordered_map<std::string, std::unique_ptr<Variable>> variables;
};
