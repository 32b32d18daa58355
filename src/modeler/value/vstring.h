#pragma once

#include "modeler/value.h"

#include <string>
#include <utility>

// An immutable byte string shared by the values that hold it.
class VString : public Reference {
public:
    explicit VString(std::string text_) : Reference(RefTypes::T_STRING), text(std::move(text_)) {}
    const std::string& get() const { return text; }

private:
    const std::string text;
};
