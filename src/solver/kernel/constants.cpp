#include "solver/kernel/constants.h"

#include "api/kernelexception.h"

#include <boost/lexical_cast.hpp>
#include <limits>

qxint castToQxInt(const std::string& text) {
    qxint value;
    if (boost::conversion::try_lexical_convert(text, value)) return value;
    throw KernelException("Cannot cast '" + text + "' to int (Max value allowed : " +
                              std::to_string(std::numeric_limits<qxint>::max()) +
                              ", min value allowed : " +
                              std::to_string(std::numeric_limits<qxint>::min()) + ").",
                          QXWhere::contractLine("src/solver/kernel/constants", 14, "castToQxInt"));
}

qxint castToQxInt(const char* text) { return castToQxInt(std::string(text)); }
