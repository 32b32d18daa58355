#pragma once

#include "solver/kernel/bipartition.h"
#include "solver/kernel/daglistener.h"
#include "solver/move/autonomousfixedfields.h"

#include <vector>

class Dag;
class Quickrand;

// The shifts of a sum that keep it in its range, and how far its committed
// value lies outside it: kept at every commit so that weighing a flip reads
// one small record per sum.
struct SumRoom {
    long long low = 0, high = 0, base = 0;
    // The sum has other children that move: read from the graph.
    bool stale = false;
};

// How far the move being built has shifted each root sum, with the list of
// the sums it touched so that clearing costs what the move did. Only one
// move is built at a time in a thread, so its moves share one. Each sum's
// shift, excess and committed room share one cache line: weighing a flip
// reads all three for each sum of the boolean, and a large model's sums lie
// beyond the nearest caches.
class SumShifts {
public:
    explicit SumShifts(unsigned int nbSums) : records(nbSums) { touched.reserve(nbSums); }
    void add(unsigned int sum, long long delta) {
        Record& record = records[sum];
        if (record.mark == 0) {
            record.mark = 1;
            touched.push_back(sum);
        }
        // Saturates: only the sign and the size up to the range matter.
        if (__builtin_add_overflow(record.shift, delta, &record.shift))
            record.shift = delta > 0 ? 9223372036854775807LL : -9223372036854775807LL - 1;
    }
    long long operator[](unsigned int sum) const { return records[sum].shift; }
    // How far the shift breaks the sum's constraints, as last recorded by
    // the chain (0 for an untouched sum).
    long long excessOf(unsigned int sum) const { return records[sum].excess; }
    void setExcess(unsigned int sum, long long excess) { records[sum].excess = excess; }
    // The sum's room as of the last commit, kept by the sum structure.
    const SumRoom& room(unsigned int sum) const { return records[sum].room; }
    void setRoom(unsigned int sum, const SumRoom& room) { records[sum].room = room; }
    const std::vector<unsigned int>& getTouched() const { return touched; }
    // The touched sums that a constraint still needs settled, kept by the
    // chain as it flips (a handful at a time).
    const std::vector<unsigned int>& getUnsettled() const { return unsettled; }
    // Whether the sum's state changed.
    bool setUnsettled(unsigned int sum, bool isUnsettled) {
        char& mark = records[sum].mark;
        if ((mark == 2) == isUnsettled) return false;
        mark = isUnsettled ? 2 : 1;
        if (isUnsettled) {
            unsettled.push_back(sum);
            return true;
        }
        for (unsigned int& entry : unsettled)
            if (entry == sum) {
                entry = unsettled.back();
                unsettled.pop_back();
                return true;
            }
        return true;
    }
    void clear() {
        for (unsigned int sum : touched) {
            Record& record = records[sum];
            record.shift = 0;
            record.excess = 0;
            record.mark = 0;
        }
        touched.clear();
        unsettled.clear();
    }

private:
    struct alignas(64) Record {
        long long shift = 0;
        long long excess = 0;
        SumRoom room;
        // 0 untouched, 1 touched, 2 touched and unsettled.
        char mark = 0;
    };
    std::vector<Record> records;
    std::vector<unsigned int> touched;
    std::vector<unsigned int> unsettled;
};

// One thread's live view of the root sums: for each, which of its root
// bools would increase it if flipped now (In) and which would decrease it
// (Out). Kept current after every commit from the move's changed variables.
class AutonomousStructure : public DagListener {
public:
    AutonomousStructure(Dag& dag, const AutonomousFixedFields& fixedFields);
    ~AutonomousStructure() override;
    AutonomousStructure(const AutonomousStructure&) = delete;
    AutonomousStructure& operator=(const AutonomousStructure&) = delete;

    void notifyCommit() override;

    const AutonomousFixedFields& getFixedFields() const { return fixedFields; }
    const Bipartition& increasingBools(unsigned int sum) const { return increasing[sum]; }
    // The block of the boolean in each place of the sum's bipartition, in
    // the bipartition's order (RootSum::blocks lists them by position): a
    // boolean drawn from one part is one load away from its block.
    const unsigned int* blocksInOrder(unsigned int sum) const { return &orderedBlocks[firstOrdered[sum]]; }

    // The first objective not at the best value its node can take.
    bool getObjToBeImproved(const Dag& dag, unsigned int nbObjectives, unsigned int& objective) const;
    bool pickImprovingBoolean(const Dag& dag, Quickrand& rand, unsigned int& boolean) const;
    bool pickImprovingBooleanForObjective(const Dag& dag, Quickrand& rand, unsigned int objective,
                                          unsigned int& boolean) const;
    SumShifts& getShifts() { return shifts; }

    // How much further a shift of the sum would break its constraints than
    // its committed value does; 0 when it stays within them. A free sum is
    // never broken; a constrained sum without a known range is broken by
    // any shift.
    long long excess(unsigned int sum, long long shift) const {
        SumRoom room = shifts.room(sum);
        if (room.stale) room = roomOf(sum);
        long long out = 0;
        if (shift < room.low) {
            if (__builtin_sub_overflow(room.low, shift, &out)) out = MAX_EXCESS;
        } else if (shift > room.high) {
            if (__builtin_sub_overflow(shift, room.high, &out)) out = MAX_EXCESS;
        }
        return out > room.base ? out - room.base : 0;
    }

    // How much further than `shift` the sum may move up (or down) and stay
    // within its constraints; 0 when it may not.
    long long roomBeyond(unsigned int sum, long long shift, bool up) const {
        SumRoom room = shifts.room(sum);
        if (room.stale) room = roomOf(sum);
        long long out = 0;
        if (__builtin_sub_overflow(up ? room.high : shift, up ? shift : room.low, &out)) out = MAX_EXCESS;
        return out > 0 ? out : 0;
    }

    // A root bool of the sum at `entry` of v's root sums moving that sum the
    // other way from v; NO_NODE when the sum has none.
    unsigned int getOppositeBool(unsigned int variable, unsigned int entry, Quickrand& rand) const;

private:
    static constexpr long long MAX_EXCESS = 9223372036854775807LL;
    void setDirection(unsigned int sum, unsigned int position, long long value);
    SumRoom roomOf(unsigned int sum) const;

    Dag& dag;
    const AutonomousFixedFields& fixedFields;
    std::vector<Bipartition> increasing;
    LargeVector<unsigned int> orderedBlocks;
    std::vector<std::size_t> firstOrdered;
    SumShifts shifts;
};
