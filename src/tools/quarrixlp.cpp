// quarrix-lp: writes the model of a program as a linear program in the CPLEX
// LP format, for a MIP solver, instead of solving it:
//
//   quarrix-lp file.qxm file.lp [identifier=value ...]
//
// The program runs as under quarrix up to the closing of its model: the
// command-line assignments, the input section, the model section; then the
// closed model is written (QXLpWriter says which models are linear). The
// param, display and output sections do not run. A command of its own keeps
// quarrix's command line and run sequence as they are.
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "api/quarrix.h"
#include "api/qxexception.h"
#include "api/qxlpwriter.h"
#include "api/qxmodel.h"
#include "modeler/context.h"
#include "modeler/launcher.h"
#include "modeler/paramparser.h"
#include "modeler/program.h"
#include "modeler/section.h"
#include "modeler/value.h"

int main(int argc, char** argv) {
    if (argc < 3) {
        (argc < 2 ? std::cout : std::cerr) << "Usage: quarrix-lp file.qxm file.lp [global variables]" << std::endl;
        return argc < 2 ? 0 : 1;
    }
    std::unique_ptr<Quarrix> solver;
    std::unique_ptr<Program> program;
    std::unique_ptr<Context> context;
    try {
        solver = std::make_unique<Quarrix>();
        program = std::make_unique<Program>();
        context = std::make_unique<Context>(program.get(), solver.get());
        program->parse(argv[1]);
        for (int i = 3; i < argc; ++i) ParamParser::addParam(context.get(), argv[i]);
        for (Section section : {Section::input, Section::model}) {
            const std::string& name = getSectionName(section);
            if (!program->isFunctionDefined(name)) continue;
            context->setCurrentSection(section);
            std::vector<Value> noArguments;
            program->getFunction(name)->call(context.get(), noArguments);
        }
    } catch (const QXException& e) {
        Launcher::showErrorMessage(context.get(), e.getExplanation());
        return 1;
    } catch (const std::exception& e) {
        Launcher::showErrorMessage(e.what());
        return 1;
    }
    // Errors of the closed model belong to no statement of the program.
    try {
        solver->getModel()->close();
        QXLpWriter::write(solver->getModel(), std::string(argv[2]));
        return 0;
    } catch (const QXException& e) {
        Launcher::showErrorMessage(e.getExplanation());
    } catch (const std::exception& e) {
        Launcher::showErrorMessage(e.what());
    }
    return 1;
}
