// The editor files under editors/ must know every word of the language: each
// keyword, reserved word, built-in function and reserved qx variable is
// highlighted, as a word of its kind, by the Vim syntax and by the TextMate
// grammar. The words come from the scanner and the function table
// (languagewords.h), so a word added to the language fails here until both
// editors learn it.
#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "languagewords.h"

using namespace languagewords;

namespace {

enum class Kind { Keyword, Reserved, BuiltIn, Variable };

struct Word {
    std::string text;
    Kind kind;
};

// Every word of the language with its kind. A built-in that the scanner
// reserves (the constant operator's name) can never be called: it is
// highlighted as reserved.
std::vector<Word> languageWords() {
    std::vector<Word> words;
    const std::set<std::string> reserved = reservedWords();
    for (const std::string& w : keywords()) words.push_back({w, Kind::Keyword});
    for (const std::string& w : reserved) words.push_back({w, Kind::Reserved});
    for (const std::string& w : builtInFunctions())
        if (!reserved.count(w)) words.push_back({w, Kind::BuiltIn});
    for (const std::string& w : reservedVariables()) words.push_back({w, Kind::Variable});
    return words;
}

const char* kindName(Kind kind) {
    switch (kind) {
        case Kind::Keyword: return "keyword";
        case Kind::Reserved: return "reserved word";
        case Kind::BuiltIn: return "built-in function";
        case Kind::Variable: return "reserved variable";
    }
    return "?";
}

// Identifiers that hold a word of the language inside them, or differ from
// one only by case: no editor may highlight them.
const std::vector<std::string> kPlainIdentifiers = {"format", "ifx", "variable", "finally",
    "If", "TRUE", "counter", "sum_x", "x_sum", "qxSeedling", "myqxSeed", "getValues", "mod2"};

// --- Vim: `syn keyword Group words...` and `hi def link Group Target`.
struct VimSyntax {
    std::map<std::string, std::string> groupOfWord;
    std::map<std::string, std::string> linkOfGroup;
    std::vector<std::string> duplicates;
};

VimSyntax readVim(const std::string& text) {
    VimSyntax vim;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string a, b, third;
        words >> a >> b >> third;
        if (a == "syn" && b == "keyword") {
            for (std::string w; words >> w;) {
                if (w == "contained") continue;
                if (vim.groupOfWord.count(w)) vim.duplicates.push_back(w);
                vim.groupOfWord[w] = third;
            }
        } else if (a == "hi" && b == "def" && third == "link") {
            std::string group, target;
            words >> group >> target;
            vim.linkOfGroup[group] = target;
        }
    }
    return vim;
}

bool vimAccepts(Kind kind, const std::string& target) {
    static const std::map<Kind, std::set<std::string>> targets = {
        {Kind::Keyword, {"Statement", "Conditional", "Repeat", "Keyword", "Constant"}},
        {Kind::Reserved, {"Error"}},
        {Kind::BuiltIn, {"Function"}},
        {Kind::Variable, {"Identifier"}},
    };
    return targets.at(kind).count(target) > 0;
}

// --- TextMate: the rules { "name": scope, "match": regex }, in file order.
struct Rule {
    std::string scope;
    std::regex pattern;
};

std::string jsonUnescape(const std::string& s) {
    std::string out;
    for (size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '\\' && i + 1 < s.size()) ++i;
        out += s[i];
    }
    return out;
}

std::vector<Rule> readTextMate(const std::string& text) {
    std::vector<Rule> rules;
    static const std::regex rule(
        "\\{\\s*\"name\"\\s*:\\s*\"([^\"]+)\"\\s*,\\s*\"match\"\\s*:\\s*\"((?:[^\"\\\\]|\\\\.)*)\"\\s*\\}");
    for (std::sregex_iterator it(text.begin(), text.end(), rule), end; it != end; ++it)
        rules.push_back({(*it)[1], std::regex(jsonUnescape((*it)[2]))});
    return rules;
}

// The scope the grammar gives to `word` standing alone: the first rule, in
// file order, that matches exactly the word; "" when none does.
std::string scopeOf(const std::vector<Rule>& rules, const std::string& word) {
    for (const Rule& r : rules) {
        std::smatch m;
        if (std::regex_search(word, m, r.pattern) && m.position(0) == 0 &&
            static_cast<size_t>(m.length(0)) == word.size())
            return r.scope;
    }
    return "";
}

// Whether some rule that highlights words matches inside `text` (for a
// longer identifier: the rule lacks a word boundary).
bool anyWordRuleMatches(const std::vector<Rule>& rules, const std::string& text) {
    for (const Rule& r : rules) {
        const bool wordRule = r.scope.rfind("keyword.control", 0) == 0 || r.scope.rfind("keyword.other", 0) == 0 ||
                              r.scope.rfind("constant.language", 0) == 0 ||
                              r.scope.rfind("invalid.illegal.reserved", 0) == 0 ||
                              r.scope.rfind("support.function", 0) == 0 ||
                              r.scope.rfind("variable.language", 0) == 0;
        if (wordRule && std::regex_search(text, r.pattern)) return true;
    }
    return false;
}

bool textMateAccepts(Kind kind, const std::string& scope) {
    auto starts = [&](const char* prefix) { return scope.rfind(prefix, 0) == 0; };
    switch (kind) {
        case Kind::Keyword: return starts("keyword.") || starts("constant.language.");
        case Kind::Reserved: return starts("invalid.illegal.reserved.");
        case Kind::BuiltIn: return starts("support.function.");
        case Kind::Variable: return starts("variable.language.");
    }
    return false;
}

}  // namespace

TEST(EditorGrammars, LanguageWordsAreReadFromTheSources) {
    // The lists the checks below rely on: if one comes back short, the
    // reading of the scanner or of the function table is what broke.
    EXPECT_EQ(keywords().size(), 15u);
    EXPECT_EQ(reservedWords().size(), 14u);
    EXPECT_TRUE(reservedWords().count("const"));
    EXPECT_GE(builtInFunctions().size(), 47u);
    EXPECT_GE(reservedVariables().size(), 9u);
}

TEST(EditorGrammars, VimHighlightsEveryWordByItsKind) {
    const std::string text = readFile(kRoot / "editors/vim/syntax/qxm.vim");
    ASSERT_FALSE(text.empty());
    const VimSyntax vim = readVim(text);
    EXPECT_TRUE(vim.duplicates.empty()) << "listed twice: " << vim.duplicates.front();
    for (const Word& w : languageWords()) {
        auto group = vim.groupOfWord.find(w.text);
        if (group == vim.groupOfWord.end()) {
            ADD_FAILURE() << kindName(w.kind) << " '" << w.text << "' is not in the Vim syntax";
            continue;
        }
        auto link = vim.linkOfGroup.find(group->second);
        ASSERT_NE(link, vim.linkOfGroup.end()) << group->second << " has no highlight link";
        EXPECT_TRUE(vimAccepts(w.kind, link->second))
            << kindName(w.kind) << " '" << w.text << "' is highlighted as " << link->second;
    }
    // Vim keywords are whole words; ":syn case match" keeps If and TRUE apart.
    EXPECT_NE(text.find("syn case match"), std::string::npos);
    for (const std::string& id : kPlainIdentifiers) EXPECT_EQ(vim.groupOfWord.count(id), 0u) << id;
    const std::string detect = readFile(kRoot / "editors/vim/ftdetect/qxm.vim");
    EXPECT_NE(detect.find("*.qxm setfiletype qxm"), std::string::npos);
}

TEST(EditorGrammars, TextMateHighlightsEveryWordByItsKind) {
    const std::string text = readFile(kRoot / "editors/textmate/qxm.tmLanguage.json");
    ASSERT_FALSE(text.empty());
    const std::vector<Rule> rules = readTextMate(text);
    ASSERT_GE(rules.size(), 6u);
    for (const Word& w : languageWords()) {
        const std::string scope = scopeOf(rules, w.text);
        EXPECT_TRUE(textMateAccepts(w.kind, scope))
            << kindName(w.kind) << " '" << w.text << "' gets the scope '" << scope << "'";
    }
    for (const std::string& id : kPlainIdentifiers)
        EXPECT_FALSE(anyWordRuleMatches(rules, id)) << "'" << id << "' is highlighted as a word";
}
