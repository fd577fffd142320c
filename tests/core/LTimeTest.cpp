// LTimeTest.cpp -- the millisecond stopwatch LTime.
#include <ostrum_core/LTime.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <thread>
#include <type_traits>

TEST(LTimeRead, ReturnsSixtyFourBitSignedCount)
{
    static_assert(std::is_same<decltype(std::declval<LTime&>().read()), int64_t>::value, "int64 result");
}

TEST(LTimeRead, StartsNearZero)
{
    LTime timer;
    int64_t t = timer.read();
    EXPECT_GE(t, 0);
    EXPECT_LT(t, 1000);
}

TEST(LTimeRead, GrowsBySleptMilliseconds)
{
    LTime timer;
    int64_t before = timer.read();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    int64_t after = timer.read();
    EXPECT_GE(after - before, 40);
    EXPECT_LE(after - before, 2000);
}

TEST(LTimeRead, CountsWallTimeNotProcessorTime)
{
    // A sleeping process uses almost no processor time; the clock must move all the same.
    LTime timer;
    std::this_thread::sleep_for(std::chrono::milliseconds(120));
    EXPECT_GE(timer.read(), 110);
}

TEST(LTimeRead, NeverRunsBackwards)
{
    LTime timer;
    int64_t previous = timer.read();
    for (int i = 0; i < 100000; ++i) {
        int64_t now = timer.read();
        ASSERT_GE(now, previous);
        previous = now;
    }
}

TEST(LTimeConstructor, EachTimerStartsItsOwnClock)
{
    LTime first;
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    LTime second;
    int64_t a = first.read();
    int64_t b = second.read();
    EXPECT_GE(a - b, 50);
}

TEST(LTimeCopy, CopySharesTheStartTime)
{
    LTime original;
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    LTime copy = original;
    EXPECT_GE(copy.read(), 50);
}
