#pragma once

#include "api/qxexception.h"

#include <utility>

// Raised by the modeling language: scanner, parser, interpreter, values and
// built-in functions. Only the dynamic type differs from QXException.
class ModelerException : public QXException {
public:
    ModelerException(std::string explanation, const QXWhere& where)
        : QXException(std::move(explanation), where) {}
    // For errors located in the user's program (a parse error), where the
    // line and the file are the program's, not the raising call's.
    ModelerException(std::string explanation, int lineNumber, std::string fileName,
                     std::string functionName)
        : QXException(std::move(explanation), lineNumber, std::move(fileName),
                      std::move(functionName)) {}
};
