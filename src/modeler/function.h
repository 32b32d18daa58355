#pragma once

#include "modeler/value.h"

#include <string>
#include <utility>
#include <vector>

class Context;

// Anything a program can call by name: user functions and built-ins alike.
class Function {
public:
    explicit Function(std::string name_) : name(std::move(name_)) {}
    virtual ~Function() = default;
    const std::string& getName() const { return name; }
    // The arguments may be moved from.
    virtual Value call(Context* context, std::vector<Value>& args) = 0;

private:
    std::string name;
};
