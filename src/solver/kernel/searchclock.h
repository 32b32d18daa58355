#pragma once

#include <chrono>

// The elapsed time of one search and its time limit, on a monotonic clock:
// a limit is a duration, whatever happens to the wall clock meanwhile.
//
// Reading the clock costs about as much as a small move, so the limit is
// tested every `stride` iterations only. The stride doubles while reads come
// less than a millisecond apart and halves when they come more than two
// apart: a search overshoots its limit by a few milliseconds, and one whose
// iterations are slow reads the clock at each. Iteration limits do not
// depend on it, so a run bounded by iterations only never reads it here.
// Used by one search thread; elapsed() may be read by another thread while
// the search is paused or ended.
class SearchClock {
public:
    typedef std::chrono::steady_clock Clock;
    // The limit of a search that has none.
    static constexpr Clock::duration NO_LIMIT = Clock::duration::max();

    // Starts counting from now towards `limit`.
    void start(Clock::duration limit);
    // Ends the count: elapsed() keeps the length of the run.
    void stop();
    // Whether the limit has passed, as of the last read of the clock; reads
    // it when `iteration` has reached the next reading.
    bool isOver(unsigned long long iteration);
    // Time since start(), up to stop() once stopped.
    Clock::duration elapsed() const;
    // The elapsed time at the last reading of isOver (0 before any): cheap
    // enough for every iteration.
    Clock::duration lastElapsed() const { return lastRead - startTime; }
    unsigned long long getStride() const { return stride; }

private:
    Clock::time_point startTime{};
    Clock::time_point endTime{};
    Clock::time_point lastRead{};
    Clock::duration limit = NO_LIMIT;
    unsigned long long nextRead = 0;
    unsigned long long stride = 1;
    bool running = false;
    bool over = false;
};
