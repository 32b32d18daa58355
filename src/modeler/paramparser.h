#pragma once

#include "modeler/value.h"

#include <string>

class Context;
class Variable;
class VMap;

// Turns a command-line word identifier=value into a typed global variable:
// integers, booleans (1 and 0), strings, or maps of those written with ","
// and ":".
class ParamParser {
public:
    static void addParam(Context* context, const std::string& word);
    static void analyseValue(Context* context, Variable* variable, const std::string& text);
    static bool isSimpleValue(const std::string& text);
    static Value analyseSimpleValue(const std::string& text);
    static Value analyseMapValue(const std::string& text);
    static void analyseMapElement(VMap* map, const std::string& text);
    static bool isIdent(const std::string& text);
    static bool isNumber(const std::string& text);
    static bool isBoolean(const std::string& text);
};
