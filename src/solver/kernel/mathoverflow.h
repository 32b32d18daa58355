#pragma once

// Saturating 64-bit arithmetic for the bounds computed at build time:
// results that do not fit are clamped to the 64-bit limits, never wrapped.
namespace MathOverflow {
long long sum(long long a, long long b);
long long opposite(long long a);
long long abs(long long a);
// Conservative: saturates as soon as the operands' significant bits add up
// to 63 or more, even when the exact product would fit.
long long product(long long a, long long b);
// Number of significant bits of |a| (|min| taken as max; 0 for 0).
unsigned int logBit(long long a);
// a * b / d with saturation of the product (d != 0).
long long productAndDivide(long long a, long long b, long long d);
}  // namespace MathOverflow

// Ranges of node values, which wrap around in 64 bits: each is the exact
// range when it fits in 64 bits, else the whole 64-bit range (a wrapped
// value can then be anything). Never saturated: a saturated end would leave
// the wrapped values outside.
namespace MathOverflow {
// Range of factor * x for x in [low, high]; [0, 0] for factor 0.
void scaleRange(long long factor, long long low, long long high, long long& min, long long& max);
// Range of x * y over two ranges.
void multiplyRanges(long long lowX, long long highX, long long lowY, long long highY,
                    long long& min, long long& max);
// Range of x + y over two ranges.
void addRanges(long long lowX, long long highX, long long lowY, long long highY, long long& min,
               long long& max);
// Range of |x| for x in [low, high]; the most negative value keeps itself.
void absRange(long long low, long long high, long long& min, long long& max);
// Range of x - y.
void differenceRange(long long lowX, long long highX, long long lowY, long long highY,
                     long long& min, long long& max);
}  // namespace MathOverflow
