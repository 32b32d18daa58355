#include "solver/node/nodeif.h"

#include <algorithm>

void NodeIf::computeBounds(const TemporaryDagFixedFields& t, unsigned int node, long long& min,
                           long long& max) {
    unsigned int cond = t.nodeChild(node, 0), then = t.nodeChild(node, 1), other = t.nodeChild(node, 2);
    bool canBeZero = t.min(cond) <= 0 && t.max(cond) >= 0;
    bool canBeNonZero = t.min(cond) != 0 || t.max(cond) != 0;
    if (!canBeZero) {
        min = t.min(then);
        max = t.max(then);
    } else if (!canBeNonZero) {
        min = t.min(other);
        max = t.max(other);
    } else {
        min = std::min(t.min(then), t.min(other));
        max = std::max(t.max(then), t.max(other));
    }
}
