#include "modeler/lib/stringlibrary.h"

#include "api/qxexception.h"
#include "modeler/modelerexception.h"
#include "modeler/program.h"
#include "modeler/solverfunction.h"
#include "modeler/value/vmap.h"

#include <cctype>

namespace {

const char* const UNIT = "src/modeler/lib/stringlibrary";

std::string trimmed(const std::string& s) {
    size_t begin = 0, end = s.size();
    while (begin < end && std::isspace((unsigned char)s[begin])) ++begin;
    while (end > begin && std::isspace((unsigned char)s[end - 1])) --end;
    return s.substr(begin, end - begin);
}

// Blanks around the number are ignored (data split from a line often keeps
// them); a leading "+" is accepted like a leading "-".
Value toInt(Context*, std::vector<Value>& args) {
    const std::string& s = args[0].castToString();
    try {
        return Value(castToQxInt(trimmed(s)));
    } catch (const QXException&) {
        throw ModelerException("The given argument '" + s + "' cannot be converted to int",
                               QX_HERE);
    }
}

Value toString(Context*, std::vector<Value>& args) {
    return Value(std::to_string(args[0].castToInt()));
}

Value split(Context*, std::vector<Value>& args) {
    const std::string& s = args[0].castToString();
    const std::string& separators = args[1].castToString();
    VMap* out = new VMap();
    Value result(out);
    size_t start = 0;
    for (size_t i = 0; i <= s.size(); ++i) {
        if (i == s.size() || separators.find(s[i]) != std::string::npos) {
            if (i > start) out->add(Value(s.substr(start, i - start)));
            start = i + 1;
        }
    }
    return result;
}

Value trim(Context*, std::vector<Value>& args) { return Value(trimmed(args[0].castToString())); }

}  // namespace

void StringLibrary::addFunctions(Program* program) {
    const int any = SolverFunction::kAnySection;
    program->addFunction(new SolverFunction("toInt", toInt, any, 1));
    program->addFunction(new SolverFunction("toString", toString, any, 1));
    program->addFunction(new SolverFunction("split", split, any, 2));
    program->addFunction(new SolverFunction("trim", trim, any, 1));
}
