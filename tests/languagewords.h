#pragma once
// The words of the language, read from where they are defined: the scanner
// for the keywords and the reserved words, the program's function table for
// the built-ins, the launcher for the reserved qx variables. Tests that check
// a document or an editor file against the language use these, never a list
// of their own, so a word added to the language is a word they miss.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

#include "api/qxoperator.h"
#include "modeler/program.h"

namespace languagewords {

namespace fs = std::filesystem;

inline const fs::path kRoot = fs::path(QUARRIX_TEST_DATA_DIR).parent_path();

inline std::string readFile(const fs::path& path) {
    std::ifstream in(path);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The double-quoted literals of the sources under `where` (a file or a
// folder) whose whole text matches `pattern`.
inline std::set<std::string> literals(const fs::path& where, const std::regex& pattern) {
    std::set<std::string> found;
    auto scan = [&](const fs::path& file) {
        // A quote, a run without quote or backslash, a quote: scanned by
        // hand, since a regular expression recurses once per character of
        // the run and long runs overflow the stack of instrumented builds.
        const std::string text = readFile(file);
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] != '"') continue;
            std::size_t j = i + 1;
            while (j < text.size() && text[j] != '"' && text[j] != '\\') ++j;
            if (j == text.size() || text[j] != '"') continue;
            // Words are short; long messages are not matched at all.
            std::string word = text.substr(i + 1, j - i - 1);
            if (word.size() <= 64 && std::regex_match(word, pattern)) found.insert(word);
            i = j;
        }
    };
    if (fs::is_regular_file(where)) scan(where);
    else
        for (const auto& entry : fs::recursive_directory_iterator(where))
            if (entry.path().extension() == ".cpp" || entry.path().extension() == ".h") scan(entry.path());
    return found;
}

// The scanner's rules of the form "word" { return TOKEN; }.
inline std::set<std::string> keywords() {
    std::set<std::string> words;
    const std::string scanner = readFile(kRoot / "src/modeler/scanner.l");
    static const std::regex rule("\\n\"([a-z]+)\"\\s+\\{\\s*return\\b");
    for (std::sregex_iterator it(scanner.begin(), scanner.end(), rule), end; it != end; ++it)
        words.insert((*it)[1]);
    return words;
}

// The scanner's one rule "w1"|"w2"|... whose action reports a word reserved
// for future use.
inline std::set<std::string> reservedWords() {
    std::set<std::string> words;
    const std::string scanner = readFile(kRoot / "src/modeler/scanner.l");
    static const std::regex rule("\\n((?:\"[a-z]+\"\\|)+\"[a-z]+\")\\s*\\{[^}]*reserved for future use");
    std::smatch found;
    if (!std::regex_search(scanner, found, rule)) return words;
    const std::string alternatives = found[1];
    static const std::regex word("\"([a-z]+)\"");
    for (std::sregex_iterator it(alternatives.begin(), alternatives.end(), word), end; it != end; ++it)
        words.insert((*it)[1]);
    return words;
}

// Every function a new program defines: the operators by their catalogue
// names, and the libraries' functions, whose names are found where they are
// written (as literals of the sources) since the table lists none.
inline std::set<std::string> builtInFunctions() {
    Program program;
    std::set<std::string> names;
    for (int code = 0; code < QX_NB_OPERATORS; ++code)
        names.insert(getOperatorInfo(static_cast<QXOperator>(code)).name);
    for (const std::string& word : literals(kRoot / "src", std::regex("[A-Za-z_][A-Za-z0-9_]*")))
        if (program.isFunctionDefined(word)) names.insert(word);
    return names;
}

// The qx variables the launcher reads before the solve or sets after it.
inline std::set<std::string> reservedVariables() {
    return literals(kRoot / "src/modeler/launcher.cpp", std::regex("qx[A-Z][A-Za-z]*"));
}

}  // namespace languagewords
