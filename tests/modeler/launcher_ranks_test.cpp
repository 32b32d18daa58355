// Where the launcher sends an error when it runs as one rank of several:
// to the ranks' agreement before the search, to the link (which has rank 0
// print it and ends every rank) during it, and what it tells the link at
// the close.

#include "modeler/launcher.h"

#include "api/ranklink.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

// What failAll() was handed; thrown, as failAll() never returns.
struct Relayed {
    std::string text;
};

// One rank of two whose partner is this rank's echo: every rank's word is
// this rank's, and the link records what the launcher hands it.
class EchoLink : public RankLink {
public:
    explicit EchoLink(int rank) : myRank(rank) {}
    int rank() const override { return myRank; }
    int size() const override { return 2; }
    std::vector<long long> allGather(const std::vector<long long>& mine) override {
        std::vector<long long> all = mine;
        all.insert(all.end(), mine.begin(), mine.end());
        return all;
    }
    void broadcast(std::vector<long long>&, int) override {}
    std::string firstFailure(const std::string& mine) override { return mine; }
    [[noreturn]] void failAll(const std::string& text) override { throw Relayed{text}; }
    void takeFailures() override {}
    void close(bool failed) override { closes.push_back(failed); }

    std::vector<bool> closes;

private:
    int myRank;
};

struct Outcome {
    int status = -1;
    std::string errors;        // what the launcher itself printed
    bool relayed = false;
    std::string relayedText;   // what it handed to failAll()
};

// Runs `program` as rank `rank` (or alone, without a link).
Outcome runAs(const std::string& program, EchoLink* link) {
    // One file per test: ctest runs this file's tests side by side.
    const std::string path = ::testing::TempDir() + "launcher_ranks_" +
                             ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".qxm";
    std::ofstream(path) << program;
    Outcome outcome;
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    {
        Launcher launcher({"quarrix", path});
        if (link) launcher.setRankLink(link);
        try {
            outcome.status = launcher.run();
        } catch (const Relayed& relayed) {
            outcome.relayed = true;
            outcome.relayedText = relayed.text;
        }
    }
    ::testing::internal::GetCapturedStdout();
    outcome.errors = ::testing::internal::GetCapturedStderr();
    std::remove(path.c_str());
    return outcome;
}

const std::string kModel = "function model() { x[i in 0..9] <- bool(); s = 0; for [i in 0..9] s = s + x[i]; "
                           "maximize s; }\n";

}  // namespace

TEST(LauncherRanks, AnErrorDuringTheSearchGoesToTheLinkAsAloneItIsPrinted) {
    // Rank 0's display section, the error a search can meet on rank 0.
    const std::string program = kModel + "function param() { qxTimeLimit = 30; qxNbThreads = 1; qxVerbosity = 0; }\n"
                                         "function display() { y = 1 / 0; }\n";
    const Outcome alone = runAs(program, nullptr);
    ASSERT_EQ(alone.status, 1);
    ASSERT_NE(alone.errors.find("Division by zero."), std::string::npos) << alone.errors;

    EchoLink link(0);
    const Outcome ranked = runAs(program, &link);
    ASSERT_TRUE(ranked.relayed);
    EXPECT_EQ(ranked.relayedText, alone.errors);
    // The link prints it: the launcher printing it too would show it twice.
    EXPECT_EQ(ranked.errors, "");
}

TEST(LauncherRanks, AnErrorBeforeTheSearchIsAgreedAndPrintedByRankZeroAlone) {
    const std::string program = kModel + "function param() { qxSeed = \"seed\"; }\n";
    for (int rank : {0, 1}) {
        SCOPED_TRACE(rank);
        EchoLink link(rank);
        const Outcome outcome = runAs(program, &link);
        EXPECT_FALSE(outcome.relayed);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.errors.find("'qxSeed' parameter must be an integer") != std::string::npos, rank == 0)
            << outcome.errors;
        EXPECT_EQ(link.closes, std::vector<bool>{true});
    }
}

TEST(LauncherRanks, TheCloseSaysWhetherRankZeroPrintedAnErrorOfItsOwn) {
    const std::string search = kModel + "function param() { qxIterationLimit = 1000; qxVerbosity = 0; }\n";
    {
        EchoLink link(0);
        const Outcome outcome = runAs(search, &link);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(link.closes, std::vector<bool>{false});
    }
    // After the search rank 0 prints its own error and returns: another
    // rank's failure taken at the close must not be printed after it.
    EchoLink link(0);
    const Outcome outcome = runAs(search + "function output() { y = 1 / 0; }\n", &link);
    EXPECT_FALSE(outcome.relayed);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.errors.find("Division by zero."), std::string::npos) << outcome.errors;
    EXPECT_EQ(link.closes, std::vector<bool>{true});
}
