#pragma once

#include "modeler/mnode.h"

#include <memory>
#include <string>
#include <vector>

class MExpression;

// Receives what an iterator yields: a key (nil for ranges) and a value.
class IterationSink {
public:
    virtual ~IterationSink() = default;
    virtual void accept(Context* c, const Value& key, const Value& value) = 0;
};

// One bracket of a compositor. Iterators stop as soon as a return runs.
class MIterator : public MNode {
public:
    using MNode::MNode;
    virtual void iterate(Context* c, IterationSink& sink) = 0;
};

// a..b: the integers from a to b inclusive, none when a > b.
class MRangeIterator : public MIterator {
public:
    MRangeIterator(const std::string* file, int line, MExpression* from, MExpression* to);
    void iterate(Context* c, IterationSink& sink) override;

private:
    MExpression* from;
    MExpression* to;
};

// The entries of a map, in its iteration order.
class MValueIterator : public MIterator {
public:
    MValueIterator(const std::string* file, int line, MExpression* container);
    void iterate(Context* c, IterationSink& sink) override;

private:
    MExpression* container;
};

// A bracket holding one plain index: yields it once.
class MSingleIterator : public MIterator {
public:
    MSingleIterator(const std::string* file, int line, MExpression* index);
    void iterate(Context* c, IterationSink& sink) override;

private:
    MExpression* index;
};

// Names bound to what another iterator yields, with an optional filter. With
// one name it takes the value; with two, the key and the value. It yields
// the value of its first name.
class MFilterIterator : public MIterator {
public:
    MFilterIterator(const std::string* file, int line, std::vector<const std::string*> names,
                    MIterator* source, MExpression* filter);
    void iterate(Context* c, IterationSink& sink) override;

private:
    friend class FilterSink;
    std::vector<const std::string*> names;
    std::vector<Variable*> variables;  // resolved on the first run
    MIterator* source;
    MExpression* filter;
};

// Told of every complete combination of a compositor.
class CompositorUser {
public:
    virtual ~CompositorUser() = default;
    virtual void onCombination(Context* c, std::vector<Value>& indices) = 0;
};

// Brackets nested in order, the first the outermost loop. Names bound by its
// iterators live in its own scope.
class MCompositor : public MNode {
public:
    MCompositor(const std::string* file, int line) : MNode(file, line) {}
    void addIterator(MIterator* it) {
        iterators.push_back(it);
        nestOver(it);
    }
    size_t size() const { return iterators.size(); }
    void run(Context* c, CompositorUser* user);

private:
    friend class LevelSink;
    void runLevel(Context* c, size_t level, std::vector<Value>& indices, CompositorUser* user);
    std::vector<MIterator*> iterators;
    std::unique_ptr<VariableSet> scope;
};

// Parser helper: the names of a key_value or of a parameter list.
class MNameList : public MNode {
public:
    using MNode::MNode;
    std::vector<const std::string*> names;
};
