#include "solver/move/movekinterval.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"
#include "solver/move/autonomousstructure.h"

namespace {
// Jobs compared when the first one is targeted.
const int TARGET_DRAWS = 3;
// Draws of a job placed once before giving up (all are, once feasible).
const int JOB_DRAWS = 8;
}  // namespace

MoveKInterval::MoveKInterval(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, Kind kind,
                             unsigned int utilRate, unsigned int targeting)
    : MoveK(dag, quickrand, structure, 1, kind == Insert ? "IntervalInsert" : "IntervalSwap", utilRate, targeting),
      kind(kind), fixedFields(structure.getFixedFields()), rows(fixedFields.getIntervals()) {}

unsigned int MoveKInterval::placedBoolean(unsigned int row) const {
    // The booleans at 1 are those whose flip would lower the row.
    const Bipartition& bools = structure.increasingBools(rows.rowSum(row));
    if (bools.sizeOut() != 1) return IntervalRows::NONE;
    return fixedFields.getRootSums()[rows.rowSum(row)].booleans[bools[bools.sizeIn()]];
}

long long MoveKInterval::costOf(unsigned int boolean) const {
    long long cost = 0;
    for (const RootBool::Entry& entry :
         fixedFields.getRootBool(dag.getFixedFields().variableIndex(boolean)).freeEntries())
        cost -= fixedFields.objectiveSign(entry.sum) * entry.coefficient;
    return cost;
}

bool MoveKInterval::drawJob(Placed& job, unsigned int other) {
    const int wanted = other == IntervalRows::NONE && decideToTarget() ? TARGET_DRAWS : 1;
    int found = 0;
    long long worst = 0;
    for (int draw = 0; draw < JOB_DRAWS && found < wanted; ++draw) {
        unsigned int row = quickrand.nextInt(rows.nbRows());
        if (row == other) continue;
        unsigned int boolean = placedBoolean(row);
        if (boolean == IntervalRows::NONE) continue;
        long long cost = wanted > 1 ? costOf(boolean) : 0;
        if (found++ == 0 || cost > worst) {
            job = {row, boolean, rows.startOf(dag.getFixedFields().variableIndex(boolean))};
            worst = cost;
        }
    }
    return found != 0;
}

bool MoveKInterval::drawNear(Placed& job, const Placed& other) {
    // Within a few jobs' mean length of the other, on either side.
    const long long reach = 3 * static_cast<long long>(rows.lineLength() / rows.nbRows()) + 1;
    const long long place = static_cast<long long>(other.start) + quickrand.nextInt(2 * reach + 1) - reach;
    if (place < 0 || place >= rows.lineLength()) return false;
    const unsigned int sum = rows.lineSum(static_cast<unsigned int>(place));
    const Bipartition& bools = structure.increasingBools(sum);
    if (bools.sizeOut() != 1) return false;
    unsigned int boolean = fixedFields.getRootSums()[sum].booleans[bools[bools.sizeIn()]];
    unsigned int rank = dag.getFixedFields().variableIndex(boolean);
    unsigned int row = rows.rowOf(rank);
    if (row == other.row || placedBoolean(row) != boolean) return false;
    job = {row, boolean, rows.startOf(rank)};
    return true;
}

bool MoveKInterval::collect(unsigned int from, unsigned int to) {
    run.clear();
    const DagFixedFields& fixed = dag.getFixedFields();
    for (unsigned int place = from; place < to;) {
        const unsigned int sum = rows.lineSum(place);
        const Bipartition& bools = structure.increasingBools(sum);
        if (bools.sizeOut() == 0) {
            ++place;
            continue;
        }
        if (bools.sizeOut() != 1) return false;
        unsigned int boolean = fixedFields.getRootSums()[sum].booleans[bools[bools.sizeIn()]];
        unsigned int rank = fixed.variableIndex(boolean);
        unsigned int row = rows.rowOf(rank), start = rows.startOf(rank);
        if (start != place || start + rows.length(row) > to || placedBoolean(row) != boolean) return false;
        run.push_back({row, boolean, start});
        place = start + rows.length(row);
    }
    return true;
}

bool MoveKInterval::place(const Placed& job, long long start) {
    if (start == job.start) return true;
    if (start < 0 || start >= rows.lineLength()) return false;
    unsigned int boolean = rows.at(job.row, static_cast<unsigned int>(start));
    if (boolean == IntervalRows::NONE) return false;
    flip(job.boolean);
    flip(boolean);
    return true;
}

bool MoveKInterval::modify() {
    Placed a{}, b{};
    if (!drawJob(a, IntervalRows::NONE)) return false;
    // Half of the time the other job is a near one: late in a search most
    // of the gains are local.
    if (quickrand.nextInt(2) == 0 ? !drawNear(b, a) : !drawJob(b, a.row)) return false;
    if (kind == Insert) {
        const long long lengthA = rows.length(a.row), endA = a.start + lengthA;
        const long long endB = b.start + rows.length(b.row);
        if (a.start < b.start) {
            if (b.start < endA) return false;
            // A goes just after B; the jobs from A's end to B's end move
            // back by A's length.
            if (!collect(static_cast<unsigned int>(endA), static_cast<unsigned int>(endB))) return false;
            for (const Placed& job : run)
                if (!place(job, job.start - lengthA)) return false;
            return place(a, endB - lengthA);
        }
        // A goes just before B; the jobs from B's start to A's start move
        // on by A's length.
        if (!collect(b.start, a.start)) return false;
        for (const Placed& job : run)
            if (!place(job, job.start + lengthA)) return false;
        return place(a, b.start);
    }
    if (b.start < a.start) std::swap(a, b);
    const long long endFirst = a.start + rows.length(a.row), endSecond = b.start + rows.length(b.row);
    const long long firstLength = rows.length(a.row), secondLength = rows.length(b.row);
    if (endFirst > b.start || !collect(static_cast<unsigned int>(endFirst), b.start)) return false;
    for (const Placed& job : run)
        if (!place(job, job.start + secondLength - firstLength)) return false;
    return place(b, a.start) && place(a, endSecond - firstLength);
}
