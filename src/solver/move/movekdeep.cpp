#include "solver/move/movekdeep.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/keptscores.h"
#include "solver/kernel/quickrand.h"

#include <algorithm>
#include <limits>

namespace {
// Gains add in 64-bit wrap-around: exact whenever the objective's changes
// fit, which the kept scores' roots guarantee for any set of flips.
long long wrapAdd(long long a, long long b) {
    return static_cast<long long>(static_cast<unsigned long long>(a) + static_cast<unsigned long long>(b));
}
long long wrapTimes(long long a, long long b) {
    return static_cast<long long>(static_cast<unsigned long long>(a) * static_cast<unsigned long long>(b));
}

// What the flip of w adds to the gain of u through one term of both
// (from their committed values).
long long interaction(const KeptScoresFixed::Pair& e, long long xu, long long xw) {
    const int both = static_cast<int>(KeptScoresFixed::bit(e.table, 1 - xu, 1 - xw)) -
                     static_cast<int>(KeptScoresFixed::bit(e.table, 1 - xu, xw)) -
                     static_cast<int>(KeptScoresFixed::bit(e.table, xu, 1 - xw)) +
                     static_cast<int>(KeptScoresFixed::bit(e.table, xu, xw));
    return wrapTimes(both, e.coefficient);
}
}  // namespace

MoveKDeep::MoveKDeep(Dag& dag, Quickrand& quickrand, unsigned int k, unsigned int utilRate)
    : Move(dag, quickrand, prefixName(k, "Deep"), utilRate),
      k(k),
      kept(dag.getFixedFields().keptScores()),
      slotOf(dag.getFixedFields().nbBooleans(), 0),
      stamps(dag.getFixedFields().nbBooleans(), 0) {
    heap.reserve(dag.getFixedFields().nbBooleans());
    sequence.reserve(static_cast<std::size_t>(k) * DEPTH_PER_K);
}

bool MoveKDeep::isValidK(unsigned int k, const Dag& dag) {
    const DagFixedFields& fixed = dag.getFixedFields();
    const KeptScoresFixed& kept = fixed.keptScores();
    if (k < 2 || kept.nbRoots() == 0 || !kept.getRows().empty() || fixed.nbBooleans() < 2) return false;
    bool paired = false;
    for (unsigned int b = 0; b < fixed.nbBooleans(); ++b) {
        if (!kept.isScored(b)) return false;
        paired = paired || kept.pairsBegin(b) != kept.pairsEnd(b);
    }
    return paired;
}

bool MoveKDeep::optimizedRoot(unsigned int& r, long long& s) const {
    const DagFixedFields& fixed = dag.getFixedFields();
    for (unsigned int i = 0; i < fixed.objectives().size(); ++i) {
        const unsigned int node = fixed.objectives()[i];
        const long long value = dag.currentValue(node);
        const bool maximized = fixed.directions()[i] == Maximize;
        if (maximized ? value >= fixed.upperBound(node) : value <= fixed.lowerBound(node)) continue;
        for (unsigned int c = 0; c < kept.nbRoots(); ++c)
            if (kept.getRoots()[c].objective == i) {
                r = c;
                s = maximized ? 1 : -1;
                return true;
            }
        return false;
    }
    return false;
}

// --- The heap ------------------------------------------------------------

void MoveKDeep::place(unsigned int slot, Candidate candidate) {
    heap[slot] = candidate;
    slotOf[candidate.boolean] = slot;
}

void MoveKDeep::raise(unsigned int slot) {
    const Candidate moving = heap[slot];
    while (slot > 0) {
        const unsigned int parent = (slot - 1) / 2;
        if (heap[parent].gain >= moving.gain) break;
        place(slot, heap[parent]);
        slot = parent;
    }
    place(slot, moving);
}

void MoveKDeep::lower(unsigned int slot) {
    const Candidate moving = heap[slot];
    const unsigned int n = static_cast<unsigned int>(heap.size());
    for (;;) {
        unsigned int child = 2 * slot + 1;
        if (child >= n) break;
        if (child + 1 < n && heap[child + 1].gain > heap[child].gain) ++child;
        if (heap[child].gain <= moving.gain) break;
        place(slot, heap[child]);
        slot = child;
    }
    place(slot, moving);
}

MoveKDeep::Candidate MoveKDeep::popBest() {
    const Candidate best = heap.front();
    const Candidate last = heap.back();
    heap.pop_back();
    if (!heap.empty()) {
        heap.front() = last;
        lower(0);
    }
    return best;
}

// --- The move ------------------------------------------------------------

void MoveKDeep::take(unsigned int boolean) {
    stamps[boolean] = stamp;
    slotOf[boolean] = FLIPPED;
    sequence.push_back(boolean);
    const long long xu = dag.currentValue(dag.getFixedFields().variables()[boolean]);
    const KeptScoresFixed::Pair* pairs = kept.pairsBegin(boolean);
    const unsigned int* others = kept.othersBegin(boolean);
    const std::size_t n = static_cast<std::size_t>(kept.othersEnd(boolean) - others);
    for (std::size_t i = 0; i < n; ++i) {
        const KeptScoresFixed::Pair& e = pairs[i];
        const unsigned int w = others[i];
        if (e.root != root) continue;
        const long long change = wrapTimes(sign, interaction(e, dag.currentValue(e.other), xu));
        if (stamps[w] != stamp) {
            stamps[w] = stamp;
            heap.push_back({wrapAdd(wrapTimes(sign, scores->gain(w, root)), change), w});
            slotOf[w] = static_cast<unsigned int>(heap.size() - 1);
            raise(slotOf[w]);
            continue;
        }
        const unsigned int slot = slotOf[w];
        if (slot == FLIPPED || change == 0) continue;
        heap[slot].gain = wrapAdd(heap[slot].gain, change);
        if (change > 0)
            raise(slot);
        else
            lower(slot);
    }
}

bool MoveKDeep::modify() {
    flippedLength = 0;
    scores = dag.getPropagation().getKeptScores();
    if (scores == nullptr || !scores->isUsable() || !optimizedRoot(root, sign)) return false;
    const DagFixedFields& fixed = dag.getFixedFields();
    if (++stamp == 0) {
        std::fill(stamps.begin(), stamps.end(), 0);
        stamp = 1;
    }
    heap.clear();
    sequence.clear();
    const unsigned int first = quickrand.nextInt(fixed.nbBooleans());
    long long total = wrapTimes(sign, scores->gain(first, root));
    take(first);
    long long best = std::numeric_limits<long long>::min();
    std::size_t bestLength = 0;
    const std::size_t depth = static_cast<std::size_t>(k) * DEPTH_PER_K;
    while (sequence.size() < depth && !heap.empty()) {
        const Candidate next = popBest();
        total = wrapAdd(total, next.gain);
        take(next.boolean);
        if (total > best) {
            best = total;
            bestLength = sequence.size();
        }
    }
    if (bestLength < 2) return false;
    flippedLength = bestLength;
    for (std::size_t i = 0; i < bestLength; ++i) {
        const unsigned int node = fixed.variables()[sequence[i]];
        flipFrom(node, dag.currentValue(node));
    }
    return true;
}
