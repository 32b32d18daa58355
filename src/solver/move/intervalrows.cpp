#include "solver/move/intervalrows.h"

#include "solver/kernel/dagfixedfields.h"
#include "solver/move/autonomousfixedfields.h"

#include <algorithm>
#include <utility>

namespace {
enum SumKind : char { Other, Choice, Capacity };
}  // namespace

IntervalRows::IntervalRows(const AutonomousFixedFields& sums) {
    if (!build(sums)) clear();
}

void IntervalRows::clear() {
    choiceRows.clear();
    lineRows.clear();
    lengths.clear();
    offsets.clear();
    booleans.clear();
    starts.clear();
    rowsOf.clear();
    startsOf.clear();
}

unsigned int IntervalRows::at(unsigned int row, unsigned int start) const {
    const unsigned int *first = starts.data() + offsets[row], *last = starts.data() + offsets[row + 1];
    const unsigned int* found = std::lower_bound(first, last, start);
    return found == last || *found != start ? NONE : booleans[found - starts.data()];
}

bool IntervalRows::build(const AutonomousFixedFields& sums) {
    const DagFixedFields& fixed = sums.getFixedFields();
    const std::vector<RootSum>& rootSums = sums.getRootSums();
    const unsigned int nbSums = sums.getNbRootSums();
    // Sums of booleans with unit coefficients, equal to 1 or at most 1.
    std::vector<char> kinds(nbSums, Other);
    unsigned int nbChoices = 0;
    for (unsigned int s = sums.getNbFreeRootSums(); s < nbSums; ++s) {
        const SumRange& range = sums.getRange(s);
        if (!range.ranged || !range.followsBooleans || range.highest != 1 || range.lowest > 1) continue;
        if (!rootSums[s].hasUnitCoefficients()) continue;
        kinds[s] = range.lowest == 1 ? Choice : Capacity;
        nbChoices += range.lowest == 1;
    }
    if (nbChoices < 2) return false;
    // The line: the capacity rows that booleans of choice rows reach, in
    // the model's order.
    std::vector<unsigned int> places(nbSums, NONE);
    for (unsigned int s = 0; s < nbSums; ++s) {
        if (kinds[s] != Choice) continue;
        for (unsigned int boolean : rootSums[s].booleans)
            for (const RootBool::Entry& entry : sums.getRootBool(fixed.variableIndex(boolean)).constrainedEntries())
                if (kinds[entry.sum] == Capacity) places[entry.sum] = 0;
    }
    for (unsigned int s = 0; s < nbSums; ++s)
        if (places[s] != NONE) {
            places[s] = static_cast<unsigned int>(lineRows.size());
            lineRows.push_back(s);
        }
    if (lineRows.size() < 2) return false;
    // The choice rows whose booleans are intervals of one length, each in
    // this row and line rows only.
    rowsOf.assign(fixed.nbBooleans(), NONE);
    startsOf.assign(fixed.nbBooleans(), NONE);
    offsets.push_back(0);
    std::vector<std::pair<unsigned int, unsigned int>> row;
    for (unsigned int s = 0; s < nbSums; ++s) {
        if (kinds[s] != Choice) continue;
        row.clear();
        unsigned int length = 0;
        bool intervals = true;
        for (unsigned int boolean : rootSums[s].booleans) {
            unsigned int first = NONE, last = 0, count = 0;
            for (const RootBool::Entry& entry : sums.getRootBool(fixed.variableIndex(boolean)).constrainedEntries()) {
                if (entry.sum == s) continue;
                if (places[entry.sum] == NONE) intervals = false;
                else {
                    first = std::min(first, places[entry.sum]);
                    last = std::max(last, places[entry.sum]);
                    ++count;
                }
            }
            intervals = intervals && count != 0 && last - first + 1 == count && (length == 0 || count == length);
            if (!intervals) break;
            length = count;
            row.emplace_back(first, boolean);
        }
        std::sort(row.begin(), row.end());
        for (std::size_t i = 1; i < row.size() && intervals; ++i) intervals = row[i].first != row[i - 1].first;
        if (!intervals) continue;
        const unsigned int index = static_cast<unsigned int>(choiceRows.size());
        choiceRows.push_back(s);
        lengths.push_back(length);
        for (const auto& placed : row) {
            starts.push_back(placed.first);
            booleans.push_back(placed.second);
            rowsOf[fixed.variableIndex(placed.second)] = index;
            startsOf[fixed.variableIndex(placed.second)] = placed.first;
        }
        offsets.push_back(static_cast<unsigned int>(booleans.size()));
    }
    if (choiceRows.size() < 2) return false;
    // A line row shared with booleans outside the kept rows would hide
    // them from the moves: no structure then.
    for (unsigned int s : lineRows)
        for (unsigned int boolean : rootSums[s].booleans)
            if (rowsOf[fixed.variableIndex(boolean)] == NONE) return false;
    return true;
}
