#include "solver/kernel/keptscores.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/kernelconstants.h"
#include "solver/kernel/propagation.h"
#include "solver/kernel/quickrand.h"
#include "solver/kernel/wraparith.h"
#include "solver/node/nodecomparison.h"

#include <algorithm>

namespace {
constexpr unsigned int NONE = KernelConstants::NO_NODE;
// Sums whose every value lies within this magnitude: the change of any set
// of their terms then fits in 64 bits.
constexpr long long SAFE_MAGNITUDE = 1LL << 62;

bool isSum(NodeType type) { return type == Sum || type == ScalarSum || type == BooleanSum; }

bool isComparison(NodeType type) {
    return type == Eq || type == Neq || type == Lt || type == Leq || type == Gt || type == Geq;
}

bool isSafeRange(const DagFixedFields& fixed, unsigned int node) {
    return fixed.lowerBound(node) > -SAFE_MAGNITUDE && fixed.upperBound(node) < SAFE_MAGNITUDE;
}

long long termCoefficient(const DagFixedFields& fixed, unsigned int node, unsigned int i) {
    return fixed.type(node) == ScalarSum ? fixed.coefficient(node, i) : 1;
}

// The value of a two-boolean operator.
bool apply(NodeType type, long long a, long long b) {
    switch (type) {
        case And:
        case Product: return a != 0 && b != 0;
        case Or: return a != 0 || b != 0;
        case Xor: return (a != 0) != (b != 0);
        default: return NodeComparison::holds(type, a, b);
    }
}

// The 4-bit table of a two-boolean term, seen from its child `first`
// (bit 2 * first + other).
unsigned int tableOf(NodeType type, bool seenFromFirstChild) {
    unsigned int table = 0;
    for (long long u = 0; u <= 1; ++u)
        for (long long w = 0; w <= 1; ++w)
            if (seenFromFirstChild ? apply(type, u, w) : apply(type, w, u)) table |= 1u << (2 * u + w);
    return table;
}

// A product by a constant (k * x * y, the textbook form of many quadratic
// objectives) is a product term whose coefficient carries k.
bool isPairTerm(const DagFixedFields& fixed, unsigned int node) {
    NodeType type = fixed.type(node);
    if (type != And && type != Or && type != Xor && type != Product && type != ScalarProduct && !isComparison(type))
        return false;
    if (fixed.nbChilds(node) != 2) return false;
    unsigned int a = fixed.child(node, 0), b = fixed.child(node, 1);
    return a != b && fixed.type(a) == Boolean && fixed.type(b) == Boolean;
}

// change * coefficient in 64-bit wrap-around: with |change| up to 2 the
// product may not fit, while the sums it goes into do.
unsigned long long times(int change, long long coefficient) {
    return static_cast<unsigned long long>(static_cast<long long>(change)) * static_cast<unsigned long long>(coefficient);
}

bool isNotTerm(const DagFixedFields& fixed, unsigned int node) {
    return fixed.type(node) == Not && fixed.type(fixed.child(node, 0)) == Boolean;
}
}  // namespace

KeptScoresFixed::KeptScoresFixed(const DagFixedFields& fixed) {
    const unsigned int n = fixed.nbNodes();
    // Objectives and constraints named twice, or both, keep to the graph.
    std::vector<unsigned char> roles(n, 0);
    for (unsigned int node : fixed.objectives()) roles[node] = static_cast<unsigned char>(std::min(roles[node] + 1, 2));
    for (unsigned int node : fixed.constraints()) roles[node] = static_cast<unsigned char>(std::min(roles[node] + 1, 2));
    std::vector<unsigned char> covered(n, 0);
    for (unsigned int k = 0; k < fixed.objectives().size(); ++k) {
        unsigned int node = fixed.objectives()[k];
        if (roles[node] == 1) addRoot(fixed, node, k, covered);
    }
    for (unsigned int node : fixed.constraints())
        if (roles[node] == 1) addRow(fixed, node, covered);
    if (!isEmpty()) collectEntries(fixed);
}

bool KeptScoresFixed::addRoot(const DagFixedFields& fixed, unsigned int node, unsigned int objective,
                              std::vector<unsigned char>& covered) {
    NodeType type = fixed.type(node);
    if (fixed.nbParents(node) != 0 || (!isSum(type) && type != Constant) || !isSafeRange(fixed, node)) return false;
    for (unsigned int i = 0; i < fixed.nbChilds(node); ++i) {
        unsigned int c = fixed.child(node, i);
        NodeType t = fixed.type(c);
        if (t == Constant || t == Boolean) continue;
        bool term = fixed.nbParents(c) == 1 && fixed.posInConstraints(c) == NONE &&
                    (isPairTerm(fixed, c) || isNotTerm(fixed, c));
        if (!term || std::find(fixed.objectives().begin(), fixed.objectives().end(), c) != fixed.objectives().end())
            return false;
    }
    covered[node] = 1;
    for (unsigned int i = 0; i < fixed.nbChilds(node); ++i) {
        unsigned int c = fixed.child(node, i);
        if (fixed.type(c) != Constant && fixed.type(c) != Boolean) covered[c] = 1;
    }
    roots.push_back({node, objective});
    return true;
}

bool KeptScoresFixed::addRow(const DagFixedFields& fixed, unsigned int node, std::vector<unsigned char>& covered) {
    if (!isComparison(fixed.type(node)) || fixed.nbParents(node) != 0) return false;
    unsigned int first = fixed.child(node, 0), second = fixed.child(node, 1);
    bool sumFirst = fixed.type(second) == Constant;
    unsigned int sum = sumFirst ? first : second, constant = sumFirst ? second : first;
    if (fixed.type(constant) != Constant || !isSum(fixed.type(sum)) || fixed.nbParents(sum) != 1 ||
        fixed.posInConstraints(sum) != NONE || !isSafeRange(fixed, sum) ||
        std::find(fixed.objectives().begin(), fixed.objectives().end(), sum) != fixed.objectives().end())
        return false;
    for (unsigned int i = 0; i < fixed.nbChilds(sum); ++i) {
        NodeType t = fixed.type(fixed.child(sum, i));
        if (t != Boolean && t != Constant) return false;
    }
    covered[node] = covered[sum] = 1;
    rows.push_back({node, sum, fixed.posInConstraints(node), fixed.constant(constant), fixed.type(node), sumFirst});
    return true;
}

void KeptScoresFixed::collectEntries(const DagFixedFields& fixed) {
    const unsigned int n = fixed.nbNodes(), nbBooleans = fixed.nbBooleans();
    std::vector<unsigned int> rootOf(n, NONE), rowOf(n, NONE);
    for (unsigned int r = 0; r < roots.size(); ++r) {
        unsigned int root = roots[r].node;
        rootOf[root] = r;
        for (unsigned int i = 0; i < fixed.nbChilds(root); ++i) {
            unsigned int c = fixed.child(root, i);
            if (fixed.type(c) != Constant && fixed.type(c) != Boolean) rootOf[c] = r;
        }
    }
    for (unsigned int k = 0; k < rows.size(); ++k) rowOf[rows[k].sum] = k;

    scored.assign(nbBooleans, 0);
    pairOffsets.assign(nbBooleans + 1, 0);
    linearOffsets.assign(nbBooleans + 1, 0);
    rowOffsets.assign(nbBooleans + 1, 0);
    // Two passes over every boolean's parents: count, then fill.
    for (int pass = 0; pass < 2; ++pass) {
        for (unsigned int b = 0; b < nbBooleans; ++b) {
            unsigned int node = fixed.variables()[b];
            bool allKept = fixed.posInConstraints(node) == NONE &&
                           std::find(fixed.objectives().begin(), fixed.objectives().end(), node) ==
                               fixed.objectives().end();
            unsigned int nbPairs = 0, nbLinears = 0, nbRows = 0;
            for (unsigned int k = 0; k < fixed.nbParents(node); ++k) {
                unsigned int parent = fixed.parent(node, k), position = fixed.positionInParent(node, k);
                if (rowOf[parent] != NONE) {
                    if (pass == 1)
                        rowEntries[rowOffsets[b] + nbRows] = {termCoefficient(fixed, parent, position), rowOf[parent],
                                                              position};
                    ++nbRows;
                    continue;
                }
                unsigned int r = rootOf[parent];
                if (r == NONE) {
                    allKept = false;
                    continue;
                }
                if (parent == roots[r].node) {
                    if (pass == 1)
                        linears[linearOffsets[b] + nbLinears] = {r, termCoefficient(fixed, parent, position), NONE,
                                                                 position};
                    ++nbLinears;
                    continue;
                }
                // A term of the root: its coefficient is its slot's.
                unsigned int root = roots[r].node;
                const unsigned int* slots = fixed.positionsInParents(parent);
                long long coefficient = termCoefficient(fixed, root, slots[0]);
                if (fixed.type(parent) == Not) {
                    // c * (1 - x): a linear term of coefficient -c.
                    if (pass == 1) linears[linearOffsets[b] + nbLinears] = {r, -coefficient, parent, slots[0]};
                    ++nbLinears;
                    continue;
                }
                if (pass == 1) {
                    unsigned int other = fixed.child(parent, 1 - position);
                    NodeType type = fixed.type(parent);
                    const unsigned char kind = type == ScalarProduct ? SCALED_TERM
                                               : isComparison(type)  ? COMPARISON_TERM
                                                                     : LOGIC_TERM;
                    if (type == ScalarProduct) {
                        const long long factor = WrapArith::mul(fixed.coefficient(parent, 0), fixed.coefficient(parent, 1));
                        coefficient = WrapArith::mul(coefficient, factor);
                        type = Product;
                    }
                    pairs[pairOffsets[b] + nbPairs] = {other, r, coefficient, tableOf(type, position == 0),
                                                       parent, slots[0], static_cast<unsigned char>(position), kind};
                }
                ++nbPairs;
            }
            if (pass == 0) {
                pairOffsets[b + 1] = pairOffsets[b] + nbPairs;
                linearOffsets[b + 1] = linearOffsets[b] + nbLinears;
                rowOffsets[b + 1] = rowOffsets[b] + nbRows;
            } else {
                scored[b] = allKept ? 1 : 0;
            }
        }
        if (pass == 0) {
            pairs.resize(pairOffsets[nbBooleans]);
            linears.resize(linearOffsets[nbBooleans]);
            rowEntries.resize(rowOffsets[nbBooleans]);
        }
    }
    for (unsigned int b = 0; b < nbBooleans; ++b)
        std::sort(pairs.begin() + pairOffsets[b], pairs.begin() + pairOffsets[b + 1],
                  [](const Pair& x, const Pair& y) { return x.other < y.other; });
    pairOthers.resize(pairs.size());
    for (std::size_t i = 0; i < pairs.size(); ++i) pairOthers[i] = fixed.variableIndex(pairs[i].other);
    signatures.assign(static_cast<std::size_t>(nbBooleans) * SIGNATURE_WORDS, 0);
    for (unsigned int b = 0; b < nbBooleans; ++b)
        for (unsigned int i = pairOffsets[b]; i < pairOffsets[b + 1]; ++i) {
            unsigned int h = signatureBit(pairOthers[i]);
            signatures[static_cast<std::size_t>(b) * SIGNATURE_WORDS + (h >> 6)] |= 1ULL << (h & 63);
        }
}

KeptScores::KeptScores(const KeptScoresFixed& fixed, unsigned int nbBooleans)
    : fixed(fixed),
      nbRoots(fixed.nbRoots()),
      gains(static_cast<std::size_t>(nbBooleans) * fixed.nbRoots(), 0),
      deltas(fixed.nbRoots(), 0),
      rowShifts(fixed.getRows().size(), 0),
      rowMarks(fixed.getRows().size(), 0),
      pending(nbBooleans, 0),
      moveRanks(nbBooleans, NONE) {
    touchedRows.reserve(fixed.getRows().size());
}

long long KeptScores::computeGain(const Dag& dag, unsigned int boolean, unsigned int root) const {
    const DagFixedFields& f = dag.getFixedFields();
    long long x = dag.currentValue(f.variables()[boolean]);
    unsigned long long gain = 0;
    for (const KeptScoresFixed::Linear* e = fixed.linearsBegin(boolean); e != fixed.linearsEnd(boolean); ++e)
        if (e->root == root) gain += static_cast<unsigned long long>(x == 0 ? e->coefficient : -e->coefficient);
    for (const KeptScoresFixed::Pair* e = fixed.pairsBegin(boolean); e != fixed.pairsEnd(boolean); ++e) {
        if (e->root != root) continue;
        long long w = dag.currentValue(e->other);
        int change = static_cast<int>(KeptScoresFixed::bit(e->table, 1 - x, w)) -
                     static_cast<int>(KeptScoresFixed::bit(e->table, x, w));
        gain += times(change, e->coefficient);
    }
    return static_cast<long long>(gain);
}

void KeptScores::reset(const Dag& dag) {
    const DagFixedFields& f = dag.getFixedFields();
    usable = true;
    for (unsigned int b = 0; b < f.nbBooleans(); ++b) {
        if (!fixed.isKept(b)) continue;
        long long x = dag.currentValue(f.variables()[b]);
        if (x != 0 && x != 1) usable = false;
    }
    if (!usable) return;
    for (unsigned int b = 0; b < f.nbBooleans(); ++b)
        if (fixed.isKept(b))
            for (unsigned int r = 0; r < nbRoots; ++r) gains[static_cast<std::size_t>(b) * nbRoots + r] = computeGain(dag, b, r);
    if (targeting) trackAll();
}

void KeptScores::setTargeting(const Dag& dag, bool enabled) {
    targeting = enabled;
    if (!enabled) {
        improving.clear();
        return;
    }
    rootSigns.clear();
    for (const KeptScoresFixed::Root& root : fixed.getRoots())
        rootSigns.push_back(dag.getFixedFields().directions()[root.objective] == Maximize ? 1 : -1);
    improving.assign(nbRoots, Bipartition());
    if (usable) trackAll();
}

// From scratch, in the booleans' order: the same state gives the same sets.
void KeptScores::trackAll() {
    const unsigned int nbBooleans = nbRoots == 0 ? 0 : static_cast<unsigned int>(gains.size() / nbRoots);
    for (unsigned int r = 0; r < nbRoots; ++r) {
        improving[r].init(nbBooleans);
        for (unsigned int b = 0; b < nbBooleans; ++b) track(b, r);
    }
}

unsigned int KeptScores::pickImproving(unsigned int objective, Quickrand& rand) const {
    if (!targeting || !usable) return NOT_TARGETED;
    for (unsigned int r = 0; r < nbRoots; ++r) {
        if (fixed.getRoots()[r].objective != objective) continue;
        return improving[r].getRandomIn(rand);
    }
    return NOT_TARGETED;
}

bool KeptScores::covers(const Dag& dag, const std::vector<unsigned int>& modified) const {
    if (!usable) return false;
    const DagFixedFields& f = dag.getFixedFields();
    for (unsigned int node : modified) {
        if (f.type(node) != Boolean || !fixed.isScored(f.variableIndex(node))) return false;
        if ((dag.currentValue(node) ^ dag.newValue(node)) != 1) return false;
    }
    return true;
}

bool KeptScores::eval(Dag& dag, Propagation& propagation, const std::vector<unsigned int>& modified) {
    const DagFixedFields& f = dag.getFixedFields();
    std::fill(deltas.begin(), deltas.end(), 0);
    // Wrapping sums: the parts may overflow, the total does not.
    unsigned long long* delta = reinterpret_cast<unsigned long long*>(deltas.data());
    const std::size_t count = modified.size();
    if (count > 1)
        for (std::size_t i = 0; i < count; ++i) moveRanks[f.variableIndex(modified[i])] = static_cast<unsigned int>(i);
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned int u = modified[i];
        unsigned int b = f.variableIndex(u);
        const long long* gain = gains.data() + static_cast<std::size_t>(b) * nbRoots;
        for (unsigned int r = 0; r < nbRoots; ++r) delta[r] += static_cast<unsigned long long>(gain[r]);
        long long xu = dag.currentValue(u);
        if (count > 1 && fixed.pairsBegin(b) != fixed.pairsEnd(b)) {
            // Terms of two flipped booleans: what the gains miss, each taken
            // from the one flipped first. A boolean with many terms looks the
            // later flipped ones up among them (sorted by the other boolean);
            // one with few scans them.
            const KeptScoresFixed::Pair* pairs = fixed.pairsBegin(b);
            const unsigned int* others = fixed.othersBegin(b);
            const unsigned int* othersEnd = fixed.othersEnd(b);
            auto correct = [&](const KeptScoresFixed::Pair& e) {
                long long xw = dag.currentValue(e.other);
                int both = static_cast<int>(KeptScoresFixed::bit(e.table, 1 - xu, 1 - xw)) -
                           static_cast<int>(KeptScoresFixed::bit(e.table, 1 - xu, xw)) -
                           static_cast<int>(KeptScoresFixed::bit(e.table, xu, 1 - xw)) +
                           static_cast<int>(KeptScoresFixed::bit(e.table, xu, xw));
                delta[e.root] += times(both, e.coefficient);
            };
            if (static_cast<std::size_t>(othersEnd - others) > 4 * count) {
                for (std::size_t j = i + 1; j < count; ++j) {
                    unsigned int w = f.variableIndex(modified[j]);
                    if (!fixed.mayPair(b, w)) continue;
                    for (const unsigned int* o = std::lower_bound(others, othersEnd, w); o != othersEnd && *o == w; ++o)
                        correct(pairs[o - others]);
                }
            } else {
                for (const unsigned int* o = others; o != othersEnd; ++o) {
                    unsigned int rank = moveRanks[*o];
                    if (rank != NONE && rank > i) correct(pairs[o - others]);
                }
            }
        }
        const long long sign = xu == 0 ? 1 : -1;
        for (const KeptScoresFixed::RowEntry* e = fixed.rowsBegin(b); e != fixed.rowsEnd(b); ++e) {
            if (rowMarks[e->row] == 0) {
                rowMarks[e->row] = 1;
                touchedRows.push_back(e->row);
            }
            rowShifts[e->row] += sign * e->coefficient;
        }
    }
    bool holds = true;
    const long long cap = f.violationCap();
    for (unsigned int row : touchedRows) {
        long long shift = rowShifts[row];
        rowShifts[row] = 0;
        rowMarks[row] = 0;
        if (!holds || shift == 0) continue;
        const KeptScoresFixed::Row& r = fixed.getRows()[row];
        long long before = dag.currentValue(r.sum), after = before + shift;
        long long a = r.sumFirst ? after : r.constant, b = r.sumFirst ? r.constant : after;
        if (propagation.activeConstraints.isIn(r.position)) {
            holds = NodeComparison::holds(r.type, a, b);
            continue;
        }
        long long a0 = r.sumFirst ? before : r.constant, b0 = r.sumFirst ? r.constant : before;
        long long costAfter = std::min(NodeComparison::violationOf(r.type, a, b), cap);
        long long costBefore = std::min(NodeComparison::violationOf(r.type, a0, b0), cap);
        propagation.addCostChange(r.position, costAfter - costBefore);
        if (NodeComparison::holds(r.type, a, b))
            propagation.evalViolatedConstraints.setOut(r.position);
        else
            propagation.evalViolatedConstraints.setIn(r.position);
    }
    touchedRows.clear();
    if (count > 1)
        for (unsigned int u : modified) moveRanks[f.variableIndex(u)] = NONE;
    if (!holds) return false;
    for (unsigned int r = 0; r < nbRoots; ++r) {
        unsigned int node = fixed.getRoots()[r].node;
        dag.setNewValue(node, static_cast<long long>(static_cast<unsigned long long>(dag.currentValue(node)) + delta[r]));
    }
    propagation.tNbViolatedConstraints = propagation.violatedConstraints.sizeIn();
    return true;
}

void KeptScores::clearRoots(Dag& dag) {
    for (const KeptScoresFixed::Root& root : fixed.getRoots()) dag.setNewValue(root.node, dag.currentValue(root.node));
}

bool KeptScores::commit(const Dag& dag, const std::vector<unsigned int>& modified) {
    if (!usable) return false;
    const DagFixedFields& f = dag.getFixedFields();
    for (unsigned int u : modified) {
        if (f.type(u) != Boolean) continue;
        unsigned int b = f.variableIndex(u);
        if (!fixed.isKept(b)) continue;
        if ((dag.currentValue(u) ^ dag.newValue(u)) != 1 || (dag.newValue(u) & ~1LL) != 0) return false;
    }
    for (unsigned int u : modified)
        if (f.type(u) == Boolean && fixed.isKept(f.variableIndex(u))) pending[f.variableIndex(u)] = 1;
    // As if the booleans flipped one after the other: a boolean not yet
    // taken still has its committed value.
    for (unsigned int u : modified) {
        if (f.type(u) != Boolean) continue;
        unsigned int b = f.variableIndex(u);
        if (pending[b] == 0) continue;
        long long before = dag.currentValue(u), after = dag.newValue(u);
        for (const KeptScoresFixed::Pair* e = fixed.pairsBegin(b); e != fixed.pairsEnd(b); ++e) {
            unsigned int w = f.variableIndex(e->other);
            long long xw = pending[w] != 0 ? dag.currentValue(e->other) : dag.newValue(e->other);
            int change = (static_cast<int>(KeptScoresFixed::bit(e->table, after, 1 - xw)) -
                          static_cast<int>(KeptScoresFixed::bit(e->table, after, xw))) -
                         (static_cast<int>(KeptScoresFixed::bit(e->table, before, 1 - xw)) -
                          static_cast<int>(KeptScoresFixed::bit(e->table, before, xw)));
            long long& gain = gains[static_cast<std::size_t>(w) * nbRoots + e->root];
            gain = static_cast<long long>(static_cast<unsigned long long>(gain) + times(change, e->coefficient));
            if (targeting) track(w, e->root);
        }
        long long* gain = gains.data() + static_cast<std::size_t>(b) * nbRoots;
        for (unsigned int r = 0; r < nbRoots; ++r) {
            gain[r] = static_cast<long long>(0ULL - static_cast<unsigned long long>(gain[r]));
            if (targeting) track(b, r);
        }
        pending[b] = 0;
    }
    return true;
}

void KeptScores::commitGraph(Dag& dag, Propagation& propagation, const std::vector<unsigned int>& modified) {
    const DagFixedFields& f = dag.getFixedFields();
    // The booleans first: a term then reads its final value from its two
    // children, whichever of them flipped.
    for (unsigned int u : modified) {
        dag.setCurrentValue(u, dag.newValue(u));
        dag.clearModified(u);
    }
    auto set = [&](unsigned int node, long long value) {
        dag.setCurrentValue(node, value);
        dag.setNewValue(node, value);
    };
    const std::vector<KeptScoresFixed::Root>& roots = fixed.getRoots();
    for (unsigned int u : modified) {
        const unsigned int b = f.variableIndex(u);
        const long long xu = dag.currentValue(u), before = 1 - xu;
        for (const KeptScoresFixed::Pair* e = fixed.pairsBegin(b); e != fixed.pairsEnd(b); ++e) {
            if (e->kind != KeptScoresFixed::COMPARISON_TERM)
                dag.getNode(e->term)->refreshChild(dag, e->term, e->position, before);
            long long value = KeptScoresFixed::bit(e->table, xu, dag.currentValue(e->other));
            if (value != 0 && e->kind == KeptScoresFixed::SCALED_TERM)
                value = WrapArith::mul(f.coefficient(e->term, 0), f.coefficient(e->term, 1));
            const long long old = dag.currentValue(e->term);
            // A term of two flipped booleans changes once, at its first visit.
            if (value == old) continue;
            set(e->term, value);
            const unsigned int root = roots[e->root].node;
            dag.getNode(root)->refreshChild(dag, root, e->rootPosition, old);
        }
        for (const KeptScoresFixed::Linear* e = fixed.linearsBegin(b); e != fixed.linearsEnd(b); ++e) {
            long long old = before;
            if (e->term != NONE) {
                old = xu;
                set(e->term, before);
            }
            const unsigned int root = roots[e->root].node;
            dag.getNode(root)->refreshChild(dag, root, e->rootPosition, old);
        }
        const long long sign = xu == 1 ? 1 : -1;
        for (const KeptScoresFixed::RowEntry* e = fixed.rowsBegin(b); e != fixed.rowsEnd(b); ++e) {
            const unsigned int sum = fixed.getRows()[e->row].sum;
            dag.getNode(sum)->refreshChild(dag, sum, e->position, before);
            if (rowMarks[e->row] == 0) {
                rowMarks[e->row] = 1;
                touchedRows.push_back(e->row);
            }
            rowShifts[e->row] += sign * e->coefficient;
        }
    }
    for (unsigned int row : touchedRows) {
        const long long shift = rowShifts[row];
        rowShifts[row] = 0;
        rowMarks[row] = 0;
        if (shift == 0) continue;
        const KeptScoresFixed::Row& r = fixed.getRows()[row];
        const long long after = dag.currentValue(r.sum) + shift;
        set(r.sum, after);
        const long long holds = NodeComparison::holds(r.type, r.sumFirst ? after : r.constant,
                                                      r.sumFirst ? r.constant : after) ? 1 : 0;
        dag.setNewValue(r.node, holds);
        propagation.commitConstraint(dag, r.node);
        dag.setCurrentValue(r.node, holds);
    }
    touchedRows.clear();
    for (const KeptScoresFixed::Root& root : roots) dag.setCurrentValue(root.node, dag.newValue(root.node));
}
