// Command-line assignment words: each line of the input is one word given
// to the parameter parser, as the launcher gives them after a program. Bad
// words must fail with the language's own errors; a word that is taken must
// leave its variable readable as text.

#include "api/quarrix.h"
#include "api/qxexception.h"
#include "modeler/context.h"
#include "modeler/paramparser.h"
#include "modeler/program.h"
#include "modeler/variableset.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>

#include "fuzzmemory.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput running;
    const std::string text(reinterpret_cast<const char*>(data), size);
    Quarrix solver;
    Program program;
    Context context(&program, &solver);
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string word = text.substr(start, end - start);
        start = end + 1;
        try {
            ParamParser::addParam(&context, word);
        } catch (const QXException&) {
            continue;
        } catch (const std::bad_alloc&) {
            continue;
        }
        // Taken: the name before '=' is now a global that reads back.
        const std::string name = word.substr(0, word.find('='));
        VariableSet* globals = program.getGlobalVariables();
        if (!globals->isVariableDefined(name)) std::abort();
        context.getValue(globals->getVariable(name)).toString(&context);
    }
    return 0;
}
