#include "solver/kernel/move.h"

#include "api/kernelexception.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/quickrand.h"

Move::Move(Dag& dag, Quickrand& quickrand, std::string name, unsigned int utilRate)
    : name(std::move(name)), dag(dag), quickrand(quickrand), utilRate(utilRate) {}

std::string Move::prefixName(unsigned int k, const char* kind) { return std::to_string(k) + "-" + kind; }

bool Move::eval() { return dag.getPropagation().eval(dag); }

void Move::update(MoveExitCode code) {
    ++nbAttempted;
    Propagation& propagation = dag.getPropagation();
    switch (code) {
        case MoveRejected: ++nbRejected; break;
        case MoveInfeasible: ++nbInfeasibles; break;
        case MoveImproved: ++nbImprovements; /* and accepted */ ++nbAccepted; break;
        case MoveAccepted: ++nbAccepted; break;
        default: return;  // counted as attempted only
    }
    if (code == MoveAccepted || code == MoveImproved) propagation.commit(dag);
    else propagation.rollback(dag);
}

void Move::clearStats() { nbAttempted = nbAccepted = nbRejected = nbImprovements = nbInfeasibles = 0; }

void Move::printStats(std::ostream& out) const {
    out << name << ": attempted " << nbAttempted << ", accepted " << nbAccepted << ", improved " << nbImprovements
        << ", infeasible " << nbInfeasibles << ", rate " << utilRate << std::endl;
}

float Move::getAcceptedRatio() const {
    return nbAttempted == 0 ? 1.0f : static_cast<float>(nbAccepted) / static_cast<float>(nbAttempted);
}

float Move::getImprovementRatio() const {
    return nbAttempted == 0 ? 1.0f : static_cast<float>(nbImprovements) / static_cast<float>(nbAttempted);
}

void Move::flip(unsigned int variable) {
    dag.getPropagation().modifyVariable(dag, variable, 1 - static_cast<long long>(dag.currentValue(variable)));
}

void Move::flipFrom(unsigned int variable, long long value) {
    dag.getPropagation().modifyUnmodifiedVariable(dag, variable, 1 - value);
}

MoveK::MoveK(Dag& dag, Quickrand& quickrand, AutonomousStructure& structure, unsigned int k, const char* kind,
             unsigned int utilRate, unsigned int targeting)
    : Move(dag, quickrand, prefixName(k, kind), utilRate), k(k), targeting(targeting), structure(structure) {
    if (targeting > 100)
        throw KernelException("src/solver/kernel/move", __LINE__, "MoveK", "Bad argument value.");
    picked.reserve(k);
}

bool MoveK::decideToTarget() { return targeting != 0 && quickrand.nextInt(100) < targeting; }

void MoveK::pickOtherNodesToFlip(bool oneLess, unsigned int n) {
    unsigned int count = oneLess ? k - 1 : k;
    if (count == 0) {
        picked.clear();
        return;
    }
    picked.resize(count);
    quickrand.nextKInt(n, count, picked);
}
