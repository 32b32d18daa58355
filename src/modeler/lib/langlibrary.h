#pragma once

class Program;

class LangLibrary {
public:
    static void addFunctions(Program* program);
};
