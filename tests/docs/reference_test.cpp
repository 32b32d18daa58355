// docs/language.md must describe every built-in function that a program
// registers and every reserved qx variable that the launcher reads or sets:
// a function added without its row in the reference fails here.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "modeler/program.h"

namespace fs = std::filesystem;

namespace {

const fs::path kRoot = fs::path(QUARRIX_TEST_DATA_DIR).parent_path();

std::string readFile(const fs::path& path) {
    std::ifstream in(path);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The double-quoted literals of the sources under `where` (a file or a
// folder) whose whole text matches `pattern`. There is no list of the
// registered functions to read, so their names are found where they are
// written: as literals in the libraries and the operator table.
std::set<std::string> literals(const fs::path& where, const std::regex& pattern) {
    std::set<std::string> found;
    auto scan = [&](const fs::path& file) {
        std::string text = readFile(file);
        static const std::regex literal("\"([^\"\\\\]*)\"");
        for (std::sregex_iterator it(text.begin(), text.end(), literal), end; it != end; ++it) {
            std::string word = (*it)[1];
            if (std::regex_match(word, pattern)) found.insert(word);
        }
    };
    if (fs::is_regular_file(where)) scan(where);
    else
        for (const auto& entry : fs::recursive_directory_iterator(where))
            if (entry.path().extension() == ".cpp" || entry.path().extension() == ".h") scan(entry.path());
    return found;
}

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
    Program program;
    std::set<std::string> builtIns;
    for (const std::string& word : literals(kRoot / "src", std::regex("[A-Za-z_][A-Za-z0-9_]*")))
        if (program.isFunctionDefined(word)) builtIns.insert(word);
    // The libraries, the 22 operators and the solver functions: if the scan
    // finds fewer, it is the scan that is broken.
    ASSERT_GE(builtIns.size(), 47u);
    for (const std::string& name : builtIns) EXPECT_TRUE(describedInTable(reference, name)) << name;
}

TEST(LanguageReference, DescribesEveryReservedVariable) {
    const std::string reference = readFile(kRoot / "docs/language.md");
    std::set<std::string> reserved = literals(kRoot / "src/modeler/launcher.cpp", std::regex("qx[A-Z][A-Za-z]*"));
    ASSERT_GE(reserved.size(), 9u);
    for (const std::string& name : reserved) EXPECT_TRUE(describedInTable(reference, name)) << name;
}
