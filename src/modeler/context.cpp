#include "modeler/context.h"

#include "api/quarrix.h"
#include "modeler/modelerexception.h"
#include "modeler/program.h"
#include "modeler/value/vmap.h"

#include <sys/resource.h>

namespace {
// Room left below the deepest user call for the statements and expressions
// of one function body, whose nesting the parser bounds.
const size_t kStackReserve = size_t(3) << 20;

size_t computeStackBudget() {
    struct rlimit limit;
    size_t size = size_t(8) << 20;
    if (getrlimit(RLIMIT_STACK, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY)
        size = (size_t)limit.rlim_cur;
    return size > 2 * kStackReserve ? size - kStackReserve : size / 4;
}
}  // namespace

Context::Context(Program* program_, Quarrix* solver_)
    : program(program_), solver(solver_), base(0), returning(false),
      section(Section::input), instructionPointer(nullptr), callDepth(0),
      stackBase(nullptr), stackBudget(computeStackBudget()) {
    scopes.push_back(program->getGlobalVariables());
}

Context::~Context() {
    // Maps that hold themselves would never be released otherwise.
    globals.clear();
    locals.clear();
    returnValue = Value();
    VMap::clearAllMaps();
}

// Unbounded recursion must end in an error, never in a stack overflow. The
// interpreter recurses on the C++ stack, so besides a fixed limit on nested
// calls, each call measures the stack used since the outermost call and
// stops before the process limit (8 MB by default) is near.
void Context::enterCall(const std::string& functionName) {
    const char* here = static_cast<const char*>(__builtin_frame_address(0));
    if (callDepth == 0) stackBase = here;
    if (callDepth >= kMaxCallDepth ||
        (stackBase > here && (size_t)(stackBase - here) > stackBudget))
        throw ModelerException("Function '" + functionName +
                                   "': too many nested calls (recursion too deep).",
                               __LINE__, "src/modeler/context", "enterCall");
    ++callDepth;
}

QXModel* Context::getModel() const { return solver->getModel(); }
