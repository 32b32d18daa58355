// The table of advanced parameters: consistent in itself, and the README's
// table of them says the same.

#include "solver/kernel/searchparams.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>

TEST(SearchParams, TableRowsAreDistinctAndDefaultsInRange) {
    std::set<std::string> names;
    for (const AdvancedParamInfo& info : ADVANCED_PARAMS) {
        SCOPED_TRACE(info.name);
        EXPECT_TRUE(names.insert(info.name).second);
        EXPECT_LE(info.lowest, info.defaultValue);
        EXPECT_LE(info.defaultValue, info.highest);
        EXPECT_NE(std::string(info.help), "");
    }
    SearchParams params;
    for (unsigned int p = 0; p < NB_ADVANCED_PARAMS; ++p)
        EXPECT_EQ(params.get(static_cast<AdvancedParam>(p)), ADVANCED_PARAMS[p].defaultValue);
}

TEST(SearchParams, ReadmeTableListsEveryParameterAsDeclared) {
    std::ifstream file(std::string(QUARRIX_TEST_DATA_DIR) + "/../README.md");
    ASSERT_TRUE(file.good());
    std::stringstream text;
    text << file.rdbuf();
    const std::string readme = text.str();
    for (const AdvancedParamInfo& info : ADVANCED_PARAMS) {
        std::string row = "| `" + std::string(info.name) + "` | " + std::to_string(info.defaultValue) + " | " +
                          std::to_string(info.lowest) + " to " + std::to_string(info.highest) + " | " + info.help +
                          " |\n";
        EXPECT_NE(readme.find(row), std::string::npos) << "missing or different README row:\n" << row;
    }
    // And no row for a parameter the search does not read: the section's
    // table has one row per entry.
    size_t section = readme.find("### Advanced parameters");
    ASSERT_NE(section, std::string::npos);
    std::istringstream lines(readme.substr(section));
    std::string line;
    unsigned int rows = 0;
    while (std::getline(lines, line) && line.rfind("## ", 0) != 0) rows += line.rfind("| `", 0) == 0;
    EXPECT_EQ(rows, static_cast<unsigned int>(NB_ADVANCED_PARAMS));
}
