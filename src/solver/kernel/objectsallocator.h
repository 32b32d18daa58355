#pragma once

#include <memory>
#include <string>
#include <vector>

// Objects of one stateless node class, allocated together: stateless classes
// need one object per node only for a uniform Node* per node, so one array
// per class replaces one heap block per node.
template <class Base>
class ObjectsAllocator {
public:
    ObjectsAllocator(std::string poolName, unsigned int count) : name(std::move(poolName)), nbObjects(count) {}
    virtual ~ObjectsAllocator() = default;
    virtual Base* getObject(unsigned int k) = 0;
    const std::string& getName() const { return name; }
    unsigned int getNbObjects() const { return nbObjects; }

private:
    std::string name;
    unsigned int nbObjects;
};

template <class Base, class Class>
class SpecificObjectsAllocator : public ObjectsAllocator<Base> {
public:
    SpecificObjectsAllocator(std::string poolName, unsigned int count)
        : ObjectsAllocator<Base>(std::move(poolName), count),
          objects(count == 0 ? nullptr : new Class[count]) {}
    Base* getObject(unsigned int k) override { return &objects[k]; }

private:
    std::unique_ptr<Class[]> objects;
};

template <class Base>
class ObjectsAllocatorPool {
public:
    template <class Class>
    ObjectsAllocator<Base>* addPool(const std::string& name, unsigned int count) {
        pools.push_back(std::make_unique<SpecificObjectsAllocator<Base, Class>>(name, count));
        return pools.back().get();
    }

private:
    std::vector<std::unique_ptr<ObjectsAllocator<Base>>> pools;
};
