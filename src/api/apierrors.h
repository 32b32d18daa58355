#pragma once

#include "api/qxexception.h"
#include "solver/kernel/constants.h"

#include <cstdint>
#include <string>

class Quarrix;

// The state guards of the API and the message forms that several units share.
// Every guard raises a QXException and changes nothing.
class ApiErrors {
public:
    static constexpr int32_t MaxCount = QXLimits::MAX_COUNT;
    static constexpr int64_t MaxInt64 = INT64_MAX;
    static constexpr int64_t MinInt64 = INT64_MIN;

    // State guards, named by the states they accept.
    static void checkNotRunning(const Quarrix* solver, const QXWhere& where);
    static void checkModeling(const Quarrix* solver, const QXWhere& where);
    static void checkPausedOrStopped(const Quarrix* solver, const QXWhere& where);
    static void checkStopped(const Quarrix* solver, const QXWhere& where);
    // Refuses while no search has ever been started.
    static void checkStarted(const Quarrix* solver, const QXWhere& where);

    // Refuses i outside 0..count-1 with the shared index message.
    static void checkIndex(int64_t i, int64_t count, const std::string& thing,
                           const QXWhere& where);

    [[noreturn]] static void fail(const QXWhere& where, const std::string& explanation);

    static std::string nullArgument(const std::string& name);
    static std::string emptyArgument(const std::string& name);
    static std::string foreignArgument(const std::string& text);
    static std::string tooMany(const std::string& things);
    static std::string notPositive(const std::string& name);
    static std::string notStrictlyPositive(const std::string& name);
    // "Number of operands (count) is too <bound> limit operands are expected
    // for operator with type <operatorName>."; bound is "large: at most" or
    // "small: at least".
    static std::string operandCount(int64_t count, const char* bound, int64_t limit,
                                    const std::string& operatorName);
};
