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
    Value interpret(Context* c) { return interpretReally(c); }
    virtual Value interpretReally(Context* c) = 0;
};
