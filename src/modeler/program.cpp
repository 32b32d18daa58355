#include "modeler/program.h"

#include "modeler/lib/iolibrary.h"
#include "modeler/lib/langlibrary.h"
#include "modeler/lib/stringlibrary.h"
#include "modeler/mnode.h"
#include "modeler/modelerexception.h"
#include "modeler/operatorfunction.h"
#include "modeler/parsestate.h"
#include "modeler/parser.tab.h"
#include "modeler/solverlibrary.h"

#include <cstdint>
#include <cstdio>

// The reentrant scanner's entry points (generated).
typedef void* yyscan_t;
typedef struct yy_buffer_state* YY_BUFFER_STATE;
int yylex_init_extra(void* extra, yyscan_t* scanner);
int yylex_destroy(yyscan_t scanner);
YY_BUFFER_STATE yy_scan_bytes(const char* bytes, int length, yyscan_t scanner);

namespace {
const char* const UNIT = "src/modeler/program";
}

Program::Program() {
    LangLibrary::addFunctions(this);
    IOLibrary::addFunctions(this);
    StringLibrary::addFunctions(this);
    OperatorLibrary::addFunctions(this);
    SolverLibrary::addFunctions(this);
}

Program::~Program() = default;

void Program::parse(const std::string& fileName) {
    FILE* in = std::fopen(fileName.c_str(), "rb");
    if (!in)
        throw ModelerException("'" + fileName + "' doesn't exist or is not accessible.", 0,
                               fileName, "parse");
    // Read in pieces and stop at the cap: the size a file reports may be
    // wrong (a device, a pipe) and the text is never read whole first.
    std::string text;
    char buffer[65536];
    size_t n;
    bool tooLarge = false;
    while (!tooLarge && (n = std::fread(buffer, 1, sizeof buffer, in)) > 0) {
        tooLarge = text.size() + n > kMaxProgramSize;
        if (!tooLarge) text.append(buffer, n);
    }
    bool failed = std::ferror(in) != 0;
    std::fclose(in);
    if (tooLarge)
        throw ModelerException("'" + fileName + "' is larger than " +
                                   std::to_string(kMaxProgramSize) +
                                   " bytes, too large for a program file.",
                               0, fileName, "parse");
    if (failed) throw ModelerException("File not found or read error", 0, fileName, "parse");
    parseText(text, fileName);
}

void Program::parseText(const std::string& text, const std::string& fileName) {
    if (text.size() > (size_t)INT32_MAX)
        throw ModelerException("File not found or read error", 0, fileName, "parse");
    ParseState state(this, intern(fileName));
    yyscan_t scanner;
    if (yylex_init_extra(&state, &scanner) != 0)
        throw ModelerException("File not found or read error", 0, fileName, "parse");
    yy_scan_bytes(text.data(), (int)text.size(), scanner);
    int status = yyparse(scanner, &state);
    yylex_destroy(scanner);
    if (state.failed)
        throw ModelerException(state.error, state.errorLine, fileName, "parse");
    if (status != 0)
        throw ModelerException("At line " + std::to_string(state.line) + " : syntax error",
                               state.line, fileName, "parse");
}

void Program::addFunction(Function* function) {
    std::unique_ptr<Function> owned(function);
    const std::string& name = function->getName();
    if (functions.count(name))
        throw ModelerException("Function '" + name + "' already defined.", QX_HERE);
    functions.emplace(name, std::move(owned));
}

Function* Program::getFunction(const std::string& name) const {
    auto it = functions.find(name);
    if (it == functions.end())
        throw ModelerException("Function '" + name + "' undefined.", QX_HERE);
    return it->second.get();
}

bool Program::isFunctionDefined(const std::string& name) const {
    return functions.count(name) != 0;
}

MNode* Program::adopt(MNode* node) {
    nodes.emplace_back(node);
    return node;
}

const std::string* Program::intern(std::string text) {
    strings.push_back(std::move(text));
    return &strings.back();
}
