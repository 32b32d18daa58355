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
// Node values wrap around in 64 bits: a range is exact when all of it fits,
// otherwise a wrapped value can be anything and only the whole 64-bit range
// contains it.
void fitRange(__int128 low, __int128 high, long long& min, long long& max) {
    if (low < MIN || high > MAX) {
        min = MIN;
        max = MAX;
    } else {
        min = static_cast<long long>(low);
        max = static_cast<long long>(high);
    }
}
}  // namespace

namespace MathOverflow {

void scaleRange(long long factor, long long low, long long high, long long& min, long long& max) {
    multiplyRanges(factor, factor, low, high, min, max);
}

void multiplyRanges(long long lowX, long long highX, long long lowY, long long highY,
                    long long& min, long long& max) {
    const __int128 corners[4] = {static_cast<__int128>(lowX) * lowY, static_cast<__int128>(lowX) * highY,
                                 static_cast<__int128>(highX) * lowY, static_cast<__int128>(highX) * highY};
    __int128 low = corners[0], high = corners[0];
    for (__int128 c : corners) {
        if (c < low) low = c;
        if (c > high) high = c;
    }
    fitRange(low, high, min, max);
}

void addRanges(long long lowX, long long highX, long long lowY, long long highY, long long& min,
               long long& max) {
    fitRange(static_cast<__int128>(lowX) + lowY, static_cast<__int128>(highX) + highY, min, max);
}

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

void differenceRange(long long lowX, long long highX, long long lowY, long long highY,
                     long long& min, long long& max) {
    fitRange(static_cast<__int128>(lowX) - highY, static_cast<__int128>(highX) - lowY, min, max);
}

}  // namespace MathOverflow
