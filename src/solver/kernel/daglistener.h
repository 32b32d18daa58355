#pragma once

// Told once after every commit of a Dag's Propagation.
class DagListener {
public:
    virtual ~DagListener() = default;
    virtual void notifyCommit() = 0;
};
