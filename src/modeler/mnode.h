#pragma once

#include "modeler/context.h"
#include "modeler/value.h"

#include <algorithm>
#include <initializer_list>
#include <string>

// A node of the syntax tree: where it was parsed, for error messages, and
// how deep it sits, which the parser bounds so that running the tree
// recursively cannot exhaust the stack.
class MNode {
public:
    MNode(const std::string* fileName_, int line_) : fileName(fileName_), line(line_), depth(1) {}
    virtual ~MNode() = default;
    MNode(const MNode&) = delete;
    MNode& operator=(const MNode&) = delete;

    const std::string& getFileName() const { return *fileName; }
    int getLine() const { return line; }
    // For a node built before the parser reached its first token (a call
    // collected from its arguments), once that token is known.
    void setLine(int line_) { line = line_; }
    int getDepth() const { return depth; }

protected:
    // Depth of a node over the given children (null ones ignored).
    void nestOver(std::initializer_list<const MNode*> children) {
        for (const MNode* c : children)
            if (c) depth = std::max(depth, c->depth + 1);
    }
    void nestOver(const MNode* child) {
        if (child) depth = std::max(depth, child->depth + 1);
    }
    // A child that runs without a level of recursion of its own (the next
    // link of a chain the node walks in a loop).
    void nestBeside(const MNode* child) {
        if (child) depth = std::max(depth, child->depth);
    }

private:
    const std::string* fileName;
    int line;
    int depth;
};

class MStatement : public MNode {
public:
    using MNode::MNode;
    void execute(Context* c) {
        c->setInstructionPointer(this);
        executeReally(c);
    }
    virtual void executeReally(Context* c) = 0;
};

class MExpression : public MNode {
public:
    using MNode::MNode;
    // Every node that runs becomes the instruction, so an error names the
    // node being evaluated; a node whose own step follows its operands'
    // (an operator, a call) takes the pointer back first (Context::at).
    Value interpret(Context* c) {
        c->setInstructionPointer(this);
        return interpretReally(c);
    }
    virtual Value interpretReally(Context* c) = 0;
};
