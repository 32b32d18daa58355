#include "solver/kernel/propagation.h"

#include "api/kernelexception.h"
#include "solver/kernel/dag.h"
#include "solver/kernel/daglistener.h"
#include "solver/kernel/kernelconstants.h"

#include <algorithm>
#include <functional>

namespace {
const char* const SOURCE = "src/solver/kernel/propagation";
const char* const VIOLATED = "One or more active constraints are violated.";
const char* const NOT_A_CONSTRAINT = "Incorrect operator type.";
}  // namespace

void Propagation::init(Dag& dag) {
    const DagFixedFields& fixed = dag.getFixedFields();
    constraintPositions = fixed.posInConstraintsData();
    initializeConstraints(dag);
    initializePriorities(dag);
    initializeImpacted(dag);
    initializeViolatedConstraintsCost(dag);
    setKeptScoresEnabled(dag, keptEnabled);
}

void Propagation::setKeptScoresEnabled(Dag& dag, bool enabled) {
    keptEnabled = enabled;
    const DagFixedFields& fixed = dag.getFixedFields();
    if (!enabled || fixed.keptScores().isEmpty()) {
        kept.reset();
        return;
    }
    if (!kept) kept = std::make_unique<KeptScores>(fixed.keptScores(), fixed.nbBooleans());
    kept->reset(dag);
    kept->setTargeting(dag, keptTargeting);
}

void Propagation::setKeptTargetingEnabled(Dag& dag, bool enabled) {
    keptTargeting = enabled;
    if (kept) kept->setTargeting(dag, enabled);
}

void Propagation::initializeConstraints(Dag& dag) {
    const DagFixedFields& fixed = dag.getFixedFields();
    unsigned int n = fixed.nbConstraints();
    activeConstraints.init(n);
    violatedConstraints.init(n);
    evalViolatedConstraints.init(n);
    violationWeights.assign(n, 1);
    tWeightedChange = 0;
    for (unsigned int k = 0; k < n; ++k)
        if (dag.currentValue(fixed.constraints()[k]) == 0) violatedConstraints.setIn(k);
}

void Propagation::initializePriorities(Dag& dag) {
    const DagFixedFields& fixed = dag.getFixedFields();
    priorities.resize(fixed.nbNodes(), 3);
    for (unsigned int level = fixed.nbRanks(); level-- > 0;) {
        const unsigned int* nodes = fixed.nodesOfRank(level);
        for (unsigned int k = 0; k < fixed.nbNodesOfRank(level); ++k) {
            unsigned int node = nodes[k];
            if (fixed.posInConstraints(node) != KernelConstants::NO_NODE) priorities[node] = 1;
            NodeType type = fixed.type(node);
            if (priorities[node] == 3 || type == Boolean || type == Integer || type == Constant)
                continue;
            for (unsigned int i = 0; i < fixed.nbChilds(node); ++i) {
                unsigned int child = fixed.child(node, i);
                if (priorities[child] != 1) priorities[child] = 2;
            }
        }
    }
    slots.resize(fixed.nbNodes());
    for (unsigned int node = 0; node < fixed.nbNodes(); ++node) slots[node] = fixed.rank(node) * 4 + priorities[node];
}

void Propagation::initializeImpacted(Dag& dag) {
    const DagFixedFields& fixed = dag.getFixedFields();
    impacted.assign(static_cast<std::size_t>(fixed.nbRanks()) * 4, {});
    for (unsigned int level = 0; level < fixed.nbRanks(); ++level)
        for (unsigned int k = 1; k <= 3; ++k) impacted[level * 4 + k].reserve(fixed.nbNodesOfRank(level));
    queue.clear();
    queue.reserve(fixed.nbNodes());
    modifiedVariables.clear();
    modifiedVariables.reserve(fixed.nbVariables());
    queueHead = 0;
    levelFlags.assign(fixed.nbRanks(), 0);
    touchedLevels.clear();
    touchedLevels.reserve(fixed.nbRanks());
    for (std::vector<unsigned int>& heap : pendingLevels) {
        heap.clear();
        heap.reserve(fixed.nbRanks());
    }
}

void Propagation::initializeViolatedConstraintsCost(Dag& dag) {
    const DagFixedFields& fixed = dag.getFixedFields();
    violatedConstraintsCost = 0;
    for (unsigned int node : fixed.constraints())
        violatedConstraintsCost += dag.getNode(node)->initialViolatedConstraintCost(dag, node);
    tViolatedConstraintsCost = violatedConstraintsCost;
    tWeightedChange = 0;
    if (violatedConstraintsCost != 0)
        activeConstraints.clearIn();
    else
        activateAllConstraints();
    nbViolatedConstraints = tNbViolatedConstraints = violatedConstraints.sizeIn();
}

void Propagation::schedule(unsigned int node) {
    unsigned int slot = slots[node];
    if ((slot & 3) == 0) {
        queue.push_back(node);
        return;
    }
    impacted[slot].push_back(node);
    unsigned int level = slot >> 2;
    unsigned char flags = levelFlags[level];
    if (flags == 0) touchedLevels.push_back(level);
    unsigned int pass = (slot & 3) == 3 ? 1 : 0;
    unsigned char pending = static_cast<unsigned char>(PENDING_FIRST_PASS << pass);
    if ((flags & pending) == 0) {
        pendingLevels[pass].push_back(level);
        std::push_heap(pendingLevels[pass].begin(), pendingLevels[pass].end(), std::greater<unsigned int>());
    }
    levelFlags[level] = static_cast<unsigned char>(flags | TOUCHED | pending);
}

unsigned int Propagation::popLowestLevel(unsigned int pass) {
    std::vector<unsigned int>& heap = pendingLevels[pass];
    std::pop_heap(heap.begin(), heap.end(), std::greater<unsigned int>());
    unsigned int level = heap.back();
    heap.pop_back();
    return level;
}

void Propagation::prefetchFlip(const Dag& dag, unsigned int node, unsigned int stage) const {
    if (stage == 0) {
        dag.prefetch(node);
        dag.getFixedFields().prefetchVariableIndex(node);
        dag.getFixedFields().prefetchType(node);
    } else if (kept) {
        kept->prefetch(dag.getFixedFields().variableIndex(node), stage - 1);
    }
}

void Propagation::modifyVariable(Dag& dag, unsigned int node, long long value) {
    if (value == dag.currentValue(node) || dag.isModified(node)) return;
    modifyUnmodifiedVariable(dag, node, value);
}

void Propagation::modifyUnmodifiedVariable(Dag& dag, unsigned int node, long long value) {
    dag.setNewValue(node, value);
    dag.setModified(node);
    modifiedVariables.push_back(node);
}

void Propagation::unmodifyLastVariable(Dag& dag) {
    const unsigned int node = modifiedVariables.back();
    modifiedVariables.pop_back();
    dag.setNewValue(node, dag.currentValue(node));
    dag.clearModified(node);
}

// The variables enter the graph's lists only when the graph evaluates the
// move: a move judged from the kept scores and refused never does.
void Propagation::scheduleVariables() {
    if (variablesScheduled) return;
    variablesScheduled = true;
    for (unsigned int node : modifiedVariables) schedule(node);
}

void Propagation::notifyImpactedNodes(Dag& dag, unsigned int node) {
    if (dag.isModified(node)) return;
    dag.setModified(node);
    schedule(node);
}

bool Propagation::evalOne(Dag& dag, unsigned int node) {
    ++nbEvaluatedNodes;
    dag.getNode(node)->eval(dag, *this, node);
    unsigned int position = constraintPositions[node];
    if (position == KernelConstants::NO_NODE) return true;
    if (activeConstraints.isIn(position)) return dag.newValue(node) != 0;
    costInactiveConstraint(dag, node, position);
    return true;
}

void Propagation::costInactiveConstraint(Dag& dag, unsigned int node, unsigned int position) {
    addCostChange(position, dag.getNode(node)->evalViolatedConstraintCost(dag, node));
    if (dag.newValue(node) == 1)
        evalViolatedConstraints.setOut(position);
    else
        evalViolatedConstraints.setIn(position);
}

bool Propagation::drainQueue(Dag& dag) {
    while (queueHead < queue.size())
        if (!evalOne(dag, queue[queueHead++])) return false;
    return true;
}

bool Propagation::evalNode(Dag& dag, unsigned int node) {
    return evalOne(dag, node) && (queueHead == queue.size() || drainQueue(dag));
}

// Only the levels holding scheduled nodes are visited, lowest first: an
// evaluated node schedules its parents on higher levels only, so a level
// popped from its heap is complete. A move thus costs the nodes it touches,
// however deep the graph.
bool Propagation::eval(Dag& dag) {
    if (kept && kept->covers(dag, modifiedVariables)) {
        keptEvaluated = true;
        ++nbKeptEvaluations;
        return kept->eval(dag, *this, modifiedVariables);
    }
    // A node that cannot be evaluated (a division by zero, the square root
    // of a negative number) refuses the move like a broken constraint: the
    // caller rolls back, and the search goes on.
    scheduleVariables();
    try {
        return evalScheduled(dag);
    } catch (const KernelException&) {
        ++nbArithmeticRefusals;
        return false;
    }
}

void Propagation::prefetchEval(const Dag& dag, unsigned int node) {
    dag.prefetchNodeObject(node);
    dag.getFixedFields().prefetchLinks(node);
}

bool Propagation::evalScheduled(Dag& dag) {
    while (!pendingLevels[0].empty()) {
        unsigned int level = popLowestLevel(0);
        for (unsigned int k = 1; k <= 2; ++k) {
            std::vector<unsigned int>& list = impacted[level * 4 + k];
            // The list may grow through the queue: walk it by index.
            for (std::size_t i = 0; i < list.size(); ++i) {
                if (i + EVAL_AHEAD < list.size()) prefetchEval(dag, list[i + EVAL_AHEAD]);
                if (!evalNode(dag, list[i])) return false;
            }
        }
    }
    while (!pendingLevels[1].empty()) {
        std::vector<unsigned int>& list = impacted[popLowestLevel(1) * 4 + 3];
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (i + EVAL_AHEAD < list.size()) prefetchEval(dag, list[i + EVAL_AHEAD]);
            if (!evalNode(dag, list[i])) return false;
        }
    }
    if (!drainQueue(dag)) return false;
    tNbViolatedConstraints = violatedConstraints.sizeIn();
    return true;
}

// Levels are committed in reverse order of first scheduling, which puts
// high levels first; a node's commit reads only its own state and its
// children's new values, so the exact order does not matter.
void Propagation::commit(Dag& dag) {
    if (keptEvaluated && kept->commit(dag, modifiedVariables)) {
        // Every node the move changes is in the kept structure: committed
        // there, term by term, without scheduling anything.
        keptEvaluated = false;
        satisfiedByLastCommit.clear();
        kept->commitGraph(dag, *this, modifiedVariables);
        notifyCommitListeners();
        endMove();
        endCommit();
        return;
    }
    if (keptEvaluated) {
        // The graph catches up: from the move's start, as if never evaluated.
        keptEvaluated = false;
        kept->clearRoots(dag);
        tViolatedConstraintsCost = violatedConstraintsCost;
        tWeightedChange = 0;
        evalViolatedConstraints.clearIn();
        scheduleVariables();
        evalScheduled(dag);
    }
    const bool keptFollowed = !kept || kept->commit(dag, modifiedVariables);
    satisfiedByLastCommit.clear();
    auto commitNode = [&](unsigned int node) {
        commitConstraint(dag, node);
        dag.clearModified(node);
        dag.getNode(node)->commit(dag, node);
    };
    for (std::size_t t = touchedLevels.size(); t-- > 0;) {
        for (unsigned int k = 1; k <= 3; ++k) {
            std::vector<unsigned int>& list = impacted[touchedLevels[t] * 4 + k];
            for (unsigned int node : list) commitNode(node);
            list.clear();
        }
    }
    for (unsigned int node : queue) commitNode(node);
    if (!keptFollowed) kept->reset(dag);
    notifyCommitListeners();
    endMove();
    endCommit();
}

void Propagation::endCommit() {
    if (tViolatedConstraintsCost == 0 && activeConstraints.sizeOut() != 0) activateAllConstraints();
    violatedConstraintsCost = tViolatedConstraintsCost;
    nbViolatedConstraints = tNbViolatedConstraints;
    tWeightedChange = 0;
}

void Propagation::desactivateAllConstraints() {
    activeConstraints.clearIn();
    std::fill(violationWeights.begin(), violationWeights.end(), 1);
}

void Propagation::raiseViolatedWeights() {
    for (unsigned int i = 0; i < violatedConstraints.sizeIn(); ++i) {
        long long& weight = violationWeights[violatedConstraints[i]];
        if (weight < MAX_VIOLATION_WEIGHT) ++weight;
    }
}

void Propagation::rollback(Dag& dag) {
    if (keptEvaluated) {
        keptEvaluated = false;
        kept->clearRoots(dag);
    }
    if (!variablesScheduled) {
        // Variables hold nothing but their value (as modifyVariable wrote
        // it): restored in place, without reaching for the node's object.
        for (unsigned int node : modifiedVariables) {
            dag.clearModified(node);
            dag.setNewValue(node, dag.currentValue(node));
        }
        modifiedVariables.clear();
        evalViolatedConstraints.clearIn();
        tViolatedConstraintsCost = violatedConstraintsCost;
        tWeightedChange = 0;
        tNbViolatedConstraints = nbViolatedConstraints;
        return;
    }
    auto rollbackNode = [&](unsigned int node) {
        dag.clearModified(node);
        dag.getNode(node)->rollback(dag, node);
    };
    for (unsigned int level : touchedLevels) {
        for (unsigned int k = 1; k <= 3; ++k) {
            std::vector<unsigned int>& list = impacted[level * 4 + k];
            for (unsigned int node : list) rollbackNode(node);
            list.clear();
        }
    }
    for (unsigned int node : queue) rollbackNode(node);
    endMove();
    tViolatedConstraintsCost = violatedConstraintsCost;
    tWeightedChange = 0;
    tNbViolatedConstraints = nbViolatedConstraints;
}

void Propagation::endMove() {
    variablesScheduled = false;
    modifiedVariables.clear();
    evalViolatedConstraints.clearIn();
    queue.clear();
    queueHead = 0;
    for (unsigned int level : touchedLevels) levelFlags[level] = 0;
    touchedLevels.clear();
    pendingLevels[0].clear();
    pendingLevels[1].clear();
}

void Propagation::setConstraintPriority(Dag&, unsigned int node) {
    priorities[node] = 1;
    slots[node] = (slots[node] & ~3u) | 1u;
}

void Propagation::disconnectListener(DagListener* listener) {
    listeners.erase(std::find(listeners.begin(), listeners.end(), listener));
}

void Propagation::notifyCommitListeners() {
    for (DagListener* listener : listeners) listener->notifyCommit();
}

void Propagation::activateConstraint(Dag& dag, unsigned int node) {
    unsigned int position = dag.getFixedFields().posInConstraints(node);
    if (position == KernelConstants::NO_NODE)
        throw KernelException(NOT_A_CONSTRAINT,
                              QXWhere::contractLine(SOURCE, 180, "activateConstraint"));
    if (dag.currentValue(node) == 0)
        throw KernelException(VIOLATED, QXWhere::contractLine(SOURCE, 181, "activateConstraint"));
    activeConstraints.setIn(position);
}

void Propagation::desactivateConstraint(Dag& dag, unsigned int node) {
    unsigned int position = dag.getFixedFields().posInConstraints(node);
    if (position == KernelConstants::NO_NODE)
        throw KernelException(NOT_A_CONSTRAINT,
                              QXWhere::contractLine(SOURCE, 186, "desactivateConstraint"));
    activeConstraints.setOut(position);
}

void Propagation::activateAllConstraints() {
    if (violatedConstraints.sizeIn() != 0)
        throw KernelException(VIOLATED,
                              QXWhere::contractLine(SOURCE, 191, "activateAllConstraints"));
    activeConstraints.clearOut();
}

void Propagation::activateAllSatisfiedConstraints(Dag& dag) {
    const std::vector<unsigned int>& constraints = dag.getFixedFields().constraints();
    for (unsigned int p = activeConstraints.sizeIn(); p < activeConstraints.size(); ++p) {
        unsigned int node = constraints[activeConstraints[p]];
        if (dag.currentValue(node) == 1) activateConstraint(dag, node);
    }
}

bool Propagation::isConstraintActive(const Dag& dag, unsigned int node) const {
    unsigned int position = dag.getFixedFields().posInConstraints(node);
    return position != KernelConstants::NO_NODE && activeConstraints.isIn(position);
}

void Propagation::extractActiveConstraints(std::vector<unsigned int>& out) const {
    out.resize(activeConstraints.sizeIn());
    for (unsigned int i = 0; i < activeConstraints.sizeIn(); ++i) out[i] = activeConstraints[i];
}

void Propagation::evalConstraint(Dag& dag, unsigned int node) {
    unsigned int position = dag.getFixedFields().posInConstraints(node);
    if (position == KernelConstants::NO_NODE || activeConstraints.isIn(position)) return;
    costInactiveConstraint(dag, node, position);
}

void Propagation::commitConstraint(Dag& dag, unsigned int node) {
    unsigned int position = constraintPositions[node];
    if (position == KernelConstants::NO_NODE || activeConstraints.isIn(position)) return;
    if (dag.newValue(node) != 0) {
        if (violatedConstraints.isIn(position)) satisfiedByLastCommit.push_back(node);
        violatedConstraints.setOut(position);
    } else {
        violatedConstraints.setIn(position);
    }
}

void Propagation::check(const Dag& dag) const {
    const std::vector<unsigned int>& constraints = dag.getFixedFields().constraints();
    for (unsigned int i = 0; i < violatedConstraints.sizeIn(); ++i) {
        unsigned int k = violatedConstraints[i];
        if (activeConstraints.isIn(k) || dag.currentValue(constraints[k]) == 1)
            throw KernelException("Propagation is in an incoherent state.",
                                  QXWhere::contractLine(SOURCE, 217, "check"));
    }
    for (unsigned int k = 0; k < constraints.size(); ++k)
        if (activeConstraints.isIn(k) && dag.currentValue(constraints[k]) == 0)
            throw KernelException(VIOLATED, QXWhere::contractLine(SOURCE, 224, "check"));
}
