// The reserved qx* variables at the edge of the 32-bit range: each value is
// judged whole, never by its low 32 bits.

#include "modeler/launcher.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

// Runs a one-boolean model with the given command-line words; returns the
// exit status and keeps what went to standard error.
int runWith(const std::vector<std::string>& words, std::string& errors) {
    // One file per test: ctest runs this file's tests side by side.
    const std::string path = ::testing::TempDir() + "launcher_limits_" +
                             ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".qxm";
    std::ofstream(path) << "function model() { x <- bool(); maximize x; }\n";
    std::vector<std::string> args = {"quarrix", path, "qxVerbosity=0"};
    args.insert(args.end(), words.begin(), words.end());
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    int status = Launcher(args).run();
    ::testing::internal::GetCapturedStdout();
    errors = ::testing::internal::GetCapturedStderr();
    std::remove(path.c_str());
    return status;
}

}  // namespace

TEST(Launcher, ValuesBeyond32BitsAreRefusedNotNarrowed) {
    // Each value's low 32 bits alone would be accepted (1, 0 or 5).
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"qxTimeLimit=4294967297", "Argument timeLimit cannot exceed 2147483647."},
        {"qxTimeLimit=-4294967295", "Argument timeLimit must be a positive number."},
        {"qxTimeLimit=0:4294967297", "Argument timeLimit cannot exceed 2147483647."},
        {"qxSeed=4294967296", "Argument seed cannot exceed 2147483647."},
        {"qxSeed=-4294967295", "Argument seed must be a positive number."},
        {"qxNbThreads=4294967297", "The number of threads cannot exceed 1024."},
        {"qxNbThreads=-4294967295", "Argument nbThreads must be a strictly positive number."},
        {"qxAnnealingLevel=4294967296", "The annealing level size must be an integer between 0 and 9."},
        {"qxVerbosity=4294967296", "Argument verbosity cannot exceed 2147483647."},
        {"qxTimeBetweenDisplays=4294967297", "The time between displays cannot exceed 65535."},
        {"qxAdvancedParams=targetingLevel:4294967301",
         "Advanced parameter 'targetingLevel' must be an integer between -2147483648 and 2147483647."},
    };
    for (const auto& [word, message] : cases) {
        SCOPED_TRACE(word);
        std::string errors;
        EXPECT_EQ(runWith({word}, errors), 1);
        EXPECT_NE(errors.find(message), std::string::npos) << errors;
    }
}

TEST(Launcher, LargestThirtyTwoBitValuesAreAccepted) {
    std::string errors;
    EXPECT_EQ(runWith({"qxTimeLimit=2147483647", "qxSeed=2147483647", "qxIterationLimit=100",
                       "qxAdvancedParams=ignoredName:2147483647"},
                      errors),
              0);
    EXPECT_EQ(errors, "");
}
