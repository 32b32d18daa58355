#include "modeler/paramparser.h"

#include "modeler/context.h"
#include "modeler/modelerexception.h"
#include "modeler/program.h"
#include "modeler/value/vmap.h"

namespace {
const char* const UNIT = "src/modeler/paramparser";
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
}  // namespace

void ParamParser::addParam(Context* context, const std::string& word) {
    size_t eq = word.find('=');
    if (eq == std::string::npos)
        throw ModelerException("Invalid argument format for '" + word +
                                   "'. Expected format : identifier=value.", QX_HERE);
    std::string name = word.substr(0, eq);
    if (!isIdent(name))
        throw ModelerException("Valid identifier expected on the left side of argument '" +
                                   word + "'.", QX_HERE);
    Variable* v = context->getProgram()->getGlobalVariables()->autoCreateVariable(name);
    analyseValue(context, v, word.substr(eq + 1));
}

void ParamParser::analyseValue(Context* context, Variable* variable, const std::string& text) {
    context->setValue(variable,
                      isSimpleValue(text) ? analyseSimpleValue(text) : analyseMapValue(text));
}

bool ParamParser::isSimpleValue(const std::string& text) {
    return text.find_first_of(",:") == std::string::npos;
}

Value ParamParser::analyseSimpleValue(const std::string& text) {
    // A lone "-" counts as a number and fails in the conversion, on purpose.
    if (isNumber(text)) return Value(castToQxInt(text));
    if (isBoolean(text)) return Value(text == "true");
    return Value(text);
}

Value ParamParser::analyseMapValue(const std::string& text) {
    VMap* map = new VMap();
    Value result(map);
    size_t start = 0;
    for (;;) {
        size_t comma = text.find(',', start);
        analyseMapElement(map, text.substr(start, comma == std::string::npos ? std::string::npos
                                                                             : comma - start));
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    return result;
}

void ParamParser::analyseMapElement(VMap* map, const std::string& text) {
    size_t colon = text.find(':');
    if (colon == std::string::npos) {
        map->add(analyseSimpleValue(text));
        return;
    }
    map->set(analyseSimpleValue(text.substr(0, colon)), analyseSimpleValue(text.substr(colon + 1)));
}

bool ParamParser::isIdent(const std::string& text) {
    if (text.empty() || !isLetter(text[0])) return false;
    for (char c : text)
        if (!isLetter(c) && !isDigit(c)) return false;
    return true;
}

bool ParamParser::isNumber(const std::string& text) {
    if (text.empty() || !(isDigit(text[0]) || text[0] == '-')) return false;
    for (size_t i = 1; i < text.size(); ++i)
        if (!isDigit(text[i])) return false;
    return true;
}

bool ParamParser::isBoolean(const std::string& text) { return text == "true" || text == "false"; }
