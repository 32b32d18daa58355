#pragma once

#include "modeler/function.h"
#include "modeler/variableset.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class MNode;

// A parsed program: its functions by name (user functions and built-ins) and
// its global variables. It owns every syntax-tree node parsed into it, so a
// parse that fails half-way leaks nothing.
class Program {
public:
    // Registers the built-in libraries.
    Program();
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    // Largest program file (or included file) read, in bytes.
    static const size_t kMaxProgramSize = size_t(256) << 20;

    // Parses a program file, adding its functions. Also used by "include".
    void parse(const std::string& fileName);
    // Parses program text given directly; fileName is used in messages.
    void parseText(const std::string& text, const std::string& fileName);

    // Takes ownership; throws "Function '<name>' already defined.".
    void addFunction(Function* function);
    // Throws "Function '<name>' undefined.".
    Function* getFunction(const std::string& name) const;
    bool isFunctionDefined(const std::string& name) const;
    VariableSet* getGlobalVariables() { return &globals; }

    // ---- used by the parser
    MNode* adopt(MNode* node);
    const std::string* intern(std::string text);

private:
    std::unordered_map<std::string, std::unique_ptr<Function>> functions;
    VariableSet globals;
    std::vector<std::unique_ptr<MNode>> nodes;
    std::deque<std::string> strings;
};
