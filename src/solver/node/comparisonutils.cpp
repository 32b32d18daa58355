#include "solver/node/comparisonutils.h"

#include "solver/kernel/dag.h"
#include "solver/kernel/kernelconstants.h"
#include "solver/kernel/quickrand.h"

namespace {
bool askChild(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int node,
              unsigned int i, bool increase) {
    return findChildBoolean(dag, rand, boolean, dag.getFixedFields().child(node, i), increase);
}

long long distance(long long a, long long b) {
    long long d = WrapArith::sub(a, b);
    return d < 0 ? WrapArith::neg(d) : d;
}
}  // namespace

namespace ComparisonUtils {

bool increaseFirstOrDecreaseSecond(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                   unsigned int node) {
    if (rand.nextInt(2) == 0) return askChild(dag, rand, boolean, node, 0, true);
    return askChild(dag, rand, boolean, node, 1, false);
}

bool decreaseFirstOrIncreaseSecond(const Dag& dag, Quickrand& rand, unsigned int& boolean,
                                   unsigned int node) {
    if (rand.nextInt(2) == 0) return askChild(dag, rand, boolean, node, 0, false);
    return askChild(dag, rand, boolean, node, 1, true);
}

bool changeFirstOrSecond(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int node) {
    unsigned int i = rand.nextInt(2);
    bool decrease = rand.nextInt(2) == 1;
    return askChild(dag, rand, boolean, node, i, !decrease);
}

bool increaseDistance(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int node) {
    const DagFixedFields& fixed = dag.getFixedFields();
    long long a = dag.currentValue(fixed.child(node, 0)), b = dag.currentValue(fixed.child(node, 1));
    if (a > b) return increaseFirstOrDecreaseSecond(dag, rand, boolean, node);
    if (a < b) return decreaseFirstOrIncreaseSecond(dag, rand, boolean, node);
    return changeFirstOrSecond(dag, rand, boolean, node);
}

bool decreaseDistance(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int node) {
    const DagFixedFields& fixed = dag.getFixedFields();
    long long a = dag.currentValue(fixed.child(node, 0)), b = dag.currentValue(fixed.child(node, 1));
    if (a < b) return increaseFirstOrDecreaseSecond(dag, rand, boolean, node);
    // a > b, and a == b deliberately without a random direction.
    return decreaseFirstOrIncreaseSecond(dag, rand, boolean, node);
}

long long valueDistance(const Dag& dag, unsigned int node) {
    const DagFixedFields& fixed = dag.getFixedFields();
    return distance(dag.currentValue(fixed.child(node, 0)), dag.currentValue(fixed.child(node, 1)));
}

long long tvalueDistance(const Dag& dag, unsigned int node) {
    const DagFixedFields& fixed = dag.getFixedFields();
    return distance(dag.newValue(fixed.child(node, 0)), dag.newValue(fixed.child(node, 1)));
}

}  // namespace ComparisonUtils
