// Times the interpreter on ten million loop iterations of integer arithmetic
// and map reads and writes, through the real parser and Context.
#include "api/qxexception.h"
#include "modeler/context.h"
#include "modeler/program.h"

#include <chrono>
#include <iostream>

namespace {
const char* const kProgram = R"(
function run(n) {
    m = {};
    for [j in 0..1023] m[j] = j;
    s = 0;
    i = 0;
    while (i < n) {
        k = i % 1024;
        s = s + m[k] * 3 - (i / 7);
        m[k] = s % 1000;
        i = i + 1;
    }
    return s;
}
)";
}

int main() {
    try {
        Program program;
        program.parseText(kProgram, "bench.qxm");
        Context context(&program, nullptr);
        std::vector<Value> args{Value(10000000LL)};
        auto start = std::chrono::steady_clock::now();
        Value result = program.getFunction("run")->call(&context, args);
        std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        std::cout << "interpreter: 10000000 iterations (integer arithmetic, map read and write) in "
                  << elapsed.count() << " s (result " << result.toString() << ")" << std::endl;
    } catch (const QXException& e) {
        std::cerr << "Error: " << e.getExplanation() << std::endl;
        return 1;
    }
    return 0;
}
