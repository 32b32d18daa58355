#pragma once

#include "solver/kernel/move.h"
#include "solver/move/autonomousfixedfields.h"

class SumShifts;

// Compound moves across gates (GateLinks): a gate changes together with
// what it gates, so that every link stays whole.
// - Close: a gate goes to 0 and each boolean it held leaves it; where that
//   leaves a constrained sum short (the one-of-many row of an assignment),
//   another boolean of the sum takes its place, the one that breaks the
//   fewest constraints and then gains the most on the objective sums,
//   among those whose gates stay open.
// - Open: a gate goes to 1 and takes over every boolean it gates whose
//   assignment it serves better (less broken, or a better objective) than
//   the one held now.
// When the gate's own flip breaks a sum of gates (exactly p open sites),
// another gate of that sum does the opposite with its own close or open:
// the gate moves. One gate per application: k is 1.
class MoveKGate : public MoveK {
public:
    enum Kind { Close, Open };

    MoveKGate(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, Kind kind, unsigned int utilRate,
              unsigned int targeting);

    // False when no gate in the wanted state was found, or nothing useful
    // could be built.
    bool modify() override;
    static bool isValid(const AutonomousFixedFields& fixed) { return fixed.getGates().size() >= 2; }

private:
    // A gate whose move value is `open`, NO_NODE after a few vain draws.
    unsigned int drawGate(bool open);
    // Sets a boolean for the move and records its shifts; false when it is
    // already changed in the move.
    bool set(unsigned int boolean, long long value);
    // Sets to 0 what the gate holds and re-places it; false when some sum
    // is left short or broken.
    bool empty(unsigned int gate);
    // Number of booleans taken over.
    unsigned int takeOver(unsigned int gate);
    // The gate's own sums that its flip leaves broken get a gate that flips
    // the other way; false when one finds none. Those gates are listed in
    // `partners`.
    bool balanceGate(unsigned int gate);
    // Puts another boolean in the sums that `boolean`, just set to 0, left
    // short; false when none fits without breaking a constraint.
    bool replace(unsigned int boolean);
    // How much further the sum of `entry` gets from its constraints when
    // shifted by `delta` now, negative when it gets nearer.
    long long excessChange(const RootBool::Entry& entry, long long delta) const;
    // The room that a shift by `delta` leaves under the capacity of the
    // sum of `entry` (its gate's, or the constant its range ends at); 0 for
    // a sum without one.
    long long roomLeft(const RootBool::Entry& entry, long long delta) const;
    // What the boolean's flip from 0 to 1 gains on the objective sums.
    long long gainOf(const RootBool& rootBool) const;
    // Whether the gate is open in the move.
    bool isOpen(unsigned int gate) const;
    bool gatesOpen(unsigned int booleanRank) const;
    // Every constraint is hard: a move that breaks one would be refused.
    bool isFeasible() const;
    const RootBool& rootBoolOf(unsigned int boolean) const;

    Kind kind;
    const AutonomousFixedFields& fixedFields;
    const GateLinks& gates;
    SumShifts& shifts;
    // Gates flipped to balance the first one's sums.
    std::vector<unsigned int> partners;
    // The group gate the move empties or fills, NO_NODE if none.
    unsigned int closedGroup = 0, openedGroup = 0;
};
