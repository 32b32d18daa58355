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
// - Swap: one gate closes and another opens at once, the first's contents
//   re-placed (the second among the choices), the second taking over:
//   a site moves where no sum of gates ties the two.
// When a gate's own flip breaks a sum of gates (exactly p open sites),
// another gate of that sum does the opposite with its own close or open:
// the gate moves. k is 1.
class MoveKGate : public MoveK {
public:
    enum Kind { Close, Open, Swap };

    MoveKGate(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, Kind kind, unsigned int utilRate,
              unsigned int targeting);

    // False when no gate in the wanted state was found, or nothing useful
    // could be built.
    bool modify() override;
    static bool isValid(const AutonomousFixedFields& fixed) { return fixed.getGates().size() >= 2; }
    // Swaps only where no constrained sum ties gates together: where one
    // does (exactly p sites open), closes and opens already move a gate,
    // and swaps measured worse.
    static bool isValidSwap(const AutonomousFixedFields& fixed);

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
    // Draws the move's gates and flips them with those that balance them;
    // false when a gate is missing.
    bool flipGates();
    // Empties the closed gates and lets the opened ones take over; false
    // when that is useless or, while feasible, not whole.
    bool moveContents();
    // The gate's own sums that its flip leaves broken get a gate that flips
    // the other way, added to `flipped`; false when one finds none.
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
    RootBool rootBoolOf(unsigned int boolean) const;

    Kind kind;
    const AutonomousFixedFields& fixedFields;
    const GateLinks& gates;
    SumShifts& shifts;
    // The gates (with a boolean) that the move flips.
    std::vector<unsigned int> flipped;
    // The group gate the move empties or fills, NO_NODE if none.
    unsigned int closedGroup = 0, openedGroup = 0;
};
