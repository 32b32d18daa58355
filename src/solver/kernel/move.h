#pragma once

#include <ostream>
#include <string>
#include <vector>

class AutonomousStructure;
class Dag;
class Quickrand;

// Verdict of one attempted move.
enum MoveExitCode { MoveRejected = 0, MoveInfeasible = 1, MoveAccepted = 2, MoveImproved = 3 };

// One kind of change the search tries: modify() flips some booleans of the
// thread's Dag, the heuristic evaluates and judges, update() counts the
// verdict and commits or rolls back.
class Move {
public:
    Move(Dag& dag, Quickrand& quickrand, std::string name, unsigned int utilRate);
    virtual ~Move() = default;
    Move(const Move&) = delete;
    Move& operator=(const Move&) = delete;

    // False when no valid change could be built.
    virtual bool modify() = 0;
    virtual bool eval();
    virtual void update(MoveExitCode code);
    virtual void clearStats();
    virtual void printStats(std::ostream& out) const;

    // "k-Kind", the name every move kind is known by.
    static std::string prefixName(unsigned int k, const char* kind);

    const std::string& getName() const { return name; }
    unsigned int getUtilRate() const { return utilRate; }
    void setUtilRate(unsigned int rate) { utilRate = rate; }
    unsigned int getNbAttempted() const { return nbAttempted; }
    unsigned int getNbAccepted() const { return nbAccepted; }
    unsigned int getNbRejected() const { return nbRejected; }
    unsigned int getNbImprovements() const { return nbImprovements; }
    unsigned int getNbInfeasibles() const { return nbInfeasibles; }
    float getAcceptedRatio() const;
    float getImprovementRatio() const;

protected:
    // Sets the boolean to the other value in the current move.
    void flip(unsigned int variable);
    // The same for a boolean this move has not modified and whose
    // committed value the caller knows: nothing is read from the graph.
    void flipFrom(unsigned int variable, long long value);

    std::string name;
    Dag& dag;
    Quickrand& quickrand;
    unsigned int utilRate;
    unsigned int nbAttempted = 0;
    unsigned int nbAccepted = 0;
    unsigned int nbRejected = 0;
    unsigned int nbImprovements = 0;
    unsigned int nbInfeasibles = 0;
};

// Moves of a size k over the thread's sum structure, optionally starting
// from a boolean that the objective asks for (targeting, in percent).
class MoveK : public Move {
public:
    MoveK(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int k, const char* kind,
          unsigned int utilRate, unsigned int targeting);

    unsigned int getK() const { return k; }
    unsigned int getTargeting() const { return targeting; }
    // For the paired moves: a pair that shares a boolean with a pair drawn
    // before it in the same move is left out whole, rather than flipped by
    // half (the second flip of a boolean is ignored), which would move the
    // sum the pair should keep.
    void setWholePairs(bool on) { wholePairs = on; }

protected:
    bool decideToTarget();
    // k (or k - 1) distinct indexes below n into `picked`.
    void pickOtherNodesToFlip(bool oneLess, unsigned int n);

    unsigned int k;
    std::vector<unsigned int> picked;
    unsigned int targeting;
    AutonomousStructure& structure;
    bool wholePairs = false;
};
