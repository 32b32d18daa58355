// docs/language.md must describe every built-in function that a program
// registers and every reserved qx variable that the launcher reads or sets,
// and the manual page every reserved variable: a function or a variable
// added without its entry fails here.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "languagewords.h"

using namespace languagewords;

namespace {

// Whether a table row of the reference names `name` as `name` or `name(...)`.
bool describedInTable(const std::string& reference, const std::string& name) {
    std::istringstream lines(reference);
    for (std::string line; std::getline(lines, line);)
        if (line.rfind("|", 0) == 0 &&
            (line.find("`" + name + "`") != std::string::npos || line.find("`" + name + "(") != std::string::npos))
            return true;
    return false;
}

}  // namespace

TEST(LanguageReference, DescribesEveryBuiltInFunction) {
    const std::string reference = readFile(kRoot / "docs/language.md");
    ASSERT_FALSE(reference.empty());
    const std::set<std::string> builtIns = builtInFunctions();
    // The libraries, the 22 operators and the solver functions: if the scan
    // finds fewer, it is the scan that is broken.
    ASSERT_GE(builtIns.size(), 47u);
    for (const std::string& name : builtIns) EXPECT_TRUE(describedInTable(reference, name)) << name;
}

TEST(LanguageReference, DescribesEveryReservedVariable) {
    const std::string reference = readFile(kRoot / "docs/language.md");
    const std::set<std::string> reserved = reservedVariables();
    ASSERT_GE(reserved.size(), 9u);
    for (const std::string& name : reserved) EXPECT_TRUE(describedInTable(reference, name)) << name;
}

TEST(ManualPage, DescribesEveryReservedVariable) {
    const std::string page = readFile(kRoot / "docs/quarrix.1");
    ASSERT_FALSE(page.empty());
    // Each has an entry of its own: a bold line of roff, ".B name".
    for (const std::string& name : reservedVariables())
        EXPECT_NE(page.find("\n.B " + name + "\n"), std::string::npos) << name;
}
