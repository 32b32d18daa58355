#pragma once

#include "api/qxexception.h"

#include <utility>

// Raised by the compiled graph, the search kernel, the model's closing for
// lack of an objective, and the launcher's reading of reserved variables.
// Only the dynamic type differs from QXException.
class KernelException : public QXException {
public:
    KernelException(std::string explanation, const QXWhere& where)
        : QXException(std::move(explanation), where) {}
    // The search's own form, location first; its callers pass __LINE__.
    KernelException(std::string fileName, int lineNumber, std::string functionName,
                    std::string explanation)
        : QXException(std::move(explanation), lineNumber, std::move(fileName),
                      std::move(functionName)) {}
};
