#include "modeler/launcher.h"

#include <boost/thread/exceptions.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>

#include "api/kernelexception.h"
#include "api/qxmodel.h"
#include "api/qxparam.h"
#include "api/qxphase.h"
#include "api/qxsolution.h"
#include "api/quarrix.h"
#include "api/ranklink.h"
#include "modeler/context.h"
#include "modeler/mnode.h"
#include "modeler/paramparser.h"
#include "modeler/program.h"
#include "modeler/value.h"
#include "modeler/value/vfile.h"
#include "modeler/value/vmap.h"
#include "modeler/value/vmapiterator.h"
#include "modeler/variableset.h"
#include "solver/kernel/constants.h"

namespace {

const char* const UNIT = "src/modeler/launcher";

// A failure that the ranks have agreed on and rank 0 has printed.
struct RankFailure {};
// The errors of the reserved-variable reading carry line numbers that users'
// scripts match on (QXWhere::contractLine): fixed by contract, they are not
// the raising calls' source lines.

// The 64-bit value of a reserved variable for a setter that takes 32 bits,
// whose range lies inside the 32-bit one: a value beyond it becomes the
// nearest 32-bit value, which the setter refuses with its own message as it
// would the value itself. Narrowing instead would make 4294967297 a 1.
int saturated(int64_t value) {
    return static_cast<int>(std::max<int64_t>(INT32_MIN, std::min<int64_t>(INT32_MAX, value)));
}

// The same for a setter that accepts every value up to the largest 32-bit
// one: a larger value is refused here, with a message in the setters' style.
int atMostInt32(int64_t value, const std::string& argument) {
    if (value > INT32_MAX)
        throw KernelException("Argument " + argument + " cannot exceed " + std::to_string(INT32_MAX) + ".",
                              QX_WHERE(UNIT, "runSolver"));
    return saturated(value);
}

}  // namespace

Launcher::Launcher(int argc, char** argv) {
    if (argc < 2) printUsage();
    args.assign(argv, argv + argc);
}

Launcher::Launcher(std::vector<std::string> args_) : args(std::move(args_)) {}

Launcher::~Launcher() = default;

void Launcher::printUsage() {
    std::cout << "Usage: quarrix file.qxm [global variables]" << std::endl << std::endl;
    std::exit(0);
}

int Launcher::run() {
    const int status = runSequence();
    if (link) link->close(status != 0);
    return status;
}

int Launcher::runSequence() {
    try {
        solver = std::make_unique<Quarrix>();
        program = std::make_unique<Program>();
        context = std::make_unique<Context>(program.get(), solver.get());

        program->parse(args.at(1));
        for (size_t i = 2; i < args.size(); ++i) ParamParser::addParam(context.get(), args[i]);

        runSection(Section::input);
        runSection(Section::model);
        solver->getModel()->close();
        runSection(Section::param);
        runSolver();
        stage = Stage::Finishing;
        if (isLeader()) runSection(Section::output);
        // What was written must have reached its files and the standard
        // output; a full device or a closed output is an error, not a
        // silent loss.
        // These errors belong to no statement: they are printed plainly.
        try {
            VFile::closeAllWriters();
        } catch (const QXException& e) {
            return fail(errorText(e.getExplanation()));
        }
        std::cout.flush();
        if (!std::cout) {
            return fail(errorText("Cannot write to the standard output: the device is full or the "
                                  "output is closed."));
        }
        return 0;
    } catch (const RankFailure&) {
        return 1;
    } catch (const QXException& e) {
        return fail(errorText(context.get(), e.getExplanation()));
    } catch (const std::bad_alloc&) {
        return fail(errorText(context.get(),
                              "Out of memory: the program, its data or its model needs more memory "
                              "than the system gives."));
    } catch (const boost::thread_resource_error&) {
        return fail(errorText("Cannot start a thread: the system refused it (too many threads, or "
                              "not enough memory for their stacks; try a smaller qxNbThreads)."));
    } catch (const std::exception& e) {
        return fail(errorText(e.what()));
    }
}

bool Launcher::isLeader() const { return link == nullptr || link->rank() == 0; }

int Launcher::fail(const std::string& text) {
    std::string shown = text;
    if (link && stage == Stage::Preparing) {
        // The others reach the agreement before their solve, or here.
        stage = Stage::Finishing;
        shown = link->firstFailure(text);
        if (!isLeader()) return 1;
    } else if (link && (stage == Stage::Solving || !isLeader())) {
        // The other ranks may be waiting for this one at an exchange: rank
        // 0 prints the message and ends them all. Until then the search
        // threads that this rank still runs would only slow the others.
        if (!isLeader()) {
            context.reset();
            solver.reset();
        }
        link->failAll(text);
    }
    std::cout.flush();
    std::cerr << shown;
    std::cerr.flush();
    return 1;
}

void Launcher::runSection(Section section) {
    const std::string& name = getSectionName(section);
    if (!program->isFunctionDefined(name)) return;
    if (getSolverIntegerParameter("qxVerbosity", 1) > 0) std::cout << "Run " << name << "..." << std::endl;
    context->setCurrentSection(section);
    std::vector<Value> noArguments;
    program->getFunction(name)->call(context.get(), noArguments);
}

void Launcher::runSolver() {
    // Read everything first, so a badly typed value stops before any setting.
    int64_t seed = getSolverIntegerParameter("qxSeed", 0);
    int64_t nbThreads = getSolverIntegerParameter("qxNbThreads", 2);
    int64_t annealingLevel = getSolverIntegerParameter("qxAnnealingLevel", 1);
    int64_t verbosity = getSolverIntegerParameter("qxVerbosity", 1);
    int64_t timeBetweenDisplays = getSolverIntegerParameter("qxTimeBetweenDisplays", 1);

    // The setters take 32-bit values and check their ranges; what lies
    // beyond 32 bits is settled before narrowing.
    QXParam* param = solver->getParam();
    param->setSeed(atMostInt32(seed, "seed"));
    param->setNbThreads(saturated(nbThreads));
    param->setAnnealingLevel(saturated(annealingLevel));
    param->setVerbosity(atMostInt32(verbosity, "verbosity"));
    param->setTimeBetweenDisplays(saturated(timeBetweenDisplays));

    setAdvancedParams();
    createPhases();

    // Whatever the interpreter runs during the solve runs as the display section.
    context->setCurrentSection(Section::display);
    if (link) {
        // A refused advanced parameter fails here, on every rank alike,
        // rather than inside the search.
        solver->getParam()->checkAdvancedParams();
        // Every rank is here or in fail(): whichever failed first is told
        // by rank 0, and no rank searches.
        stage = Stage::Finishing;
        const std::string failure = link->firstFailure("");
        if (!failure.empty()) {
            if (isLeader()) std::cerr << failure;
            throw RankFailure();
        }
        solver->setRankLink(link);
        stage = Stage::Solving;
    }
    if (verbosity > 0) std::cout << "Run solver..." << std::endl;
    solver->setDisplayCallback(isLeader() ? &Launcher::display : nullptr, this);
    solver->solve();

    // The output section must be able to tell a feasible result from an
    // infeasible one before printing it; the qx names are reserved, so this
    // global cannot clash with a program's own.
    static const char* const kStatusNames[] = {"Infeasible", "Feasible", "Optimal"};
    QXSolutionStatus status = solver->getSolution()->getStatus();
    context->setValue(program->getGlobalVariables()->autoCreateVariable("qxSolutionStatus"),
                      Value(kStatusNames[static_cast<int>(status)]));
}

// A global that is defined and not void, or nullptr.
static const Value* presentGlobal(Program* program, Context* context, const std::string& name,
                                  Value& holder) {
    VariableSet* globals = program->getGlobalVariables();
    if (!globals->isVariableDefined(name)) return nullptr;
    holder = context->getValue(globals->getVariable(name));
    return holder.isVoid() ? nullptr : &holder;
}

int64_t Launcher::getSolverIntegerParameter(const std::string& name, int64_t defaultValue) {
    Value holder;
    const Value* value = presentGlobal(program.get(), context.get(), name, holder);
    if (!value) return defaultValue;
    if (!value->isInt())
        throw KernelException("'" + name + "' parameter must be an integer. Type provided: " +
                                  value->getType()->getName(),
                              QXWhere::contractLine(UNIT, 150, "getSolverIntegerParameter"));
    return value->asInt();
}

bool Launcher::getSolverBooleanParameter(const std::string& name, bool defaultValue) {
    Value holder;
    const Value* value = presentGlobal(program.get(), context.get(), name, holder);
    if (!value) return defaultValue;
    if (!value->isBool())
        throw KernelException("'" + name + "' parameter must be a boolean. Type provided: " +
                                  value->getType()->getName(),
                              QXWhere::contractLine(UNIT, 123, "getSolverBooleanParameter"));
    return value->castToBool();
}

bool Launcher::isIntegerParameter(const std::string& name) {
    VariableSet* globals = program->getGlobalVariables();
    return globals->isVariableDefined(name) && context->getValue(globals->getVariable(name)).isInt();
}

bool Launcher::isMapParameter(const std::string& name) {
    VariableSet* globals = program->getGlobalVariables();
    return globals->isVariableDefined(name) &&
           context->getValue(globals->getVariable(name)).getType() == RefTypes::T_MAP;
}

void Launcher::setAdvancedParams() {
    Value holder;
    const Value* value = presentGlobal(program.get(), context.get(), "qxAdvancedParams", holder);
    if (!value || value->getType() != RefTypes::T_MAP) return;
    VMapIterator it(static_cast<VMap*>(value->getReference()));
    while (it.next()) {
        const Value& key = it.getKey();
        const Value& entry = it.getValue();
        if (!key.isString() || !entry.isInt()) continue;
        const int64_t number = entry.asInt();
        if (number < INT32_MIN || number > INT32_MAX)
            throw KernelException("Advanced parameter '" + key.asString() + "' must be an integer between " +
                                      std::to_string(INT32_MIN) + " and " + std::to_string(INT32_MAX) + ".",
                                  QX_HERE);
        solver->getParam()->setAdvancedParam(key.asString(), static_cast<int>(number));
    }
}

void Launcher::extractMapParameter(const std::string& name, std::vector<int64_t>& values) {
    const int n = solver->getModel()->getNbObjectives();
    values.assign(n, 0);
    Value holder;
    const Value* value = presentGlobal(program.get(), context.get(), name, holder);
    if (!value) return;
    value->checkType(RefTypes::T_MAP);
    VMapIterator it(static_cast<VMap*>(value->getReference()));
    while (it.next()) {
        const Value& key = it.getKey();
        const Value& entry = it.getValue();
        if (!key.isInt() || !entry.isInt())
            throw KernelException("Keys and values of map '" + name + "' must be integers.",
                                  QXWhere::contractLine(UNIT, 185, "extractMapParameter"));
        int64_t k = key.asInt();
        if (k < 0 || k >= n)
            throw KernelException(std::to_string(k) +
                                      " is not a valid objective index. Only indices from 0 to " +
                                      std::to_string(n - 1) + " are allowed.",
                                  QXWhere::contractLine(UNIT, 190, "extractMapParameter"));
        values[k] = entry.asInt();
    }
}

void Launcher::createPhases() {
    if (!isMapParameter("qxTimeLimit") && !isMapParameter("qxIterationLimit")) {
        int64_t timeLimit = getSolverIntegerParameter("qxTimeLimit", QXLimits::NO_TIME_LIMIT);
        int64_t iterationLimit = getSolverIntegerParameter("qxIterationLimit", QXLimits::NO_ITERATION_LIMIT);
        QXPhase* phase = solver->createPhase();
        phase->setTimeLimit(atMostInt32(timeLimit, "timeLimit"));
        phase->setIterationLimit(iterationLimit);
        return;
    }
    if (isIntegerParameter("qxTimeLimit") || isIntegerParameter("qxIterationLimit"))
        throw KernelException("qxTimeLimit and qxIterationLimit must be maps or integers.",
                              QXWhere::contractLine(UNIT, 249, "createPhases"));
    std::vector<int64_t> timeLimits, iterationLimits;
    extractMapParameter("qxTimeLimit", timeLimits);
    extractMapParameter("qxIterationLimit", iterationLimits);
    const int n = solver->getModel()->getNbObjectives();
    for (int k = 0; k < n; ++k) {
        if (timeLimits[k] == 0 && iterationLimits[k] == 0) continue;
        QXPhase* phase = solver->createPhase();
        if (timeLimits[k] > 0) phase->setTimeLimit(atMostInt32(timeLimits[k], "timeLimit"));
        if (iterationLimits[k] > 0) phase->setIterationLimit(iterationLimits[k]);
        phase->setOptimizedObjective(k);
    }
}

void Launcher::display(void* data) {
    Launcher* launcher = static_cast<Launcher*>(data);
    Program* program = launcher->program.get();
    Quarrix* solver = launcher->solver.get();
    Function* userDisplay = program->isFunctionDefined("display") ? program->getFunction("display") : nullptr;
    const bool verbose = solver->getParam()->getVerbosity() != 0;
    if (verbose) {
        // The information line ends with a newline; drop it so that what the
        // user's display section prints continues the line.
        std::string info = solver->getInfo();
        if (!info.empty() && info.back() == '\n') info.pop_back();
        std::cout << info;
    }
    if (userDisplay) {
        std::vector<Value> noArguments;
        try {
            userDisplay->call(launcher->context.get(), noArguments);
        } catch (...) {
            // The error goes on a line of its own, not after the progress
            // text or what the section printed of its line.
            std::cout << std::endl;
            throw;
        }
    }
    if (verbose) std::cout << std::endl;
    std::cout.flush();
}

std::string Launcher::errorText(const std::string& message) { return "Error: " + message + "\n\n"; }

std::string Launcher::errorText(Context* context, const std::string& message) {
    const MNode* node = context ? context->getInstructionPointer() : nullptr;
    if (!node) return errorText(message);
    return "Error [ file: " + node->getFileName() + " / line: " + std::to_string(node->getLine()) +
           " ]: " + message + "\n\n";
}

void Launcher::showErrorMessage(const std::string& message) {
    std::cout.flush();
    std::cerr << errorText(message);
    std::cerr.flush();
}

void Launcher::showErrorMessage(Context* context, const std::string& message) {
    std::cout.flush();
    std::cerr << errorText(context, message);
    std::cerr.flush();
}
