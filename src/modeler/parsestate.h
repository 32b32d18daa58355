#pragma once

#include "modeler/mnode.h"
#include "modeler/program.h"

#include <string>

// Shared by the scanner and the parser of one file. Errors are recorded here
// rather than thrown, so that the generated parser always unwinds and frees
// its own stacks; Program then throws the recorded error.
struct ParseState {
    // Deeper syntax trees are refused: the interpreter walks them
    // recursively, and this bound keeps one function body's walk well within
    // the stack reserve kept free by Context::enterCall.
    static const int kMaxNesting = 1000;

    Program* program;
    const std::string* fileName;
    int line = 1;
    bool failed = false;
    int errorLine = 0;
    std::string error;
    std::string text;  // string literal being collected
    int commentLine = 0;
    int stringLine = 0;  // where the string literal being collected opens

    ParseState(Program* program_, const std::string* fileName_)
        : program(program_), fileName(fileName_) {}

    void fail(const std::string& message) { failAt(line, message); }
    void failAt(int where, const std::string& message) {
        if (failed) return;
        failed = true;
        errorLine = where;
        error = "At line " + std::to_string(where) + " : " + message;
    }
    // Errors whose text stands alone (a function defined twice).
    void failPlain(const std::string& message) {
        if (failed) return;
        failed = true;
        errorLine = line;
        error = message;
    }
    // Hands the node to the program; false when it nests too deeply.
    bool track(MNode* node) {
        program->adopt(node);
        if (node->getDepth() <= kMaxNesting) return true;
        fail("Program nested too deeply (more than " + std::to_string(kMaxNesting) +
             " levels).");
        return false;
    }
};
