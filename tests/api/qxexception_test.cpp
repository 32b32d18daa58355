#include <gtest/gtest.h>

#include "api/kernelexception.h"
#include "api/qxexception.h"
#include "api/qxversion.h"
#include "modeler/modelerexception.h"

TEST(QXException, CarriesFieldsAndBuildsMessage) {
    QXException e("Only decisions can be set.", 42, "src/api/qxsolution", "setValue");
    EXPECT_EQ(e.getExplanation(), "Only decisions can be set.");
    EXPECT_EQ(e.getLineNumber(), 42);
    EXPECT_EQ(e.getFileName(), "src/api/qxsolution");
    EXPECT_EQ(e.getFunctionName(), "setValue");
    EXPECT_EQ(e.getMessage(), "ERROR [function setValue]: Only decisions can be set.");
    EXPECT_STREQ(e.what(), "ERROR [function setValue]: Only decisions can be set.");
}

namespace {
const char* const UNIT = "tests/api/qxexception_test";
int raisingLine = 0;
[[noreturn]] void raiseHere() {
    raisingLine = __LINE__ + 1;
    throw ModelerException("Division by zero.", QX_HERE);
}
}  // namespace

TEST(QXException, SubclassesCarryTheRaisingCallsLocation) {
    try {
        raiseHere();
    } catch (const QXException& e) {
        EXPECT_NE(dynamic_cast<const ModelerException*>(&e), nullptr);
        EXPECT_EQ(e.getFileName(), UNIT);
        EXPECT_EQ(e.getLineNumber(), raisingLine);
        EXPECT_EQ(e.getFunctionName(), "raiseHere");
        EXPECT_EQ(e.getMessage(), "ERROR [function raiseHere]: Division by zero.");
    }
    // A contract line stays what the contract says, wherever the call is.
    try {
        throw KernelException("bad", QXWhere::contractLine("src/modeler/launcher", 150,
                                                           "getSolverIntegerParameter"));
    } catch (const QXException& e) {
        EXPECT_NE(dynamic_cast<const KernelException*>(&e), nullptr);
        EXPECT_EQ(e.getExplanation(), "bad");
        EXPECT_EQ(e.getFileName(), "src/modeler/launcher");
        EXPECT_EQ(e.getLineNumber(), 150);
        EXPECT_EQ(e.getMessage(), "ERROR [function getSolverIntegerParameter]: bad");
    }
}

TEST(QXVersion, TextsAgreeWithNumbers) {
    EXPECT_EQ(QXVersion::getVersion(), "Quarrix 2.0 (build 20120322)");
    EXPECT_EQ(QXVersion::getMajorVersionNumber(), 2);
    EXPECT_EQ(QXVersion::getMinorVersionNumber(), 2);
    EXPECT_EQ(QXVersion::getVersionCode(), 20);
    // The banner is exactly two lines; the end-to-end harness relies on it.
    std::string info = QXVersion::getInfo();
    EXPECT_EQ(info.rfind(QXVersion::getVersion() + "\n", 0), 0u);
    EXPECT_EQ(std::count(info.begin(), info.end(), '\n'), 1);
}
