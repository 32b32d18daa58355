#pragma once

#include "modeler/value.h"

// Files: only a text form, "(File : name)".
class TFile : public Type {
public:
    constexpr TFile() : Type("file", Kind::File, true) {}
    std::string toString(Context*, const Value& v, int) const override;
};
