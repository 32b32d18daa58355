#pragma once

class Program;

// The functions through which a program reads and sets the solution and the
// objective bounds: "getValue", "setValue", "setObjectiveBound".
class SolverLibrary {
public:
    static void addFunctions(Program* program);
};
