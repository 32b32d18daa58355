#pragma once

#include <vector>

class AutonomousFixedFields;

// One-of-many rows crossed with unit capacity rows along a line: the
// time-indexed schedule of textbook models (start[j][t], one row per job
// `sum_t start[j][t] == 1`, one row per time unit u `sum of the starts
// running at u <= 1`). Each boolean of a choice row (a sum of booleans
// equal to 1) sits in no other choice row and in capacity rows (sums of
// booleans at most 1) that are consecutive in the model's order of those
// rows: an interval on the line. Every boolean of a choice row covers as
// many rows, each at its own start. Every boolean of a capacity row
// belongs to some choice row, and nothing else constrains them.
// There one flip of a job breaks capacity rows unless the jobs beside it
// move too; moves that shift whole runs of jobs keep the line covered.
class IntervalRows {
public:
    static constexpr unsigned int NONE = 4294967295u;

    explicit IntervalRows(const AutonomousFixedFields& sums);

    bool empty() const { return choiceRows.empty(); }
    unsigned int nbRows() const { return static_cast<unsigned int>(choiceRows.size()); }
    // Length of the line: the number of capacity rows.
    unsigned int lineLength() const { return static_cast<unsigned int>(lineRows.size()); }
    // The root sum of a choice row and of the capacity row at a place.
    unsigned int rowSum(unsigned int row) const { return choiceRows[row]; }
    unsigned int lineSum(unsigned int place) const { return lineRows[place]; }
    // How many places every boolean of the row covers.
    unsigned int length(unsigned int row) const { return lengths[row]; }
    // The row's boolean (node) starting at the place, NONE when it has none.
    unsigned int at(unsigned int row, unsigned int start) const;
    // The row of a boolean (by rank), NONE when outside the structure.
    unsigned int rowOf(unsigned int booleanRank) const { return rowsOf[booleanRank]; }
    unsigned int startOf(unsigned int booleanRank) const { return startsOf[booleanRank]; }
    // The row's booleans (nodes) in the order of their starts.
    const unsigned int* firstOf(unsigned int row) const { return booleans.data() + offsets[row]; }
    unsigned int sizeOf(unsigned int row) const { return offsets[row + 1] - offsets[row]; }

private:
    // Finds the structure, false (and nothing kept) when the model has none.
    bool build(const AutonomousFixedFields& sums);
    void clear();

    std::vector<unsigned int> choiceRows;
    std::vector<unsigned int> lineRows;
    std::vector<unsigned int> lengths;
    // Per row, its booleans by start, with their starts beside them.
    std::vector<unsigned int> offsets;
    std::vector<unsigned int> booleans;
    std::vector<unsigned int> starts;
    std::vector<unsigned int> rowsOf;
    std::vector<unsigned int> startsOf;
};
