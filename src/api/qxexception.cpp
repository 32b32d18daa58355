#include "api/qxexception.h"

#include <utility>

QXException::QXException(std::string explanation_, int lineNumber_, std::string fileName_,
                         std::string functionName_)
    : explanation(std::move(explanation_)),
      fileName(std::move(fileName_)),
      lineNumber(lineNumber_),
      functionName(std::move(functionName_)),
      message("ERROR [function " + functionName + "]: " + explanation) {}

QXException::QXException(std::string explanation_, const QXWhere& where)
    : QXException(std::move(explanation_), where.lineNumber, where.fileName, where.functionName) {}

QXException::~QXException() = default;
