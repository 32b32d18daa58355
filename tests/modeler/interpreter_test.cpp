#include "api/qxexception.h"
#include "modeler/context.h"
#include "modeler/mnode.h"
#include "modeler/program.h"
#include "modeler/value/vmap.h"

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>
#include <string>

namespace {

// Parses text and runs one of its functions; collects what it prints.
class ProgramRun {
public:
    explicit ProgramRun(const std::string& text) : context(&program, nullptr) {
        program.parseText(text, "test.qxm");
    }
    std::string call(const std::string& name, std::vector<Value> args = {}) {
        std::ostringstream out;
        std::streambuf* old = std::cout.rdbuf(out.rdbuf());
        try {
            result = program.getFunction(name)->call(&context, args);
        } catch (...) {
            std::cout.rdbuf(old);
            throw;
        }
        std::cout.rdbuf(old);
        return out.str();
    }
    Value global(const std::string& name) {
        return context.getValue(program.getGlobalVariables()->getVariable(name));
    }
    Program program;
    Context context;
    Value result;
};

std::string parseError(const std::string& text) {
    Program program;
    try {
        program.parseText(text, "bad.qxm");
    } catch (const QXException& e) {
        return e.getExplanation();
    }
    return "no error";
}

}  // namespace

TEST(Parser, EmptyProgramsAndComments) {
    EXPECT_EQ(parseError(""), "no error");
    EXPECT_EQ(parseError("// x\n/* y\n z */\n"), "no error");
}

TEST(Parser, SyntaxErrorsNameTokensAndLines) {
    EXPECT_EQ(parseError("function f() {\n x = 1 2;\n}"),
              "At line 2 : syntax error, unexpected \"integer\"");
    EXPECT_EQ(parseError("function f() { return 1 }"),
              "At line 1 : syntax error, unexpected '}'");
    EXPECT_EQ(parseError("function f( { }"),
              "At line 1 : syntax error, unexpected '{', expecting \"variable or function name\" "
              "or ')'");
    EXPECT_EQ(parseError("function"),
              "At line 1 : syntax error, unexpected \"end-of-file\", expecting \"variable or "
              "function name\"");
    EXPECT_EQ(parseError("x = 1;"),
              "At line 1 : syntax error, unexpected \"variable or function name\", expecting "
              "\"end-of-file\"");
}

TEST(Parser, LexicalErrors) {
    EXPECT_EQ(parseError("function f() {\n\n x = $; }"), "At line 3 : Illegal character");
    EXPECT_EQ(parseError("function f() { const = 1; }"),
              "At line 1 : 'const' is a keyword reserved for future use.");
    EXPECT_EQ(parseError("function f() { x = \"\\q\"; }"),
              "At line 1 : illegal character in quoted string");
    EXPECT_EQ(parseError("function f() { x = \"ab\n\ncd"),
              "At line 3 : unclosed string but end of file reached");
    EXPECT_EQ(parseError("function f() { }\n/* never\nclosed"),
              "At line 2 : unclosed comment but end of file reached");
    EXPECT_EQ(parseError(std::string("function f() { x = 1\0; }", 24)),
              "At line 1 : Illegal character");
}

TEST(Parser, KeywordPrefixesAreIdentifiers) {
    ProgramRun r("function f() { format = 1; ifx = 2; If = 3; variable = format + ifx + If; }");
    r.call("f");
    EXPECT_EQ(r.global("variable").asInt(), 6);
}

TEST(Parser, GeneratedChainsRunAtAnyLength) {
    // A million-term sum written out, as a generator would.
    std::string sum = "function f() { x = 0";
    sum.reserve(5000100);
    for (int i = 1; i <= 1000000; ++i) sum += i % 2 ? " + 3" : " - 1";
    ProgramRun big(sum + "; }");
    big.call("f");
    EXPECT_EQ(big.global("x").asInt(), 1000000);
    // Chains around the length kept on the stack, in an order that matters:
    // 1000 - 1 - 2 - ... - k, then halved by a division at the end.
    for (int k = 1; k <= 40; ++k) {
        std::string text = "function f() { x = 1000";
        for (int i = 1; i <= k; ++i) text += " - " + std::to_string(i);
        ProgramRun run(text + "; y = (1000" + text.substr(text.find(" - ")) + ") / 2; }");
        run.call("f");
        EXPECT_EQ(run.global("x").asInt(), 1000 - k * (k + 1) / 2) << k;
        EXPECT_EQ(run.global("y").asInt(), (1000 - k * (k + 1) / 2) / 2) << k;
    }
    // An else-if chain of 100,000 branches, its last branch taken.
    std::string chain = "function g(n) { if (n == 0) y = 0;";
    for (int i = 1; i < 100000; ++i)
        chain += i == 50000 ? "\nelse if (n / (n - 50000) == 1) y = 0;"
                            : "\nelse if (n == " + std::to_string(i) + ") y = " + std::to_string(i) + ";";
    ProgramRun branches(chain + "\nelse y = -1; }");
    branches.call("g", {Value(99999)});
    EXPECT_EQ(branches.global("y").asInt(), 99999);
    branches.call("g", {Value(100000)});
    EXPECT_EQ(branches.global("y").asInt(), -1);
    // An error in the middle of the chain names its own branch's line.
    try {
        branches.call("g", {Value(50000)});
        FAIL();
    } catch (const QXException& e) {
        EXPECT_EQ(e.getExplanation(), "Division by zero.");
        EXPECT_EQ(branches.context.getInstructionPointer()->getLine(), 50001);
    }
    std::string parens = "function h() { z = " + std::string(20000, '(') + "1" +
                         std::string(20000, ')') + "; }";
    EXPECT_EQ(parseError(parens), "no error");
}

TEST(Parser, DeepNestingIsRefusedNotOverflowed) {
    std::string ifs = "function f() { ";
    for (int i = 0; i < 1200; ++i) ifs += "if (1) ";
    EXPECT_NE(parseError(ifs + "x = 1; }").find("nested too deeply"), std::string::npos);
    std::string right = "function f() { x = 1";
    for (int i = 0; i < 1200; ++i) right += " + (1";
    EXPECT_NE(parseError(right + std::string(1200, ')') + "; }").find("nested too deeply"),
              std::string::npos);
}

TEST(Parser, NodesCarryFileAndLine) {
    ProgramRun r("function f() {\n\n  x = 1 / 0;\n}");
    try {
        r.call("f");
        FAIL();
    } catch (const QXException& e) {
        EXPECT_EQ(e.getExplanation(), "Division by zero.");
        ASSERT_NE(r.context.getInstructionPointer(), nullptr);
        EXPECT_EQ(r.context.getInstructionPointer()->getLine(), 3);
        EXPECT_EQ(r.context.getInstructionPointer()->getFileName(), "test.qxm");
    }
}

TEST(Interpreter, RecursionKeepsSeparateFramesAndIsBounded) {
    ProgramRun r("function fib(n) { if (n < 2) return n; local a = fib(n - 1); return a + fib(n - 2); }\n"
          "function down(n) { return down(n + 1); }");
    r.call("fib", {Value(20)});
    EXPECT_EQ(r.result.asInt(), 6765);
#if !QX_ADDRESS_SANITIZER
    // Far deeper than a fixed small limit: 100,000 nested calls (the
    // instrumented build's smaller stack does not hold them).
    ProgramRun deep("function depth(n) { if (n == 0) return 0; return depth(n - 1) + 1; }");
    deep.call("depth", {Value(100000)});
    EXPECT_EQ(deep.result.asInt(), 100000);
#endif
    try {
        r.call("down", {Value(0)});
        FAIL();
    } catch (const QXException& e) {
        // The call limit, or in an instrumented build the stack's budget,
        // whichever comes first.
        const std::string text = e.getExplanation();
        EXPECT_EQ(text.rfind("Function 'down': more than ", 0), 0u) << text;
        EXPECT_NE(text.find(" nested calls (recursion too deep)."), std::string::npos) << text;
#if !QX_ADDRESS_SANITIZER
        EXPECT_EQ(text, "Function 'down': more than 1000000 nested calls (recursion too deep).");
#endif
    }
    // The context stays usable after the failure.
    r.call("fib", {Value(10)});
    EXPECT_EQ(r.result.asInt(), 55);
}

TEST(Interpreter, ScopesLocalsAndGlobals) {
    ProgramRun r("function f(m) { g = 5; local l = 7; m[\"k\"] = l; i = 100; for [i in 0..2] {} }\n"
          "function h() { local t; t[1] = 2; return t; }");
    VMap* m = new VMap();
    Value map(m);
    r.call("f", {map});
    EXPECT_EQ(r.global("g").asInt(), 5);
    EXPECT_FALSE(r.program.getGlobalVariables()->isVariableDefined("l"));
    EXPECT_EQ(m->get(std::string("k")).asInt(), 7);
    EXPECT_EQ(r.global("i").asInt(), 100);
    r.call("h");
    EXPECT_EQ(r.result.toString(), "[  1 => 2 ]");
    EXPECT_FALSE(r.program.getGlobalVariables()->isVariableDefined("t"));
}

TEST(Interpreter, ReturnLeavesEveryLoopLevel) {
    ProgramRun r("function f() { for [i in 0..9][j in 0..9] { if (i * j == 12) return i * 100 + j; } }");
    r.call("f");
    EXPECT_EQ(r.result.asInt(), 206);
}

TEST(Interpreter, IndexedAssignmentEvaluatesOncePerCombination) {
    ProgramRun r("function next() { n = n + 1; return n; }\n"
          "function g() { n = 0; x[i in 0..9] = next(); y[k, v in {5, 6}][1] = v; }");
    r.call("g");
    EXPECT_EQ(r.global("n").asInt(), 10);
    EXPECT_EQ(r.global("y").toString(), "[  0 => [  1 => 5 ]  1 => [  1 => 6 ] ]");
}

TEST(Interpreter, ShortCircuitAndLazyTernary) {
    ProgramRun r("function boom() { error(\"called\"); }\n"
          "function f() { a = false && boom(); b = true || boom(); c = 1 ? 2 : boom(); }");
    r.call("f");
    EXPECT_EQ(r.global("a").asInt(), 0);
    EXPECT_EQ(r.global("b").asInt(), 1);
    EXPECT_EQ(r.global("c").asInt(), 2);
}

TEST(Interpreter, UndefinedFunctionAndVariableLookups) {
    ProgramRun r("function f() { nope(); }");
    try {
        r.call("f");
        FAIL();
    } catch (const QXException& e) {
        EXPECT_EQ(e.getExplanation(), "Function 'nope' undefined.");
    }
    try {
        r.program.getGlobalVariables()->getVariable("zz");
        FAIL();
    } catch (const QXException& e) {
        EXPECT_EQ(e.getExplanation(), "Variable 'zz' undefined.");
    }
}

TEST(Parser, EveryReservedWordIsRefused) {
    for (const char* word : {"const", "self", "this", "var", "break", "case", "continue", "goto",
                             "switch", "catch", "class", "final", "object", "throw"}) {
        EXPECT_EQ(parseError(std::string("function f() { ") + word + " = 1; }"),
                  std::string("At line 1 : '") + word + "' is a keyword reserved for future use.");
    }
}

TEST(Parser, KeywordsAndOperatorsHaveDisplayNames) {
    const char* cases[][2] = {
        {"while", "\"while keyword\""},   {"minimize", "\"minimize keyword\""},
        {"in", "\"in keyword\""},         {"local", "\"local keyword\""},
        {"&& 1", "\"&& operator\""},      {"<- 1", "\"<- operator\""},
        {".. 1", "\".. operator\""},      {">= 1", "\">= operator\""},
        {"* 1", "'*'"},                   {"] 1", "']'"},
    };
    for (auto& c : cases)
        EXPECT_EQ(parseError(std::string("function f() { x = ") + c[0] + "; }"),
                  std::string("At line 1 : syntax error, unexpected ") + c[1]);
}

TEST(Interpreter, InstructionBudgetEndsEndlessLoopsOfEveryKind) {
    // The harnesses that run untrusted programs rely on it: a loop, a
    // recursion and an iterated call without statements all meet it.
    for (const char* body : {"while (true) {}", "do {} while (1);", "f();",
                             "println[i in 0..9223372036854775806](\"\");",
                             "x[i in 0..9223372036854775806] = i;"}) {
        ProgramRun r(std::string("function f() { ") + body + " }");
        r.context.setInstructionBudget(10000);
        try {
            r.call("f");
            ADD_FAILURE() << body;
        } catch (const QXException& e) {
            EXPECT_EQ(e.getExplanation(), "The instruction budget of this run is exhausted.")
                << body;
        }
    }
    // Within the budget a program runs as usual.
    ProgramRun small("function g() { s = 0; for [i in 1..100] s = s + i; }");
    small.context.setInstructionBudget(10000);
    small.call("g");
    EXPECT_EQ(small.global("s").asInt(), 5050);
}

TEST(Parser, UnsettledNestedPrefixesAreRefusedQuickly) {
    // Each unclosed "f(or [" may open a call over iterators or an index: the
    // readings double per level. Found by fuzzing, when it took seconds.
    std::string open = "function model() {\n";
    for (int i = 0; i < 40; ++i) open += "    f(or [+++++++++x[63]+++++++++\n";
    const std::string error = parseError(open + "}");
    EXPECT_NE(error.find(" : memory exhausted"), std::string::npos) << error;
    // Index expressions nested ten deep still parse and run.
    std::string nested = "function g() { m = {0, 1}; x = ";
    for (int i = 0; i < 10; ++i) nested += "m[";
    nested += "1" + std::string(10, ']') + "; }";
    ProgramRun r(nested);
    r.call("g");
    EXPECT_EQ(r.global("x").asInt(), 1);
}
