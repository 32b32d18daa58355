#pragma once

#include "solver/kernel/bipartition.h"
#include "solver/kernel/largepages.h"
#include "solver/kernel/nodetype.h"

#include <vector>

class Dag;
class DagFixedFields;
class Propagation;
class Quickrand;

// The pseudo-Boolean part of a graph, found once and shared by the threads.
//
// A root is an objective that sums (with coefficients) booleans and terms of
// two booleans (and, or, xor, product, a comparison) or of one (not); a row
// is a constraint comparing a sum of booleans with a constant. Nothing else
// may read those nodes. A boolean whose every parent belongs to roots and
// rows is "scored": a move flipping only scored booleans changes nothing but
// roots and rows, and its effect can be computed from the kept flip gains
// and the rows' sums without going through the graph.
class KeptScoresFixed {
public:
    explicit KeptScoresFixed(const DagFixedFields& fixed);

    struct Root {
        unsigned int node;
        unsigned int objective;
    };
    struct Row {
        unsigned int node;       // the comparison
        unsigned int sum;        // its sum of booleans
        unsigned int position;   // in the constraint list
        long long constant;
        NodeType type;
        bool sumFirst;           // the sum is the comparison's first child
    };
    // Of a boolean u in a term with another boolean w: table bit 2*u + w is
    // the term's value. A boolean's pairs are sorted by the other boolean.
    // The last fields place the term in the graph, for commits.
    struct Pair {
        unsigned int other;
        unsigned int root;
        long long coefficient;
        unsigned int table;
        unsigned int term;          // the term's node
        unsigned int rootPosition;  // the term's position in the root
        unsigned char position;     // u's position in the term
        unsigned char kind;         // COMPARISON_TERM, LOGIC_TERM or SCALED_TERM
    };
    // Comparisons keep nothing of their children; a scaled product's value
    // is its factors' product times the table's bit.
    static constexpr unsigned char COMPARISON_TERM = 0, LOGIC_TERM = 1, SCALED_TERM = 2;
    // A boolean in a root, directly or negated (term: the Not node).
    struct Linear {
        unsigned int root;
        long long coefficient;
        unsigned int term;          // NO_NODE when direct
        unsigned int rootPosition;
    };
    // The coefficient first: 16 bytes, as there may be millions of them.
    struct RowEntry {
        long long coefficient;
        unsigned int row;
        unsigned int position;      // in the row's sum
    };

    bool isEmpty() const { return roots.empty() && rows.empty(); }
    unsigned int nbRoots() const { return static_cast<unsigned int>(roots.size()); }
    const std::vector<Root>& getRoots() const { return roots; }
    const std::vector<Row>& getRows() const { return rows; }
    // By boolean (variable index).
    bool isScored(unsigned int boolean) const { return boolean < scored.size() && scored[boolean] != 0; }
    const Pair* pairsBegin(unsigned int b) const { return pairs.data() + pairOffsets[b]; }
    const Pair* pairsEnd(unsigned int b) const { return pairs.data() + pairOffsets[b + 1]; }
    // The other booleans of those pairs alone (variable indices), in the
    // same order: what a move scans or searches.
    const unsigned int* othersBegin(unsigned int b) const { return pairOthers.data() + pairOffsets[b]; }
    const unsigned int* othersEnd(unsigned int b) const { return pairOthers.data() + pairOffsets[b + 1]; }
    // False when the boolean has no pair with that node; true when it may:
    // a bit per hashed other boolean, so that the search for a pair between
    // two random booleans of a sparse model is mostly skipped.
    bool mayPair(unsigned int b, unsigned int other) const {
        unsigned int h = signatureBit(other);
        return (signatures[static_cast<std::size_t>(b) * SIGNATURE_WORDS + (h >> 6)] >> (h & 63)) & 1u;
    }
    const Linear* linearsBegin(unsigned int b) const { return linears.data() + linearOffsets[b]; }
    const Linear* linearsEnd(unsigned int b) const { return linears.data() + linearOffsets[b + 1]; }
    // What eval reads of a boolean, asked for ahead in two steps: the
    // offsets first, then what they point at.
    void prefetchOffsets(unsigned int b) const {
        if (b < scored.size()) __builtin_prefetch(&scored[b]);
        if (b < rowOffsets.size()) __builtin_prefetch(&rowOffsets[b]);
        if (b < pairOffsets.size()) __builtin_prefetch(&pairOffsets[b]);
    }
    void prefetchEntries(unsigned int b) const {
        if (b + 1 >= rowOffsets.size() || rowOffsets[b] == rowOffsets[b + 1]) return;
        // Both ends: a few entries straddle two lines more often than not.
        __builtin_prefetch(rowsBegin(b));
        __builtin_prefetch(rowsEnd(b) - 1);
    }
    const RowEntry* rowsBegin(unsigned int b) const { return rowEntries.data() + rowOffsets[b]; }
    const RowEntry* rowsEnd(unsigned int b) const { return rowEntries.data() + rowOffsets[b + 1]; }
    // Whether the boolean appears in a root or a row at all.
    bool isKept(unsigned int b) const {
        return pairOffsets[b] != pairOffsets[b + 1] || linearOffsets[b] != linearOffsets[b + 1] ||
               rowOffsets[b] != rowOffsets[b + 1];
    }

    static bool bit(unsigned int table, long long u, long long w) { return (table >> (2 * u + w)) & 1u; }

private:
    static constexpr unsigned int SIGNATURE_WORDS = 4;
    static unsigned int signatureBit(unsigned int node) { return (node * 2654435761u) >> 24; }

public:

private:
    bool addRoot(const DagFixedFields& fixed, unsigned int node, unsigned int objective,
                 std::vector<unsigned char>& covered);
    bool addRow(const DagFixedFields& fixed, unsigned int node, std::vector<unsigned char>& covered);
    void collectEntries(const DagFixedFields& fixed);

    std::vector<Root> roots;
    std::vector<Row> rows;
    LargeVector<unsigned char> scored;
    LargeVector<unsigned int> pairOffsets, linearOffsets, rowOffsets;
    LargeVector<Pair> pairs;
    LargeVector<unsigned int> pairOthers;
    LargeVector<unsigned long long> signatures;  // SIGNATURE_WORDS per boolean
    LargeVector<Linear> linears;
    LargeVector<RowEntry> rowEntries;
};

// One thread's kept scores: per scored-structure boolean and root, the
// change of the root that flipping the boolean alone would make, kept exact
// at every commit at a cost proportional to the terms the flips touch.
class KeptScores {
public:
    KeptScores(const KeptScoresFixed& fixed, unsigned int nbBooleans);

    // From the committed values, from scratch.
    void reset(const Dag& dag);
    // Every modified variable a scored boolean that flips.
    bool covers(const Dag& dag, const std::vector<unsigned int>& modified) const;
    // The move's effect on the roots (their new values) and on the rows
    // (costs, the evaluated violations, refusal on a broken active row), as
    // the graph would compute it. False when an active row breaks.
    bool eval(Dag& dag, Propagation& propagation, const std::vector<unsigned int>& modified);
    // Gives the roots their committed value as new value again.
    void clearRoots(Dag& dag);
    // Before the graph commits the move: the gains follow the flipped
    // booleans. False when a kept boolean leaves 0 and 1: the scores are
    // then unusable until reset() finds every kept boolean back in them.
    bool commit(const Dag& dag, const std::vector<unsigned int>& modified);
    // After commit, for a move that eval() judged: commits it in the graph
    // without propagation, since every node it changes is a root, a term, a
    // row or its sum: the booleans, then each term they touch from the
    // table, the roots from eval's values, the rows from their sums, and
    // every node's own bookkeeping. The variables' modified flags are
    // cleared; the move's lists are the caller's to empty.
    void commitGraph(Dag& dag, Propagation& propagation, const std::vector<unsigned int>& modified);

    // Targeting from the gains: per root, the booleans whose flip alone
    // improves it in its objective's direction, kept with the gains while
    // enabled, so that a move can start from an improving boolean without
    // walking the graph.
    void setTargeting(const Dag& dag, bool enabled);
    static constexpr unsigned int NOT_TARGETED = 4294967294u;
    // A random boolean (variable index) whose flip improves `objective`;
    // Bipartition::NONE when none does; NOT_TARGETED when targeting is off,
    // the scores are unusable or the objective is not a root.
    unsigned int pickImproving(unsigned int objective, Quickrand& rand) const;
    bool isImproving(unsigned int boolean, unsigned int root) const { return improving[root].isIn(boolean); }

    // A flip of the boolean (variable index) is likely to be weighed soon:
    // stage 0 asks for its offsets and gains, stage 1 (later, once those
    // arrived) for its entries.
    void prefetch(unsigned int boolean, unsigned int stage) const {
        if (!usable) return;
        if (stage == 0) {
            fixed.prefetchOffsets(boolean);
            const std::size_t at = static_cast<std::size_t>(boolean) * nbRoots;
            if (at < gains.size()) __builtin_prefetch(&gains[at]);
        } else {
            fixed.prefetchEntries(boolean);
        }
    }
    // Whether the gains are current (they are not after a flip left 0 and 1,
    // until the next reset).
    bool isUsable() const { return usable; }
    long long gain(unsigned int boolean, unsigned int root) const {
        return gains[static_cast<std::size_t>(boolean) * nbRoots + root];
    }
    // The gain from the committed values, from scratch.
    long long computeGain(const Dag& dag, unsigned int boolean, unsigned int root) const;

private:
    void track(unsigned int boolean, unsigned int root) {
        const long long g = gains[static_cast<std::size_t>(boolean) * nbRoots + root];
        if (rootSigns[root] > 0 ? g > 0 : g < 0)
            improving[root].setIn(boolean);
        else
            improving[root].setOut(boolean);
    }
    void trackAll();

    const KeptScoresFixed& fixed;
    unsigned int nbRoots;
    LargeVector<long long> gains;
    bool usable = false;
    bool targeting = false;
    std::vector<Bipartition> improving;    // per root, when targeting
    std::vector<signed char> rootSigns;    // +1 maximised, -1 minimised
    // Scratch of one move, cleared before it ends.
    std::vector<long long> deltas;
    std::vector<long long> rowShifts;
    std::vector<unsigned char> rowMarks;
    std::vector<unsigned int> touchedRows;
    LargeVector<unsigned char> pending;
    // During eval, each flipped boolean's place in the move; NO_NODE else.
    LargeVector<unsigned int> moveRanks;
};
