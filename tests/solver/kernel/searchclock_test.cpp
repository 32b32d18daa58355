// The search's clock: limits as durations, read every so many iterations.

#include "solver/kernel/searchclock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace std::chrono_literals;

TEST(SearchClock, ZeroLimitIsOverAtOnceAndNoLimitNeverReadsTheClock) {
    SearchClock clock;
    clock.start(0ns);
    EXPECT_TRUE(clock.isOver(0));
    EXPECT_TRUE(clock.isOver(1));  // stays over between readings

    clock.start(SearchClock::NO_LIMIT);
    std::this_thread::sleep_for(2ms);
    for (unsigned long long i = 0; i < 1000; ++i) EXPECT_FALSE(clock.isOver(i));
    EXPECT_EQ(clock.lastElapsed(), SearchClock::Clock::duration::zero());
    EXPECT_GE(clock.elapsed(), 2ms);
}

TEST(SearchClock, SubSecondLimitEndsNoEarlierThanItsDuration) {
    SearchClock clock;
    clock.start(20ms);
    unsigned long long iteration = 0;
    while (!clock.isOver(iteration)) ++iteration;
    EXPECT_GE(clock.lastElapsed(), 20ms);
    EXPECT_GE(clock.elapsed(), 20ms);
    // Fast iterations are not each a reading.
    EXPECT_GT(clock.getStride(), 1u);
    clock.stop();
    SearchClock::Clock::duration length = clock.elapsed();
    std::this_thread::sleep_for(2ms);
    EXPECT_EQ(clock.elapsed(), length);  // a stopped clock keeps the run's length
}

TEST(SearchClock, SlowIterationsReadTheClockEachTime) {
    SearchClock clock;
    clock.start(1h);
    for (unsigned long long i = 0; i < 6; ++i) {
        std::this_thread::sleep_for(3ms);
        EXPECT_FALSE(clock.isOver(i));
    }
    EXPECT_EQ(clock.getStride(), 1u);
    EXPECT_GE(clock.lastElapsed(), 18ms);
}
