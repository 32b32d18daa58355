#pragma once

#include "builder/modelgraph.h"

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

// The solver settings that reproduce a run, as the writer prints them.
struct ModelWriterSettings {
    std::vector<int64_t> decisionValues;   // by decision rank: the current solution
    std::vector<int64_t> objectiveBounds;  // by objective; the 64-bit limits mean none
    int seed = 0;
    int nbThreads = 1;
};

// Prints a closed model as a program of the modeling language: a "model"
// function that rebuilds every expression (operands first) with its
// constraints and objectives, a "setInitialValues" function that restores
// the decisions' current values, and a "param" function that restores the
// objective bounds, the seed and the number of threads. Running the program
// again gives the same model.
//
// Names: a named expression keeps its name; the others get n0, n1, ... in
// index order, skipping the names users took. Names that are not
// identifiers of the language are written as they are.
class ModelWriter {
public:
    // Throws KernelException when the model is not closed. The graph must
    // carry the expressions' names.
    ModelWriter(const ModelGraph& model, const ModelWriterSettings& settings, std::ostream* out);

    void write();
    // The identifier written for each expression, by index (after write).
    const std::vector<std::string>& getUids() const { return uids; }

private:
    void generateUids();
    void writeAssignments();
    void writeAssignment(ModelExpr expr);
    void writeConstraints();
    void writeObjectives();
    void writeInitialValues();
    void writeParam();

    const ModelGraph& model;
    const ModelWriterSettings& settings;
    std::ostream& out;
    std::vector<std::string> uids;  // by expression index
};
