#include "solver/move/movekdeep.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/keptscores.h"
#include "solver/kernel/quickrand.h"

#include <algorithm>
#include <limits>

namespace {
// Roots whose one-flip changes stay within this magnitude get buckets: a
// few tens of kilobytes a move.
constexpr long long MAX_BUCKETED_BOUND = 4095;

// Gains add in 64-bit wrap-around: exact whenever the objective's changes
// fit, which the kept scores' roots guarantee for any set of flips.
long long wrapAdd(long long a, long long b) {
    return static_cast<long long>(static_cast<unsigned long long>(a) + static_cast<unsigned long long>(b));
}
long long wrapTimes(long long a, long long b) {
    return static_cast<long long>(static_cast<unsigned long long>(a) * static_cast<unsigned long long>(b));
}

// What the flip of w adds to the gain of u through one term of both, per
// term table and committed values (2 xu + xw), in units of its coefficient.
struct Interactions {
    signed char of[16][4];
    constexpr Interactions() : of() {
        for (unsigned int table = 0; table < 16; ++table)
            for (unsigned int xu = 0; xu < 2; ++xu)
                for (unsigned int xw = 0; xw < 2; ++xw) {
                    auto bit = [table](unsigned int u, unsigned int w) {
                        return static_cast<int>((table >> (2 * u + w)) & 1u);
                    };
                    of[table][2 * xu + xw] =
                        static_cast<signed char>(bit(1 - xu, 1 - xw) - bit(1 - xu, xw) - bit(xu, 1 - xw) + bit(xu, xw));
                }
    }
};
constexpr Interactions INTERACTIONS;

long long interaction(const KeptScoresFixed::Pair& e, long long xu, long long xw) {
    return wrapTimes(INTERACTIONS.of[e.table & 15u][2 * xu + xw], e.coefficient);
}
}  // namespace

MoveKDeep::MoveKDeep(Dag& dag, Quickrand& quickrand, unsigned int k, unsigned int utilRate)
    : Move(dag, quickrand, prefixName(k, "Deep"), utilRate),
      k(k),
      kept(dag.getFixedFields().keptScores()),
      slotOf(dag.getFixedFields().nbBooleans(), 0),
      stamps(dag.getFixedFields().nbBooleans(), 0) {
    const unsigned int n = dag.getFixedFields().nbBooleans();
    heap.reserve(n);
    sequence.reserve(static_cast<std::size_t>(k) * DEPTH_PER_K);
    if (kept.nbRoots() == 0) return;
    // A flip changes each of its terms by at most the term's coefficient.
    bounds.assign(kept.nbRoots(), 0);
    std::vector<long long> own(kept.nbRoots(), 0);
    auto addTo = [](long long& total, long long coefficient) {
        const long long magnitude =
            coefficient == std::numeric_limits<long long>::min() ? std::numeric_limits<long long>::max()
                                                                 : (coefficient < 0 ? -coefficient : coefficient);
        total = total > std::numeric_limits<long long>::max() - magnitude ? std::numeric_limits<long long>::max()
                                                                           : total + magnitude;
    };
    for (unsigned int b = 0; b < n; ++b) {
        std::fill(own.begin(), own.end(), 0);
        for (const KeptScoresFixed::Pair* e = kept.pairsBegin(b); e != kept.pairsEnd(b); ++e)
            addTo(own[e->root], e->coefficient);
        for (const KeptScoresFixed::Linear* e = kept.linearsBegin(b); e != kept.linearsEnd(b); ++e)
            addTo(own[e->root], e->coefficient);
        for (unsigned int r = 0; r < kept.nbRoots(); ++r) bounds[r] = std::max(bounds[r], own[r]);
    }
    if (*std::min_element(bounds.begin(), bounds.end()) <= MAX_BUCKETED_BOUND) {
        heads.assign(static_cast<std::size_t>(2 * MAX_BUCKETED_BOUND + 1), NIL);
        nexts.assign(n, NIL);
        previous.assign(n, NIL);
        gainOf.assign(n, 0);
        queuedBooleans.reserve(n);
    }
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

// --- The candidates ------------------------------------------------------

void MoveKDeep::clearQueue() {
    heap.clear();
    for (unsigned int b : queuedBooleans) heads[bucketOf(b)] = NIL;
    queuedBooleans.clear();
    queued = 0;
    top = 0;
}

void MoveKDeep::insert(unsigned int boolean, long long gain) {
    if (!bucketed) {
        heap.push_back({gain, boolean});
        slotOf[boolean] = static_cast<unsigned int>(heap.size() - 1);
        raise(slotOf[boolean]);
        return;
    }
    gainOf[boolean] = gain;
    link(boolean);
    queuedBooleans.push_back(boolean);
    ++queued;
}

void MoveKDeep::change(unsigned int boolean, long long by) {
    if (!bucketed) {
        const unsigned int slot = slotOf[boolean];
        heap[slot].gain = wrapAdd(heap[slot].gain, by);
        if (by > 0)
            raise(slot);
        else
            lower(slot);
        return;
    }
    unlink(boolean);
    gainOf[boolean] += by;
    link(boolean);
}

MoveKDeep::Candidate MoveKDeep::popBest() {
    if (bucketed) {
        while (heads[top] == NIL) --top;
        const unsigned int best = heads[top];
        unlink(best);
        --queued;
        return {gainOf[best], best};
    }
    const Candidate best = heap.front();
    const Candidate last = heap.back();
    heap.pop_back();
    if (!heap.empty()) {
        heap.front() = last;
        lower(0);
    }
    return best;
}

void MoveKDeep::link(unsigned int boolean) {
    const unsigned int bucket = bucketOf(boolean);
    previous[boolean] = NIL;
    nexts[boolean] = heads[bucket];
    if (heads[bucket] != NIL) previous[heads[bucket]] = boolean;
    heads[bucket] = boolean;
    top = std::max(top, bucket);
}

void MoveKDeep::unlink(unsigned int boolean) {
    const unsigned int before = previous[boolean], after = nexts[boolean];
    if (before != NIL)
        nexts[before] = after;
    else
        heads[bucketOf(boolean)] = after;
    if (after != NIL) previous[after] = before;
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
        const long long delta = wrapTimes(sign, interaction(e, dag.currentValue(e.other), xu));
        if (stamps[w] != stamp) {
            stamps[w] = stamp;
            slotOf[w] = 0;
            insert(w, wrapAdd(wrapTimes(sign, scores->gain(w, root)), delta));
        } else if (slotOf[w] != FLIPPED && delta != 0) {
            change(w, delta);
        }
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
    clearQueue();
    bucketed = !heads.empty() && bounds[root] <= MAX_BUCKETED_BOUND;
    bound = bounds[root];
    sequence.clear();
    const unsigned int first = quickrand.nextInt(fixed.nbBooleans());
    long long total = wrapTimes(sign, scores->gain(first, root));
    take(first);
    long long best = std::numeric_limits<long long>::min();
    std::size_t bestLength = 0;
    const std::size_t depth = static_cast<std::size_t>(k) * DEPTH_PER_K;
    while (sequence.size() < depth && !isQueueEmpty()) {
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
