#pragma once

#include <exception>
#include <string>

// Where an error is raised: source unit, line and function name. Build it
// with QX_HERE or QX_WHERE, so that the line is the raising call's own.
struct QXWhere {
    const char* fileName;
    int lineNumber;
    const char* functionName;

    // A few errors carry a line number that callers and their users match on
    // (the launcher's reserved-variable checks, the integer cast, the
    // propagation's and the heuristic's guards). That number is fixed by
    // contract; it is not the raising call's source line and does not move
    // with the code.
    static constexpr QXWhere contractLine(const char* fileName, int lineNumber,
                                          const char* functionName) {
        return QXWhere{fileName, lineNumber, functionName};
    }
};

// The raising call's own line, in the given source unit and function.
#define QX_WHERE(unit, function) (QXWhere{(unit), __LINE__, (function)})
// The common case: each unit defines UNIT, its source unit name, and the
// function is the one raising.
#define QX_HERE QX_WHERE(UNIT, __func__)

// The one error channel of the system. Every failure is raised after all the
// checks of the failing call and before any change, so the object that raised
// it is unchanged. The launcher prints getExplanation(); what() gives the
// longer form that names the function.
class QXException : public std::exception {
public:
    QXException(std::string explanation, int lineNumber, std::string fileName,
                std::string functionName);
    QXException(std::string explanation, const QXWhere& where);
    ~QXException() override;

    const std::string& getExplanation() const { return explanation; }
    const std::string& getFileName() const { return fileName; }
    int getLineNumber() const { return lineNumber; }
    const std::string& getFunctionName() const { return functionName; }
    const std::string& getMessage() const { return message; }

    const char* what() const noexcept override { return message.c_str(); }

private:
    std::string explanation;
    std::string fileName;
    int lineNumber;
    std::string functionName;
    std::string message;  // "ERROR [function " + functionName + "]: " + explanation
};
