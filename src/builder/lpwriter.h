#pragma once

#include "builder/modelgraph.h"

#include <cstdint>
#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

// Writes a closed model as a linear program in the CPLEX LP format, for MIP
// solvers: each decision is a binary column, each constraint one row or more,
// the objective the program's objective.
//
// Linear means sums of decisions times constants, compared with constants
// (<=, <, >=, >, ==; strict comparisons become <= -1 and >= 1 over the
// integers). Written exactly, each with one auxiliary binary column and its
// standard rows:
//   - products of booleans (times a constant), and, min over booleans:
//     y <= a_i, y >= sum a_i - (k - 1);
//   - or, max over booleans: y >= a_i, y <= sum a_i;
//   - xor over booleans, and != between two booleans: y <= a + b,
//     y >= a - b, y >= b - a, y <= 2 - a - b (chained for more operands);
//   - == between two booleans as a value: 1 - xor;
//   - not: 1 - a, without a column.
// As a constraint, and fixes each operand to 1, or gives sum >= 1, and xor
// or != between two booleans gives a + b = 1, without columns.
// Anything else (iif, div, mod, abs, dist, sqrt, a comparison used as a
// value, a product of two non-boolean factors, min or max over integers) is
// refused, naming the first such expression in the model's order.
//
// A single objective only: the format has no lexicographic objectives.
class LpWriter {
public:
    // Throws KernelException when the model is not closed, has more than one
    // objective, or is not linear as above. The graph should carry names.
    LpWriter(const ModelGraph& model, std::ostream* out);

    void write();
    int getNbColumns() const { return static_cast<int>(columnNames.size()); }
    int getNbRows() const { return static_cast<int>(rows.size()); }

private:
    // A linear form: sum of coefficient * column, plus a constant.
    struct Linear {
        std::map<int32_t, int64_t> terms;  // by column
        int64_t constant = 0;
    };
    enum class Sense : uint8_t { Leq, Geq, Eq };
    struct Row {
        std::string name;
        Linear lhs;  // compared with 0
        Sense sense;
    };

    bool allBooleanOperands(ModelExpr e) const;
    struct Product {
        int64_t constant = 1;
        std::vector<int32_t> factors;  // the non-constant ones
    };
    Product flatten(int32_t expr) const;
    void classify();
    void checkLinear() const;
    void translate();
    void addConstraint(int constraintRank);
    void makeAuxiliary(int32_t expr);
    // Adds scale times the value of expr to target.
    void expandInto(int32_t expr, int64_t scale, Linear& target) const;
    Linear form(int32_t expr) const;
    int32_t newColumn(const std::string& name);
    void addRow(const std::string& name, Linear lhs, Sense sense);
    // Columns and rows have names of their own kind: each set keeps them unique.
    static std::string uniqueName(const std::string& wanted, std::set<std::string>& taken);
    std::string exprLabel(int32_t expr) const;
    bool isBoolean(int32_t expr) const { return boolean[expr] != 0; }
    static void addScaled(Linear& target, const Linear& source, int64_t scale);
    // Writes the terms with a non-zero coefficient, marking their columns used.
    void writeLinear(const Linear& form, std::vector<uint8_t>& used);

    const ModelGraph& model;
    std::ostream& out;

    // By expression index, over the expressions reachable from the
    // constraints and the objective.
    std::vector<int32_t> order;          // operands before their users
    std::vector<uint8_t> reached;
    std::vector<uint8_t> boolean;        // its value is always 0 or 1
    std::vector<uint8_t> usedAsValue;    // an operand, or the objective
    std::vector<int32_t> nbParents;
    std::vector<std::unique_ptr<Linear>> memo;  // forms computed once
    std::vector<int32_t> decisionColumn;        // -1: not a decision

    std::vector<std::string> columnNames;
    std::set<std::string> columnNamesTaken;
    std::set<std::string> rowNamesTaken;
    std::vector<Row> rows;
    Linear objective;
    int32_t oneColumn = -1;  // fixed to 1, carries constants where needed
};
