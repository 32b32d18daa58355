#pragma once

class Dag;
class QXSolution;
class Solution;

// What a solve needs of the compiled model: one graph per thread and the
// conversions between the API solution and the kernel's. The model's graph
// compiler provides it; the solve itself knows nothing of compilation.
class SolveGraphs {
public:
    virtual ~SolveGraphs() = default;
    // Graph 0 is the main one; graphs 1..n exist after createCopies(n).
    virtual Dag* getDag(unsigned int i) = 0;
    virtual void createCopies(unsigned int n) = 0;
    // Decision values of the API solution into a kernel solution: all that
    // a graph loads (it evaluates the rest itself, much faster than the
    // API's evaluation of a million expressions).
    virtual void convertSolution(QXSolution* from, Solution* to) const = 0;
    // Decision values of a kernel solution into the API solution.
    virtual void convertBackSolution(const Solution* from, QXSolution* to) const = 0;
};
