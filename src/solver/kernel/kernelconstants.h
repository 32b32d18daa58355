#pragma once

#include "solver/kernel/wraparith.h"

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
