#pragma once

#include <cstdint>

// The integer rules of the language, the model and the kernel, in one
// place: 64-bit two's-complement values that wrap around on overflow (done
// in unsigned arithmetic, where overflow is defined), and division and
// remainder that truncate toward zero. Overflow is judged at build time from
// the bounds; evaluation never traps on it.
namespace WrapArith {
inline int64_t add(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
}
inline int64_t sub(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
}
inline int64_t mul(int64_t a, int64_t b) {
    return static_cast<int64_t>(static_cast<uint64_t>(a) * static_cast<uint64_t>(b));
}
inline int64_t neg(int64_t a) { return sub(0, a); }
// The most negative value keeps itself.
inline int64_t abs(int64_t a) { return a < 0 ? neg(a) : a; }
// b must not be 0 (each caller raises its own error). The one quotient that
// does not fit, the most negative value over -1, wraps like the others.
inline int64_t divide(int64_t a, int64_t b) { return b == -1 ? neg(a) : a / b; }
// b must not be 0; the sign follows a.
inline int64_t modulo(int64_t a, int64_t b) { return b == -1 ? 0 : a % b; }
}  // namespace WrapArith
