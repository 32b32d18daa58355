#include "solver/kernel/mathoverflow.h"

#include <limits>

namespace {
constexpr long long MAX = std::numeric_limits<long long>::max();
constexpr long long MIN = std::numeric_limits<long long>::min();
}  // namespace

namespace MathOverflow {

long long sum(long long a, long long b) {
    if (a < 0 && b < 0 && a < MIN - b) return MIN;
    if (a > 0 && b > 0 && a > MAX - b) return MAX;
    return a + b;
}

long long opposite(long long a) { return a == MIN ? MAX : -a; }

long long abs(long long a) { return a < 0 ? opposite(a) : a; }

unsigned int logBit(long long a) {
    unsigned long long m = static_cast<unsigned long long>(abs(a));
    return m == 0 ? 0 : 64 - static_cast<unsigned int>(__builtin_clzll(m));
}

long long product(long long a, long long b) {
    if (logBit(a) + logBit(b) < 63) return a * b;
    return ((a > 0 && b > 0) || (a < 0 && b < 0)) ? MAX : MIN;
}

long long productAndDivide(long long a, long long b, long long d) {
    long long p = product(a, b);
    if (d == -1) return opposite(p);
    return p / d;
}

}  // namespace MathOverflow

namespace {
// A range end times another: product() saturates 0 x (63-bit value) to the
// minimum, which would lose the 0 that such a range does contain.
long long endProduct(long long a, long long b) {
    return a == 0 || b == 0 ? 0 : MathOverflow::product(a, b);
}
}  // namespace

namespace MathOverflow {

void scaleRange(long long factor, long long low, long long high, long long& min, long long& max) {
    if (factor == 0) {
        min = max = 0;
        return;
    }
    long long a = endProduct(factor, low), b = endProduct(factor, high);
    min = factor > 0 ? a : b;
    max = factor > 0 ? b : a;
}

void multiplyRanges(long long lowX, long long highX, long long lowY, long long highY,
                    long long& min, long long& max) {
    long long corners[4] = {endProduct(lowX, lowY), endProduct(lowX, highY), endProduct(highX, lowY),
                            endProduct(highX, highY)};
    min = max = corners[0];
    for (long long c : corners) {
        if (c < min) min = c;
        if (c > max) max = c;
    }
}

}  // namespace MathOverflow

namespace MathOverflow {

void absRange(long long low, long long high, long long& min, long long& max) {
    if (low >= 0) {
        min = low;
        max = high;
    } else if (high <= 0) {
        min = opposite(high);
        max = opposite(low);
    } else {
        min = 0;
        max = high > opposite(low) ? high : opposite(low);
    }
    if (low == MIN) min = MIN;
}

// The exact difference of the extremes can need 65 bits: compute it wide
// and clamp.
void differenceRange(long long lowX, long long highX, long long lowY, long long highY,
                     long long& min, long long& max) {
    auto clamp = [](__int128 v) {
        return v > MAX ? MAX : v < MIN ? MIN : static_cast<long long>(v);
    };
    min = clamp(static_cast<__int128>(lowX) - highY);
    max = clamp(static_cast<__int128>(highX) - lowY);
}

}  // namespace MathOverflow
