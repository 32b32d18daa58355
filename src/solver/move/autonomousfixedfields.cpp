#include "solver/move/autonomousfixedfields.h"

#include "api/kernelexception.h"
#include "solver/kernel/dagfixedfields.h"

#include <algorithm>
#include <limits>
#include <map>
#include <tuple>

AutonomousFixedFields::AutonomousFixedFields(const DagFixedFields& fixed)
    : fixed(fixed), rootSumIndices(fixed.nbNodes(), KernelConstants::NO_NODE) {
    positionInSum.assign(fixed.nbVariables(), KernelConstants::NO_NODE);
    initRootSums();
    positionInSum = std::vector<unsigned int>();
    initBoolsToRootSums();
    initSequences();
    coefficientSigns.reserve(rootSums.size());
    for (const RootSum& sum : rootSums) {
        auto positive = [](long long c) { return c > 0; };
        auto negative = [](long long c) { return c < 0; };
        const std::vector<long long>& c = sum.coefficients;
        coefficientSigns.push_back(std::all_of(c.begin(), c.end(), positive)   ? 1
                                   : std::all_of(c.begin(), c.end(), negative) ? -1
                                                                               : 0);
    }
    objectiveSigns.assign(rootSums.size(), 0);
    for (std::size_t i = 0; i < fixed.objectives().size(); ++i) {
        unsigned int sum = rootSumIndices[fixed.objectives()[i]];
        if (sum == KernelConstants::NO_NODE || objectiveSigns[sum] != 0) continue;
        objectiveSigns[sum] = fixed.directions()[i] == Maximize ? 1 : -1;
        ++nbObjectiveSums;
    }
    initFreeBooleans();
    initMonoConstrainedBooleans();
    initFamilies();
    gates = std::make_unique<GateLinks>(fixed, *this);
    intervals = std::make_unique<IntervalRows>(*this);
}

bool AutonomousFixedFields::isRootBool(const DagFixedFields& fixed, unsigned int node) {
    if (fixed.type(node) == Boolean) return true;
    return fixed.type(node) == Scalar && fixed.type(fixed.child(node, 0)) == Boolean && fixed.constant(node) != 0;
}

bool AutonomousFixedFields::isRootSum(const DagFixedFields& fixed, unsigned int node) {
    NodeType type = fixed.type(node);
    if (type != Sum && type != BooleanSum && type != ScalarSum) return false;
    unsigned int count = 0;
    for (unsigned int i = 0; i < fixed.nbChilds(node) && count < 2; ++i)
        if (isRootBool(fixed, fixed.child(node, i))) ++count;
    return count >= 2;
}

void AutonomousFixedFields::initRootSums() {
    // Whether a constraint lies at or above each node: parents have higher
    // ranks, so one pass from the top rank down settles it.
    underConstraint.assign(fixed.nbNodes(), 0);
    for (unsigned int level = fixed.nbRanks(); level-- > 0;) {
        const unsigned int* nodes = fixed.nodesOfRank(level);
        for (unsigned int k = 0; k < fixed.nbNodesOfRank(level); ++k) {
            unsigned int node = nodes[k];
            bool constrained = fixed.posInConstraints(node) != KernelConstants::NO_NODE;
            for (unsigned int p = 0; p < fixed.nbParents(node) && !constrained; ++p)
                constrained = underConstraint[fixed.parent(node, p)] != 0;
            underConstraint[node] = constrained;
        }
    }
    for (int pass = 0; pass < 2; ++pass) {
        for (unsigned int node = 0; node < fixed.nbNodes(); ++node) {
            if ((underConstraint[node] != 0) != (pass == 1) || !isRootSum(fixed, node)) continue;
            if (!addRootSum(node)) continue;
            ranges.push_back({node});
            for (unsigned int i = 0; i < fixed.nbChilds(node); ++i) {
                unsigned int child = fixed.child(node, i);
                if (!isRootBool(fixed, child) && fixed.type(child) != Constant) ranges.back().followsBooleans = false;
            }
            if (pass == 0) continue;
            balanceNodes.push_back(node);
            initRange(ranges.back(), underConstraint);
        }
        if (pass == 0) nbFreeRootSums = static_cast<unsigned int>(rootSums.size());
    }
}

void AutonomousFixedFields::initRange(SumRange& sum, const std::vector<char>& underConstraint) const {
    const long long MIN = std::numeric_limits<long long>::min(), MAX = std::numeric_limits<long long>::max();
    for (unsigned int p = 0; p < fixed.nbParents(sum.node) && sum.ranged; ++p) {
        unsigned int parent = fixed.parent(sum.node, p);
        // Parents that only lead to objectives leave the sum free to move.
        if (underConstraint[parent] == 0) continue;
        NodeType type = fixed.type(parent);
        bool comparison = type == Lt || type == Leq || type == Gt || type == Geq || type == Eq;
        if (!comparison || fixed.posInConstraints(parent) == KernelConstants::NO_NODE) {
            sum.ranged = false;
            break;
        }
        unsigned int first = fixed.child(parent, 0), second = fixed.child(parent, 1);
        bool sumFirst = first == sum.node;
        unsigned int other = sumFirst ? second : first;
        if (other == sum.node || fixed.type(other) != Constant) {
            sum.ranged = false;
            break;
        }
        long long c = fixed.constant(other);
        // Written as "sum op c": swap the relation when the sum is second.
        if (!sumFirst) type = type == Lt ? Gt : type == Leq ? Geq : type == Gt ? Lt : type == Geq ? Leq : Eq;
        if (type == Lt) {
            if (c == MIN) sum.ranged = false;
            else sum.highest = std::min(sum.highest, c - 1);
        } else if (type == Gt) {
            if (c == MAX) sum.ranged = false;
            else sum.lowest = std::max(sum.lowest, c + 1);
        } else {
            if (type == Leq || type == Eq) sum.highest = std::min(sum.highest, c);
            if (type == Geq || type == Eq) sum.lowest = std::max(sum.lowest, c);
        }
    }
    // A sum no constant comparison bounds is only watched through other
    // expressions.
    if (sum.lowest == MIN && sum.highest == MAX) sum.ranged = false;
}

bool AutonomousFixedFields::addRootSum(unsigned int node) {
    RootSum sum{node, {}, {}};
    // Sized once: grown by doubling, the lists of a model with millions of
    // booleans would hold up to twice their memory.
    sum.booleans.reserve(fixed.nbChilds(node));
    sum.coefficients.reserve(fixed.nbChilds(node));
    for (unsigned int i = 0; i < fixed.nbChilds(node); ++i) {
        unsigned int child = fixed.child(node, i);
        if (!isRootBool(fixed, child)) continue;
        long long coefficient = fixed.type(node) == ScalarSum ? fixed.coefficient(node, i) : 1;
        unsigned int boolean = child;
        if (fixed.type(child) == Scalar) {
            coefficient *= fixed.constant(child);
            boolean = fixed.child(child, 0);
        }
        // A boolean met twice counts once, with its total effect.
        unsigned int& j = positionInSum[fixed.variableIndex(boolean)];
        if (j == KernelConstants::NO_NODE) {
            j = static_cast<unsigned int>(sum.booleans.size());
            sum.booleans.push_back(boolean);
            sum.coefficients.push_back(coefficient);
        } else {
            sum.coefficients[j] += coefficient;
        }
    }
    for (unsigned int boolean : sum.booleans) positionInSum[fixed.variableIndex(boolean)] = KernelConstants::NO_NODE;
    // Booleans whose terms cancel out take no part in the sum.
    std::size_t kept = 0;
    for (std::size_t j = 0; j < sum.booleans.size(); ++j) {
        if (sum.coefficients[j] == 0) continue;
        sum.booleans[kept] = sum.booleans[j];
        sum.coefficients[kept++] = sum.coefficients[j];
    }
    sum.booleans.resize(kept);
    sum.coefficients.resize(kept);
    if (sum.booleans.size() < 2) return false;
    if (std::all_of(sum.coefficients.begin(), sum.coefficients.end(), [](long long c) { return c == 1; }))
        std::vector<long long>().swap(sum.coefficients);
    rootSumIndices[node] = static_cast<unsigned int>(rootSums.size());
    rootSums.push_back(std::move(sum));
    return true;
}

void AutonomousFixedFields::initBoolsToRootSums() {
    // Counted first, then filled in the order of the sums, so that each
    // boolean's free sums (the lower indexes) come first.
    const unsigned int nbBooleans = fixed.nbBooleans();
    std::vector<unsigned int> counts(nbBooleans, 0);
    for (const RootSum& sum : rootSums)
        for (unsigned int boolean : sum.booleans) ++counts[fixed.variableIndex(boolean)];
    std::size_t total = 0;
    blockOfRank.resize(nbBooleans);
    for (unsigned int rank = 0; rank < nbBooleans; ++rank) {
        // Blocks are addressed in 32 bits: 2^32 entries would take 64 GB.
        if (total + counts[rank] + 1 > std::numeric_limits<unsigned int>::max())
            throw KernelException("src/solver/move/autonomousfixedfields", __LINE__, "initBoolsToRootSums",
                                  "Too many root sum entries.");
        blockOfRank[rank] = static_cast<unsigned int>(total);
        total += counts[rank] + 1;
    }
    rootBoolEntries.resize(total);
    // The header: the node, then the number of entries filled so far and
    // of free ones among them.
    for (unsigned int rank = 0; rank < nbBooleans; ++rank)
        rootBoolEntries[blockOfRank[rank]] = {fixed.variables()[rank], 0, 0};
    for (unsigned int s = 0; s < rootSums.size(); ++s) {
        const RootSum& sum = rootSums[s];
        for (unsigned int j = 0; j < sum.booleans.size(); ++j) {
            const unsigned int block = blockOfRank[fixed.variableIndex(sum.booleans[j])];
            RootBool::Entry& header = rootBoolEntries[block];
            rootBoolEntries[block + 1 + header.position++] = {s, j, sum.coefficientAt(j)};
            if (s < nbFreeRootSums) ++header.coefficient;
        }
    }
}

std::vector<unsigned int> AutonomousFixedFields::rowsOfColumn(unsigned int sum) const {
    std::vector<unsigned int> rows;
    const RootSum& column = rootSums[sum];
    if (sum < nbFreeRootSums || !ranges[sum].ranged) return rows;
    for (std::size_t j = 0; j < column.booleans.size(); ++j) {
        RootBool::Entries entries = getRootBool(fixed.variableIndex(column.booleans[j])).constrainedEntries();
        if (column.coefficientAt(j) != 1 || entries.size() != 2) return {};
        // The row counts the boolean once too: a reversal moves whole cells
        // between rows, which keeps weighted rows (sizes in a capacity)
        // level only by chance.
        const RootBool::Entry& row = entries.first[0].sum == sum ? entries.first[1] : entries.first[0];
        if (row.coefficient != 1) return {};
        rows.push_back(row.sum);
    }
    return rows;
}

void AutonomousFixedFields::initSequences() {
    // Columns are grouped by range and row set; a group needs three to
    // hold a block worth rearranging.
    const std::size_t MIN_COLUMNS = 3, MAX_CELLS = 1u << 24;
    std::map<std::tuple<long long, long long, std::vector<unsigned int>>, std::vector<unsigned int>> groups;
    for (unsigned int s = nbFreeRootSums; s < rootSums.size(); ++s) {
        std::vector<unsigned int> rows = rowsOfColumn(s);
        if (rows.empty()) continue;
        std::sort(rows.begin(), rows.end());
        if (std::adjacent_find(rows.begin(), rows.end()) != rows.end()) continue;
        groups[std::make_tuple(ranges[s].lowest, ranges[s].highest, std::move(rows))].push_back(s);
    }
    sequenceIndices.assign(rootSums.size(), KernelConstants::NO_NODE);
    places.assign(rootSums.size(), KernelConstants::NO_NODE);
    std::size_t cells = 0;
    std::vector<unsigned int> rowIndex(rootSums.size(), KernelConstants::NO_NODE);
    for (auto& group : groups) {
        const std::vector<unsigned int>& rows = std::get<2>(group.first);
        std::vector<unsigned int>& columns = group.second;
        cells += columns.size() * rows.size();
        if (columns.size() < MIN_COLUMNS || cells > MAX_CELLS) continue;
        for (unsigned int r = 0; r < rows.size(); ++r) rowIndex[rows[r]] = r;
        SumSequence sequence;
        sequence.nbRows = static_cast<unsigned int>(rows.size());
        sequence.rowAt.resize(columns.size() * rows.size());
        sequence.cellAt.resize(columns.size() * rows.size());
        for (unsigned int c = 0; c < columns.size(); ++c) {
            std::vector<unsigned int> columnRows = rowsOfColumn(columns[c]);
            for (unsigned int j = 0; j < columnRows.size(); ++j) {
                unsigned int r = rowIndex[columnRows[j]];
                sequence.rowAt[c * rows.size() + j] = r;
                sequence.cellAt[c * rows.size() + r] = j;
            }
            sequenceIndices[columns[c]] = static_cast<unsigned int>(sequences.size());
            places[columns[c]] = c;
        }
        sequence.columns = std::move(columns);
        sequences.push_back(std::move(sequence));
    }
}

void AutonomousFixedFields::initFreeBooleans() {
    for (unsigned int r = 0; r < fixed.nbBooleans(); ++r)
        if (getRootBool(r).isFree()) freeBooleans.push_back(fixed.variables()[r]);
}

// Greedy, in the order of the sums: each ranged sum takes the first family
// that no sum sharing a boolean with it has taken.
void AutonomousFixedFields::initFamilies() {
    std::vector<unsigned char> taken(rootSums.size(), NO_FAMILY);
    unsigned int used = 0;
    for (unsigned int s = nbFreeRootSums; s < rootSums.size(); ++s) {
        if (!ranges[s].ranged) continue;
        unsigned int neighbours = 0;
        for (unsigned int boolean : rootSums[s].booleans)
            for (const RootBool::Entry& entry : getRootBool(fixed.variableIndex(boolean)).constrainedEntries())
                if (taken[entry.sum] != NO_FAMILY) neighbours |= 1u << taken[entry.sum];
        unsigned int family = 0;
        while (family < MAX_FAMILIES && (neighbours >> family & 1u) != 0) ++family;
        if (family == MAX_FAMILIES) return;
        taken[s] = static_cast<unsigned char>(family);
        used = std::max(used, family + 1);
    }
    families = std::move(taken);
    nbFamilies = used;
}

void AutonomousFixedFields::initMonoConstrainedBooleans() {
    for (unsigned int r = 0; r < fixed.nbBooleans(); ++r)
        if (getRootBool(r).isMonoConstrained()) monoConstrainedBooleans.push_back(fixed.variables()[r]);
}
