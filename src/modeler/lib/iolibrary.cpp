#include "modeler/lib/iolibrary.h"

#include "modeler/modelerexception.h"
#include "modeler/program.h"
#include "modeler/section.h"
#include "modeler/solverfunction.h"
#include "modeler/value/vfile.h"

#include <iostream>

// Console and files.
namespace {

const char* const UNIT = "src/modeler/lib/iolibrary";
const int kInput = (int)Section::input;
const int kOutput = (int)Section::output;

bool isFileCall(const std::vector<Value>& args) {
    return !args.empty() && args[0].getType() == RefTypes::T_FILE;
}

VFile* fileArgument(const Value& v) {
    v.checkType(RefTypes::T_FILE);
    return static_cast<VFile*>(v.getReference());
}

// With one argument the readers only take a file.
VFile* readerFile(const std::vector<Value>& args, const char* function) {
    if (args[0].getType() != RefTypes::T_FILE)
        throw ModelerException(std::string("Function ") + function +
                                   " cannot handle argument of type " +
                                   args[0].getType()->getName(), QX_WHERE(UNIT, function));
    return static_cast<VFile*>(args[0].getReference());
}

// Prompts with "?" and reads one line of standard input; at its end the
// read fails. A line is capped like a file's, so an endless input without
// a line end is refused instead of filling the memory.
std::string consoleLine() {
    std::cout << "?" << std::flush;
    std::string line;
    int c;
    while ((c = std::cin.get()) != EOF && c != '\n') {
        if (line.size() == VFile::kMaxLineLength)
            throw ModelerException(
                VFile::tooLong("Line", VFile::kMaxLineLength, "standard input"),
                QX_WHERE(UNIT, "readln"));
        line += (char)c;
    }
    if (c == EOF && line.empty())
        throw ModelerException("End of file.", QX_WHERE(UNIT, "readln"));
    return line;
}

Value openFile(std::vector<Value>& args, VFile::AccessMode mode) {
    return Value(new VFile(args[0].castToString(), mode));
}
Value openRead(Context*, std::vector<Value>& args) { return openFile(args, VFile::Read); }
Value openWrite(Context*, std::vector<Value>& args) { return openFile(args, VFile::Write); }
Value openAppend(Context*, std::vector<Value>& args) { return openFile(args, VFile::Append); }

Value eof(Context*, std::vector<Value>& args) { return Value(fileArgument(args[0])->eof()); }

Value readInt(Context*, std::vector<Value>& args) {
    if (args.empty()) return Value(castToQxInt(consoleLine()));
    return Value(readerFile(args, "readInt")->readInt());
}

Value readString(Context*, std::vector<Value>& args) {
    if (args.empty()) return Value(consoleLine());
    return Value(readerFile(args, "readString")->readString());
}

Value readln(Context*, std::vector<Value>& args) {
    if (args.empty()) return Value(consoleLine());
    return Value(readerFile(args, "readln")->readln());
}

void write(Context* c, std::vector<Value>& args, bool newLine) {
    if (isFileCall(args)) {
        VFile* file = static_cast<VFile*>(args[0].getReference());
        std::string text;
        for (size_t i = 1; i < args.size(); ++i) text += args[i].toString(c);
        if (newLine) text += '\n';
        file->write(text);
    } else {
        for (const Value& v : args) std::cout << v.toString(c);
        if (newLine) std::cout << '\n';
    }
}

Value print(Context* c, std::vector<Value>& args) {
    write(c, args, false);
    return Value();
}

Value println(Context* c, std::vector<Value>& args) {
    write(c, args, true);
    return Value();
}

Value close(Context*, std::vector<Value>& args) {
    fileArgument(args[0])->close();
    return Value();
}

}  // namespace

void IOLibrary::addFunctions(Program* program) {
    const int any = SolverFunction::kAnySection;
    const int many = SolverFunction::kMaxArguments;
    program->addFunction(new SolverFunction("openRead", openRead, kInput, 1));
    program->addFunction(new SolverFunction("openWrite", openWrite, kOutput, 1));
    program->addFunction(new SolverFunction("openAppend", openAppend, kOutput, 1));
    program->addFunction(new SolverFunction("eof", eof, kInput, 1));
    program->addFunction(new SolverFunction("readInt", readInt, kInput, 0, 1));
    program->addFunction(new SolverFunction("readString", readString, kInput, 0, 1));
    program->addFunction(new SolverFunction("readln", readln, kInput, 0, 1));
    program->addFunction(new SolverFunction("print", print, any, 0, many));
    program->addFunction(new SolverFunction("println", println, any, 0, many));
    program->addFunction(new SolverFunction("close", close, any, 1));
}
