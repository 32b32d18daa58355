#pragma once

class Dag;
class Quickrand;

// Search helpers shared by the two-child operators: they ask the first (a)
// or second (b) child of `node` for a boolean, on committed values.
namespace ComparisonUtils {
// Random choice between raising a and lowering b.
bool increaseFirstOrDecreaseSecond(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int node);
bool decreaseFirstOrIncreaseSecond(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int node);
// A random child in a random direction.
bool changeFirstOrSecond(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int node);
bool increaseDistance(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int node);
bool decreaseDistance(const Dag& dag, Quickrand& rand, unsigned int& boolean, unsigned int node);
// |a - b| on committed (valueDistance) or new (tvalueDistance) values.
long long valueDistance(const Dag& dag, unsigned int node);
long long tvalueDistance(const Dag& dag, unsigned int node);
}  // namespace ComparisonUtils
