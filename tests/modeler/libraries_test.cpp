#include "api/qxexception.h"
#include "modeler/context.h"
#include "modeler/paramparser.h"
#include "modeler/program.h"
#include "modeler/value/vmap.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>

namespace {

std::string fileContent(const std::string& name) {
    std::ifstream in(name, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

std::string callError(Program& program, Context& context, const std::string& name) {
    std::vector<Value> none;
    try {
        program.getFunction(name)->call(&context, none);
    } catch (const QXException& e) {
        return e.getExplanation();
    }
    return "no error";
}

}  // namespace

// Files can only be written in the output section, which runs after a solve.
TEST(IOLibrary, WritesAndAppendsInTheOutputSection) {
    const std::string path = testing::TempDir() + "quarrix_io_test.txt";
    Program program;
    program.parseText("function output() {\n"
                      "  f = openWrite(\"" + path + "\");\n"
                      "  print(f, 1, \"a\");\n"
                      "  println(f, \" \", {2}, nil);\n"
                      "  println(f);\n"
                      "  close(f);\n"
                      "  g = openAppend(\"" + path + "\");\n"
                      "  println(g, \"appended\");\n"
                      "  close(g);\n"
                      "}\n"
                      "function input() { f = openWrite(\"x\"); }\n"
                      "function model() { f = openRead(\"" + path + "\"); }\n",
                      "io.qxm");
    Context context(&program, nullptr);
    context.setCurrentSection(Section::output);
    EXPECT_EQ(callError(program, context, "output"), "no error");
    EXPECT_EQ(fileContent(path), "1a [  0 => 2 ]nil\n\nappended\n");
    context.setCurrentSection(Section::input);
    EXPECT_EQ(callError(program, context, "input"), "Function 'openWrite' not allowed in this section.");
    context.setCurrentSection(Section::model);
    EXPECT_EQ(callError(program, context, "model"), "Function 'openRead' not allowed in this section.");
    std::remove(path.c_str());
}

TEST(IOLibrary, WritingToAFileOpenedForReadingFails) {
    const std::string path = testing::TempDir() + "quarrix_io_read.txt";
    std::ofstream(path) << "x\n";
    Program program;
    program.parseText("function input() { f = openRead(\"" + path + "\"); print(f, 1); }",
                      "io.qxm");
    Context context(&program, nullptr);
    EXPECT_EQ(callError(program, context, "input"), "Cannot write to file '" + path + "'.");
    std::remove(path.c_str());
}

TEST(ParamParser, TypesEachWordAndCreatesGlobals) {
    Program program;
    Context context(&program, nullptr);
    ParamParser::addParam(&context, "n=10");
    ParamParser::addParam(&context, "s=a=b");
    ParamParser::addParam(&context, "m=1:x,y,true:z");
    VariableSet* globals = program.getGlobalVariables();
    EXPECT_EQ(context.getValue(globals->getVariable("n")).asInt(), 10);
    EXPECT_EQ(context.getValue(globals->getVariable("s")).asString(), "a=b");
    EXPECT_EQ(context.getValue(globals->getVariable("m")).toString(), "[  1 => z  2 => y ]");
    EXPECT_TRUE(ParamParser::isNumber("-"));
    EXPECT_FALSE(ParamParser::isNumber("+3"));
    EXPECT_FALSE(ParamParser::isIdent(""));
    EXPECT_TRUE(ParamParser::isIdent("_a1"));
    EXPECT_FALSE(ParamParser::isSimpleValue("a:b"));
}

TEST(Section, NamesFollowTheBitPosition) {
    EXPECT_EQ(getSectionName(Section::input), "input");
    EXPECT_EQ(getSectionName(Section::model), "model");
    EXPECT_EQ(getSectionName(Section::param), "param");
    EXPECT_EQ(getSectionName(Section::display), "display");
    EXPECT_EQ(getSectionName(Section::output), "output");
}
