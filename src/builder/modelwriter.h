#pragma once

#include <ostream>
#include <string>
#include <vector>

class DagBuilder;
class QXExpression;
class QXModel;

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
    // Throws KernelException when the model is not closed. The compiled
    // model is not needed for the text (may be null).
    ModelWriter(const QXModel& model, DagBuilder* builder, std::ostream* out);

    void write();
    // The identifier written for each expression, by index (after write).
    const std::vector<std::string>& getUids() const { return uids; }

private:
    void generateUids();
    void writeAssignments();
    void writeAssignment(const QXExpression* expr);
    void writeConstraints();
    void writeObjectives();
    void writeInitialValues();
    void writeParam();

    const QXModel& model;
    DagBuilder* builder;
    std::ostream& out;
    std::vector<std::string> uids;  // by expression index
};
