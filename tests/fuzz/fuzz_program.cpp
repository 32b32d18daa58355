// Program text through the scanner, the parser and the interpreter: the
// sections input, model (and the closing) and param run, on a bounded
// instruction budget and a small interpreter stack, so an input ends in well
// under a second. Neither the solve nor the output section runs: the output
// section may open files for writing, and a mutated path could name any
// file of the machine. Standard input reads as empty, standard output goes
// nowhere. The language's own errors are outcomes;
// anything else (a crash, a sanitizer report, another exception) is a find.

#include "api/quarrix.h"
#include "api/qxexception.h"
#include "api/qxmodel.h"
#include "modeler/context.h"
#include "modeler/function.h"
#include "modeler/program.h"
#include "modeler/section.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "fuzzmemory.h"

namespace {
void runSection(Program& program, Context& context, const char* name, Section section) {
    if (!program.isFunctionDefined(name)) return;
    context.setCurrentSection(section);
    std::vector<Value> noArguments;
    program.getFunction(name)->call(&context, noArguments);
}
}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    Context::setInterpreterStackSize(size_t(64) << 20);
    if (!std::freopen("/dev/null", "r", stdin) || !std::freopen("/dev/null", "w", stdout))
        std::abort();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput running;
    const std::string text(reinterpret_cast<const char*>(data), size);
    Quarrix solver;
    Program program;
    Context context(&program, &solver);
    context.setInstructionBudget(200000);
    try {
        program.parseText(text, "fuzz.qxm");
        runSection(program, context, "input", Section::input);
        runSection(program, context, "model", Section::model);
        solver.getModel()->close();
        runSection(program, context, "param", Section::param);
    } catch (const QXException&) {
    } catch (const std::bad_alloc&) {
    }
    return 0;
}
