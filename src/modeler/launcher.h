#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "modeler/section.h"

class Context;
class Program;
class Quarrix;
class RankLink;

// Runs one program file: parses it, applies the command-line assignments,
// then runs the sections around one solve in a fixed order:
//   input, model, (close), param, solve, output.
// Every error of the whole sequence ends the run with one message on
// standard error and the result 1.
class Launcher {
public:
    // Fewer than two words: prints the usage line and exits with status 0.
    Launcher(int argc, char** argv);
    explicit Launcher(std::vector<std::string> args);
    ~Launcher();

    int run();

    // ---- Run sequence ----
    void runSection(Section section);
    void runSolver();

    // ---- Reserved qx* variables ----
    int64_t getSolverIntegerParameter(const std::string& name, int64_t defaultValue);
    bool getSolverBooleanParameter(const std::string& name, bool defaultValue);
    bool isIntegerParameter(const std::string& name);
    bool isMapParameter(const std::string& name);
    void extractMapParameter(const std::string& name, std::vector<int64_t>& values);
    void setAdvancedParams();
    void createPhases();

    // The solver's display callback; `data` is the launcher.
    static void display(void* data);

    static void showErrorMessage(const std::string& message);
    static void showErrorMessage(Context* context, const std::string& message);
    [[noreturn]] static void printUsage();

    Quarrix* getSolver() { return solver.get(); }

    // A run as one of several processes (not owned): every rank runs the
    // sections up to the solve and searches; rank 0 alone runs "display"
    // and "output". An error before the solve, on any rank, ends every rank
    // with the first failing rank's message printed by rank 0; an error
    // during the solve or after it, on any rank, ends every rank with its
    // message printed by rank 0.
    void setRankLink(RankLink* rankLink) { link = rankLink; }

private:
    // run() but for the ranks' closing.
    int runSequence();
    bool isLeader() const;
    // Prints `text` (a formatted error message) and gives the run's status,
    // as the ranks agree on it when there are several.
    int fail(const std::string& text);
    static std::string errorText(const std::string& message);
    static std::string errorText(Context* context, const std::string& message);

    std::vector<std::string> args;
    std::unique_ptr<Program> program;
    std::unique_ptr<Quarrix> solver;
    std::unique_ptr<Context> context;
    RankLink* link = nullptr;
    // Where the run is, for what an error means to the other ranks.
    enum class Stage { Preparing, Solving, Finishing } stage = Stage::Preparing;
};
