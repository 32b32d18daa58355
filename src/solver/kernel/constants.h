#pragma once

#include <cstdint>
#include <string>

// Integer of the modeling language and of every kernel node.
typedef int64_t qxint;

// Decimal text to a 64-bit integer, the whole text or nothing. Shared by the
// scanner's literals, readInt, toInt and the command-line assignments, so all
// of them accept and refuse the same texts. Throws KernelException.
qxint castToQxInt(const std::string& text);
qxint castToQxInt(const char* text);
