#pragma once

#include <cstdint>
#include <string>

// Integer of the modeling language and of every kernel node.
typedef int64_t qxint;

// The limits shared by the launcher, the API and the search.
namespace QXLimits {
// Counts (expressions, operands, constraints, arguments...) stay within the
// largest 32-bit value.
constexpr int32_t MAX_COUNT = 2147483647;
// Limits of a phase and of a search that mean "none": the largest values of
// the 32-bit time limit (seconds) and of the 64-bit iteration limit.
constexpr int32_t NO_TIME_LIMIT = MAX_COUNT;
constexpr int64_t NO_ITERATION_LIMIT = 9223372036854775807LL;
}  // namespace QXLimits

// Decimal text to a 64-bit integer, the whole text or nothing. Shared by the
// scanner's literals, readInt, toInt and the command-line assignments, so all
// of them accept and refuse the same texts. Throws KernelException.
qxint castToQxInt(const std::string& text);
qxint castToQxInt(const char* text);
