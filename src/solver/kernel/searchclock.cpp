#include "solver/kernel/searchclock.h"

namespace {
// Reads closer than this double the stride, reads further apart than the
// slow gap halve it.
constexpr std::chrono::microseconds FAST_GAP(1000);
constexpr std::chrono::microseconds SLOW_GAP(2000);
// Far above what a millisecond of the fastest moves needs.
constexpr unsigned long long MAX_STRIDE = 1ULL << 24;
}  // namespace

constexpr SearchClock::Clock::duration SearchClock::NO_LIMIT;

void SearchClock::start(Clock::duration newLimit) {
    limit = newLimit;
    startTime = lastRead = Clock::now();
    nextRead = 0;
    stride = 1;
    running = true;
    over = false;
}

void SearchClock::stop() {
    endTime = Clock::now();
    running = false;
}

bool SearchClock::isOver(unsigned long long iteration) {
    if (over) return true;
    if (limit == NO_LIMIT || iteration < nextRead) return false;
    Clock::time_point now = Clock::now();
    Clock::duration gap = now - lastRead;
    if (gap < FAST_GAP && stride < MAX_STRIDE)
        stride *= 2;
    else if (gap > SLOW_GAP && stride > 1)
        stride /= 2;
    lastRead = now;
    nextRead = iteration + stride;
    over = now - startTime >= limit;
    return over;
}

SearchClock::Clock::duration SearchClock::elapsed() const {
    return (running ? Clock::now() : endTime) - startTime;
}
