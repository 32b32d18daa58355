#pragma once

#include "solver/kernel/move.h"
#include "solver/move/autonomousfixedfields.h"

#include <vector>


// Moves of whole jobs along the line of IntervalRows (a time-indexed
// schedule) that keep a feasible schedule feasible: the jobs between the
// two that move shift together by the same amount into the room the two
// leave (idle places among them move with them), and nothing outside the
// span of the two changes.
// - Insert: a job leaves its place and goes just past another (later or
//   earlier); the jobs between, that other included, close the gap it
//   left.
// - Swap: two jobs exchange places; the jobs between shift by the
//   difference of their lengths.
// The first job is drawn at random or, targeted, as the costliest of a few
// draws; the other at random, or half of the time as the job at a place
// drawn within three mean lengths of the first's start. Only jobs placed
// once are moved, and a move
// whose run of jobs overlaps, or leaves a job without a boolean at its
// new start, is not built. k is 1.
class MoveKInterval : public MoveK {
public:
    enum Kind { Insert, Swap };

    MoveKInterval(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, Kind kind, unsigned int utilRate,
                  unsigned int targeting);

    bool modify() override;
    static bool isValid(const AutonomousFixedFields& fixed) { return !fixed.getIntervals().empty(); }

private:
    struct Placed {
        unsigned int row;
        unsigned int boolean;
        unsigned int start;
    };
    // The row's boolean at 1 when it is the only one, NONE otherwise.
    unsigned int placedBoolean(unsigned int row) const;
    bool drawJob(Placed& job, unsigned int other);
    // A job placed once covering a place drawn near `other`'s start.
    bool drawNear(Placed& job, const Placed& other);
    // The jobs covering [from, to) in order into `run`; false when two
    // overlap or one reaches out of the span.
    bool collect(unsigned int from, unsigned int to);
    // Sets the job at its new start; false when its row has no boolean
    // there.
    bool place(const Placed& job, long long start);
    // What the boolean costs on the objective sums while at 1.
    long long costOf(unsigned int boolean) const;

    Kind kind;
    const AutonomousFixedFields& fixedFields;
    const IntervalRows& rows;
    std::vector<Placed> run;
};
