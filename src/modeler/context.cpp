#include "modeler/context.h"

#include "api/quarrix.h"
#include "modeler/modelerexception.h"
#include "modeler/program.h"
#include "modeler/value/vmap.h"

#include <boost/thread/thread.hpp>

#include <algorithm>
#include <exception>

namespace {
const char* const UNIT = "src/modeler/context";
// Room left below the deepest user call for the statements and expressions
// of one function body, whose nesting the parser bounds.
const size_t kStackReserve = size_t(8) << 20;
// Where the system refuses the large stack (a cap on address space), the
// interpreter runs on this one, and deep recursion meets its budget sooner.
const size_t kFallbackStackSize = size_t(256) << 20;
// The stack asked for the interpreter thread, and what it got, less the
// reserve.
size_t stackSize = Context::kInterpreterStackSize;
size_t stackBudget = Context::kInterpreterStackSize - kStackReserve;
}  // namespace

Context::Context(Program* program_, Quarrix* solver_)
    : program(program_), solver(solver_), base(0), returning(false),
      section(Section::input), instructionPointer(nullptr), callDepth(0),
      stackBase(nullptr) {
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
// interpreter recurses on the C++ stack: the outermost call runs on a thread
// with a large stack (runOnInterpreterStack), nested calls are limited to
// kMaxCallDepth, and as a safety net each call also measures the stack used
// since the outermost one.
void Context::enterCall(const std::string& functionName) {
    const char* here = static_cast<const char*>(__builtin_frame_address(0));
    if (callDepth == 0) stackBase = here;
    if (callDepth >= kMaxCallDepth ||
        (stackBase > here && (size_t)(stackBase - here) > stackBudget))
        throw ModelerException("Function '" + functionName + "': more than " +
                                   std::to_string(callDepth) +
                                   " nested calls (recursion too deep).",
                               QX_HERE);
    ++callDepth;
}

void Context::setInterpreterStackSize(size_t bytes) {
    stackSize = std::max(bytes, 2 * kStackReserve);
}

void Context::budgetExhausted() {
    throw ModelerException("The instruction budget of this run is exhausted.", QX_HERE);
}

QXModel* Context::getModel() const { return solver->getModel(); }

void Context::runOnInterpreterStack(const std::function<void()>& work) {
    std::exception_ptr error;
    auto body = [&work, &error] {
        try {
            work();
        } catch (...) {
            error = std::current_exception();
        }
    };
    boost::thread::attributes attributes;
    attributes.set_stack_size(stackSize);
    stackBudget = stackSize - kStackReserve;
    boost::thread thread;
    try {
        thread = boost::thread(attributes, body);
    } catch (const boost::thread_resource_error&) {
        attributes.set_stack_size(kFallbackStackSize);
        stackBudget = kFallbackStackSize - kStackReserve;
        thread = boost::thread(attributes, body);
    }
    thread.join();
    if (error) std::rethrow_exception(error);
}
