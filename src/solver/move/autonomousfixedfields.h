#pragma once

#include "solver/kernel/largepages.h"
#include "solver/move/gatelinks.h"
#include "solver/move/intervalrows.h"

#include <memory>
#include <vector>

class DagFixedFields;

// Where one boolean decision stands in the root sums: the sums it takes part
// in with its entry in each, and how many of those sums are free (no
// constraint above them). A view on the boolean's block in the shared
// entry array: a header entry (the boolean's node, its number of sums and
// of free ones) followed by its entries, so that a chain weighing a
// boolean drawn from a sum finds all it needs on one or two cache lines.
class RootBool {
public:
    struct Entry {
        unsigned int sum;       // index among the root sums
        unsigned int position;  // index among that sum's root bools
        long long coefficient;  // what its flip from 0 to 1 adds to the sum
    };

    struct Entries {
        const Entry* first;
        const Entry* last;
        const Entry* begin() const { return first; }
        const Entry* end() const { return last; }
        const Entry& operator[](unsigned int i) const { return first[i]; }
        unsigned int size() const { return static_cast<unsigned int>(last - first); }
    };

    // None: no boolean.
    RootBool() = default;
    explicit RootBool(const Entry* header) : header(header) {}
    bool exists() const { return header != nullptr; }

    // The boolean's node.
    unsigned int getNode() const { return header->sum; }
    Entries getEntries() const { return {header + 1, header + 1 + getNbRootSums()}; }
    // The entries of the free sums come first: those sums have the lower
    // indexes.
    Entries freeEntries() const { return {header + 1, header + 1 + getNbFreeRootSums()}; }
    Entries constrainedEntries() const { return {header + 1 + getNbFreeRootSums(), header + 1 + getNbRootSums()}; }
    unsigned int getNbRootSums() const { return header->position; }
    unsigned int getNbFreeRootSums() const { return static_cast<unsigned int>(header->coefficient); }
    // Flipping it moves no constrained sum.
    bool isFree() const { return getNbFreeRootSums() == getNbRootSums(); }
    // At most one constrained sum: a swap inside that sum keeps it level.
    bool isMonoConstrained() const {
        return getNbRootSums() != 0 && getNbRootSums() - getNbFreeRootSums() < 2;
    }
    bool isSame(RootBool other) const { return header == other.header; }
    // The block's lines, asked for ahead of a read.
    void prefetch() const {
        __builtin_prefetch(header);
        __builtin_prefetch(header + 4);
    }

private:
    const Entry* header = nullptr;
};

// A sum over at least two booleans (directly or through a nonzero scalar):
// each root bool with the coefficient its flip from 0 to 1 adds to the sum.
struct RootSum {
    unsigned int node;
    std::vector<unsigned int> booleans;
    // Empty when every coefficient is 1 (rows of assignments, covers,
    // cuts): the lists of a large model weigh half as much.
    std::vector<long long> coefficients;
    long long coefficientAt(unsigned int position) const {
        return coefficients.empty() ? 1 : coefficients[position];
    }
    bool hasUnitCoefficients() const { return coefficients.empty(); }
};

// The constraints comparing a constrained sum with constants give it the
// range [lowest, highest] in which it may move freely; a constrained sum
// that feeds anything else (a constraint on an expression of it) has no
// known range and is kept level: `ranged` is false. Free sums have the
// whole range. Kept apart from RootSum so that the chains read one small
// record per sum.
struct SumRange {
    unsigned int node;
    bool ranged = true;
    long long lowest = -9223372036854775807LL - 1;
    long long highest = 9223372036854775807LL;
    // Its value moves only with its root bools (its other children are
    // constants), so a thread can follow it from the booleans it commits.
    bool followsBooleans = true;
};

// Constrained sums with the same range whose booleans each sit in one other
// constrained sum, the same others for all of them: the columns of an
// assignment (the slots of a sequence, each taking one item of some class).
// Exchanging the contents of two columns keeps every sum of both families
// where it was, so blocks of columns can be rearranged at once. The columns
// are kept in the model's order, which for a sequence is its order.
struct SumSequence {
    std::vector<unsigned int> columns;  // root sum indexes
    unsigned int nbRows = 0;
    // For column c: rowAt[c * nbRows + j] is the row of its j-th boolean,
    // cellAt[c * nbRows + r] the position of its boolean in row r.
    std::vector<unsigned int> rowAt;
    std::vector<unsigned int> cellAt;
};

// The sum structure that the moves search, derived once from the fixed
// fields and shared read-only by the threads.
//
// Classification: a root sum is free when no constraint lies above it in
// the graph (it only feeds objectives), constrained otherwise. The free ones
// come first in the list (the first of the two passes that gather them).
// A boolean whose sums are all free can be flipped without disturbing any
// constraint through a sum; one with a single constrained sum can be swapped
// against an opposite boolean of that sum so that the sum keeps its value.
class AutonomousFixedFields {
public:
    explicit AutonomousFixedFields(const DagFixedFields& fixed);
    // Its root bools point into its own entry array.
    AutonomousFixedFields(const AutonomousFixedFields&) = delete;
    AutonomousFixedFields& operator=(const AutonomousFixedFields&) = delete;

    static bool isRootBool(const DagFixedFields& fixed, unsigned int node);
    // A sum kind with at least two root-bool children.
    static bool isRootSum(const DagFixedFields& fixed, unsigned int node);

    const DagFixedFields& getFixedFields() const { return fixed; }
    RootBool getRootBool(unsigned int booleanRank) const { return rootBoolAt(blockOf(booleanRank)); }
    // Where the boolean's block starts in the entry array, and the boolean
    // whose block starts there.
    unsigned int blockOf(unsigned int booleanRank) const { return blockOfRank[booleanRank]; }
    RootBool rootBoolAt(unsigned int block) const { return RootBool(&rootBoolEntries[block]); }
    const std::vector<RootSum>& getRootSums() const { return rootSums; }
    const SumRange& getRange(unsigned int sum) const { return ranges[sum]; }
    // Families of ranged sums that share no boolean (the rows of a board,
    // its columns, each direction of its diagonals): one flip moves at most
    // one sum of a family, so a move with f flips left cannot settle more
    // than f broken sums of one family. NO_FAMILY for the other sums; none
    // at all (getNbFamilies() == 0) where more than MAX_FAMILIES would be
    // needed.
    static constexpr unsigned char NO_FAMILY = 255;
    static constexpr unsigned int MAX_FAMILIES = 16;
    unsigned char familyOf(unsigned int sum) const { return families.empty() ? NO_FAMILY : families[sum]; }
    unsigned int getNbFamilies() const { return nbFamilies; }
    // +1 for a sum that is a maximised objective, -1 for a minimised one,
    // 0 otherwise.
    int objectiveSign(unsigned int sum) const { return objectiveSigns[sum]; }
    // +1 when every coefficient of the sum is positive, -1 when every one
    // is negative, 0 otherwise.
    int coefficientSign(unsigned int sum) const { return coefficientSigns[sum]; }
    bool hasObjectiveSums() const { return nbObjectiveSums != 0; }
    unsigned int getNbRootSums() const { return static_cast<unsigned int>(rootSums.size()); }
    unsigned int getNbFreeRootSums() const { return nbFreeRootSums; }
    // Index among the root sums of a node, NO_NODE when it is not one.
    unsigned int rootSumIndex(unsigned int node) const { return rootSumIndices[node]; }
    const std::vector<unsigned int>& getFreeBooleans() const { return freeBooleans; }
    const std::vector<unsigned int>& getMonoConstrainedBooleans() const { return monoConstrainedBooleans; }
    // Nodes that can offer a boolean in each direction and whose value a
    // constraint watches: the constrained root sums.
    const std::vector<unsigned int>& getBalanceNodes() const { return balanceNodes; }
    const std::vector<SumSequence>& getSequences() const { return sequences; }
    // The sequence of a root sum and its place there; NO_NODE when none.
    unsigned int sequenceOf(unsigned int sum) const { return sequenceIndices[sum]; }
    unsigned int placeOf(unsigned int sum) const { return places[sum]; }
    unsigned int getNbBalanceNodes() const { return static_cast<unsigned int>(balanceNodes.size()); }
    const GateLinks& getGates() const { return *gates; }
    const IntervalRows& getIntervals() const { return *intervals; }
    // A constraint lies at or above the node: it does not only feed
    // objectives.
    bool isUnderConstraint(unsigned int node) const { return underConstraint[node] != 0; }

private:
    void initRootSums();
    // The range of a constrained sum from the constant comparisons above it.
    void initRange(SumRange& range, const std::vector<char>& underConstraint) const;
    void initBoolsToRootSums();
    void initSequences();
    // The other constrained sum of each boolean of a sum that can be a
    // column, empty when it cannot.
    std::vector<unsigned int> rowsOfColumn(unsigned int sum) const;
    void initFamilies();
    void initFreeBooleans();
    void initMonoConstrainedBooleans();
    // Adds the root bools of a sum node, merging repeated booleans; false
    // when fewer than two remain.
    bool addRootSum(unsigned int node);
    // Position of each boolean (by rank) in the root sum being added, so a
    // sum over n booleans is gathered in O(n); NO_NODE between sums.
    std::vector<unsigned int> positionInSum;

    const DagFixedFields& fixed;
    // Every boolean's block, one after the other: a million booleans make
    // one allocation, and a boolean's entries sit beside its header.
    LargeVector<RootBool::Entry> rootBoolEntries;
    LargeVector<unsigned int> blockOfRank;
    std::vector<RootSum> rootSums;
    std::vector<char> underConstraint;
    std::vector<SumRange> ranges;
    std::vector<signed char> objectiveSigns;
    std::vector<signed char> coefficientSigns;
    std::vector<unsigned char> families;
    unsigned int nbFamilies = 0;
    unsigned int nbObjectiveSums = 0;
    unsigned int nbFreeRootSums = 0;
    std::vector<unsigned int> rootSumIndices;
    std::vector<unsigned int> freeBooleans;
    std::vector<unsigned int> monoConstrainedBooleans;
    std::vector<unsigned int> balanceNodes;
    std::vector<SumSequence> sequences;
    std::vector<unsigned int> sequenceIndices;
    LargeVector<unsigned int> places;
    std::unique_ptr<GateLinks> gates;
    std::unique_ptr<IntervalRows> intervals;
};
