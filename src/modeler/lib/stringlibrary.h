#pragma once

class Program;

class StringLibrary {
public:
    static void addFunctions(Program* program);
};
