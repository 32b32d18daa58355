#pragma once

#include <iosfwd>
#include <string>

class QXModel;

// Writes a closed model as a linear program in the CPLEX LP format, for a
// MIP solver to read: the decisions become binary columns, the constraints
// rows, the objective the program's objective (one objective only).
//
// The model must be linear over its decisions: sums of decisions times
// constants compared with constants. Products, and, min of booleans; or, max
// of booleans; xor, and == or != between two booleans used as values are
// linearised with one auxiliary binary column each (named qx_<operator><n>)
// and the standard rows; not(a) is 1 - a. Any other expression (iif, div,
// mod, abs, dist, sqrt, a comparison used as a value, a product of integers,
// min or max over integers) is refused with a QXException that names the
// first such expression.
//
// Names: a named decision or constraint keeps its name, its characters other
// than letters, digits and underscores replaced by underscores (x[3] is
// written x_3_); others are b<decision rank> and c<constraint rank>.
class QXLpWriter {
public:
    // The model of a solver in state Paused or Stopped (closed).
    static void write(const QXModel* model, std::ostream& out);
    // The same into a file, created or truncated; a refused model leaves the
    // file as it was.
    static void write(const QXModel* model, const std::string& fileName);
};
