#pragma once

class Program;

class IOLibrary {
public:
    static void addFunctions(Program* program);
};
