#pragma once

#include <exception>
#include <string>

// The one error channel of the system. Every failure is raised after all the
// checks of the failing call and before any change, so the object that raised
// it is unchanged. The launcher prints getExplanation(); what() gives the
// longer form that names the function.
class QXException : public std::exception {
public:
    QXException(std::string explanation, int lineNumber, std::string fileName,
                std::string functionName);
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
