#include "modeler/variableset.h"

#include "modeler/modelerexception.h"

namespace {
const char* const UNIT = "src/modeler/variableset";
}

VariableSet::VariableSet() : parent(nullptr), global(true), ownCounter(0), slotCounter(&ownCounter) {}

VariableSet::VariableSet(VariableSet* parent_, bool newFrame)
    : parent(parent_), global(false), ownCounter(0),
      slotCounter(newFrame || parent_->global ? &ownCounter : parent_->slotCounter) {}

VariableSet::~VariableSet() = default;

std::unique_ptr<VariableSet> VariableSet::derivate(bool newFrame) {
    return std::unique_ptr<VariableSet>(new VariableSet(this, newFrame));
}

VariableSet* VariableSet::getRoot() {
    VariableSet* s = this;
    while (s->parent) s = s->parent;
    return s;
}

Variable* VariableSet::findOwnVariable(const std::string& name) const {
    auto it = variables.find(name);
    return it == variables.end() ? nullptr : it->second.get();
}

Variable* VariableSet::findVariable(const std::string& name) const {
    for (const VariableSet* s = this; s; s = s->parent)
        if (Variable* v = s->findOwnVariable(name)) return v;
    return nullptr;
}

bool VariableSet::isVariableDefined(const std::string& name) const {
    return findVariable(name) != nullptr;
}

Variable* VariableSet::getVariable(const std::string& name) const {
    Variable* v = findVariable(name);
    if (!v) throw ModelerException("Variable '" + name + "' undefined.", QX_HERE);
    return v;
}

Variable* VariableSet::createVariable(const std::string& name) {
    if (findOwnVariable(name))
        throw ModelerException("Variable '" + name + "' already defined.", QX_HERE);
    Variable* v = new Variable(name, this, (*slotCounter)++, global);
    variables.emplace(name, std::unique_ptr<Variable>(v));
    return v;
}

Variable* VariableSet::autoCreateVariable(const std::string& name) {
    Variable* v = findVariable(name);
    return v ? v : createVariable(name);
}
