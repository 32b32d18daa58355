#pragma once

#include "solver/kernel/move.h"
#include "solver/move/autonomousfixedfields.h"

// Mirrors a block of a sequence (the interchangeable columns of an
// assignment, in the model's order): in car sequencing a stretch of the
// line run backwards, whose windows inside keep their counts while only
// those at its ends change. That rearranges tens of columns at once, where
// exchanges alone leave the last few overloads in place. Each end of the
// block is, with the targeting probability, the column of an improving
// boolean, else random. One block per application: k is 1.
class MoveKReversal : public MoveK {
public:
    MoveKReversal(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int utilRate,
                  unsigned int targeting);

    // False when the block's mirror changes nothing.
    bool modify() override;
    // Some sequence exists.
    static bool isValid(const AutonomousFixedFields& fixed) { return !fixed.getSequences().empty(); }

private:
    // The column of an improving boolean, in `sequence` unless that is
    // NO_NODE; false when not targeting or none is found.
    bool targetColumn(unsigned int& sequence, unsigned int& place);
    // Exchanges the contents of two columns; false when they hold the same.
    bool exchangeColumns(const SumSequence& sequence, unsigned int a, unsigned int b);
    RootBool rootBoolOf(unsigned int boolean) const;

    const AutonomousFixedFields& fixedFields;
};
