#pragma once

// Sentinels of the kernel graph.
namespace KernelConstants {
// No node, no constraint position, no variable index.
constexpr unsigned int NO_NODE = 4294967295u;
// Marks, during building, a node that has no constant value.
constexpr long long NOT_CONSTANT = 9223372036854775807LL;
// Parent offset of a node that has no parent.
constexpr unsigned int NO_PARENT_OFFSET = 2147483647u;
// Limits of a phase and of a search that mean "none": the largest values of
// the 32-bit time limit (seconds) and of the 64-bit iteration limit.
constexpr int NO_TIME_LIMIT = 2147483647;
constexpr long long NO_ITERATION_LIMIT = 9223372036854775807LL;
}  // namespace KernelConstants

// Direction of one objective, as stored in the fixed fields.
enum ObjectiveDirection : unsigned int { Minimize = 0, Maximize = 1 };

// Two's-complement wrap-around arithmetic of node values. Done in unsigned
// arithmetic so that overflow is defined; the kernel never traps on it
// (overflow is judged at build time from the bounds).
namespace WrapArith {
inline long long add(long long a, long long b) {
    return static_cast<long long>(static_cast<unsigned long long>(a) +
                                  static_cast<unsigned long long>(b));
}
inline long long sub(long long a, long long b) {
    return static_cast<long long>(static_cast<unsigned long long>(a) -
                                  static_cast<unsigned long long>(b));
}
inline long long mul(long long a, long long b) {
    return static_cast<long long>(static_cast<unsigned long long>(a) *
                                  static_cast<unsigned long long>(b));
}
inline long long neg(long long a) { return sub(0, a); }
}  // namespace WrapArith
