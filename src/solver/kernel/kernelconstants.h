#pragma once

#include "solver/kernel/constants.h"
#include "solver/kernel/wraparith.h"

// Sentinels of the kernel graph.
namespace KernelConstants {
// No node, no constraint position, no variable index.
constexpr unsigned int NO_NODE = 4294967295u;
// Marks, during building, a node that has no constant value.
constexpr long long NOT_CONSTANT = 9223372036854775807LL;
// Parent offset of a node that has no parent.
constexpr unsigned int NO_PARENT_OFFSET = 2147483647u;
}  // namespace KernelConstants

// Direction of one objective, as stored in the fixed fields.
enum ObjectiveDirection : unsigned int { Minimize = 0, Maximize = 1 };
