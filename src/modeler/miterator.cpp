#include "modeler/miterator.h"

#include "modeler/mexpression.h"
#include "modeler/value/vmap.h"
#include "modeler/value/vmapiterator.h"

MRangeIterator::MRangeIterator(const std::string* file, int line, MExpression* from_,
                               MExpression* to_)
    : MIterator(file, line), from(from_), to(to_) {
    nestOver({from, to});
}

void MRangeIterator::iterate(Context* c, IterationSink& sink) {
    Value first = from->interpret(c);
    Value last = to->interpret(c);
    c->setInstructionPointer(this);
    qxint a = first.castToInt();
    qxint b = last.castToInt();
    if (a > b) return;
    Value nil;
    for (qxint i = a;; ++i) {
        sink.accept(c, nil, Value(i));
        if (c->isReturning() || i == b) return;
    }
}

MValueIterator::MValueIterator(const std::string* file, int line, MExpression* container_)
    : MIterator(file, line), container(container_) {
    nestOver(container);
}

void MValueIterator::iterate(Context* c, IterationSink& sink) {
    Value m = container->interpret(c);
    c->setInstructionPointer(this);
    m.checkType(RefTypes::T_MAP);
    VMapIterator it(static_cast<VMap*>(m.getReference()));
    while (it.next()) {
        sink.accept(c, it.getKey(), it.getValue());
        if (c->isReturning()) return;
    }
}

MSingleIterator::MSingleIterator(const std::string* file, int line, MExpression* index_)
    : MIterator(file, line), index(index_) {
    nestOver(index);
}

void MSingleIterator::iterate(Context* c, IterationSink& sink) {
    sink.accept(c, Value(), index->interpret(c));
}

MFilterIterator::MFilterIterator(const std::string* file, int line,
                                 std::vector<const std::string*> names_, MIterator* source_,
                                 MExpression* filter_)
    : MIterator(file, line), names(std::move(names_)), source(source_), filter(filter_) {
    nestOver({source, filter});
}

class FilterSink : public IterationSink {
public:
    FilterSink(MFilterIterator* it_, IterationSink& next_) : it(it_), next(next_) {}
    void accept(Context* c, const Value& key, const Value& value) override {
        if (it->variables.size() == 1) {
            c->setValue(it->variables[0], value);
        } else {
            c->setValue(it->variables[0], key);
            c->setValue(it->variables[1], value);
        }
        if (it->filter) {
            Value keep = it->filter->interpret(c);
            c->setInstructionPointer(it);
            if (!keep.castToBool()) return;
        }
        next.accept(c, Value(), it->variables.size() == 1 ? value : key);
    }

private:
    MFilterIterator* it;
    IterationSink& next;
};

void MFilterIterator::iterate(Context* c, IterationSink& sink) {
    if (variables.empty()) {
        VariableSet* scope = c->getCurrentVariableSet();
        for (const std::string* name : names) {
            Variable* v = scope->findOwnVariable(*name);
            variables.push_back(v ? v : scope->createVariable(*name));
        }
    }
    FilterSink filterSink(this, sink);
    source->iterate(c, filterSink);
}

class LevelSink : public IterationSink {
public:
    LevelSink(MCompositor* comp_, size_t level_, std::vector<Value>& indices_,
              CompositorUser* user_)
        : comp(comp_), level(level_), indices(indices_), user(user_) {}
    void accept(Context* c, const Value&, const Value& value) override {
        indices[level] = value;
        if (level + 1 == indices.size()) user->onCombination(c, indices);
        else comp->runLevel(c, level + 1, indices, user);
    }

private:
    MCompositor* comp;
    size_t level;
    std::vector<Value>& indices;
    CompositorUser* user;
};

void MCompositor::runLevel(Context* c, size_t level, std::vector<Value>& indices,
                           CompositorUser* user) {
    LevelSink sink(this, level, indices, user);
    iterators[level]->iterate(c, sink);
}

void MCompositor::run(Context* c, CompositorUser* user) {
    if (!scope) scope = c->getCurrentVariableSet()->derivate();
    std::vector<Value> indices(iterators.size());
    c->pushVariableSet(scope.get());
    runLevel(c, 0, indices, user);
    c->popVariableSet();
}
