#pragma once

// Told by a heuristic when its run starts, after each iteration and when
// its run ends, on the heuristic's own thread.
class HeuristicCallback {
public:
    virtual ~HeuristicCallback() = default;
    virtual void heuristicStarted() = 0;
    virtual void heuristicEnded() = 0;
    virtual void iterate() = 0;
};
