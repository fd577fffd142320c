// LRandomTest.cpp -- ranges, bounds, spread and seeding of LRandom's draws.
#include <ostrum_core/LRandom.h>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <vector>

TEST(LRandomGetUniformRandInt, IncludesBothBounds)
{
    bool sawLow = false, sawHigh = false;
    for (int i = 0; i < 5000; ++i) {
        int v = LRandom::getUniformRandInt(1, 6);
        ASSERT_GE(v, 1);
        ASSERT_LE(v, 6);
        sawLow = sawLow || v == 1;
        sawHigh = sawHigh || v == 6;
    }
    EXPECT_TRUE(sawLow);
    EXPECT_TRUE(sawHigh);
}

TEST(LRandomGetUniformRandInt, NegativeRangeIncludesBothBounds)
{
    bool sawLow = false, sawHigh = false;
    for (int i = 0; i < 2000; ++i) {
        int v = LRandom::getUniformRandInt(-3, -1);
        ASSERT_GE(v, -3);
        ASSERT_LE(v, -1);
        sawLow = sawLow || v == -3;
        sawHigh = sawHigh || v == -1;
    }
    EXPECT_TRUE(sawLow);
    EXPECT_TRUE(sawHigh);
}

TEST(LRandomGetUniformRandInt, EqualBoundsGiveThatValue)
{
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(LRandom::getUniformRandInt(7, 7), 7);
}

TEST(LRandomGetUniformRandInt, SwappedBoundsStillIncludeBoth)
{
    bool sawLow = false, sawHigh = false;
    for (int i = 0; i < 2000; ++i) {
        int v = LRandom::getUniformRandInt(4, 2);
        ASSERT_GE(v, 2);
        ASSERT_LE(v, 4);
        sawLow = sawLow || v == 2;
        sawHigh = sawHigh || v == 4;
    }
    EXPECT_TRUE(sawLow);
    EXPECT_TRUE(sawHigh);
}

TEST(LRandomGetUniformRandInt, FullIntRangeWorks)
{
    bool sawNegative = false, sawPositive = false;
    for (int i = 0; i < 200; ++i) {
        int v = LRandom::getUniformRandInt(INT_MIN, INT_MAX);
        sawNegative = sawNegative || v < 0;
        sawPositive = sawPositive || v > 0;
    }
    EXPECT_TRUE(sawNegative);
    EXPECT_TRUE(sawPositive);
}

TEST(LRandomGetUniformRandInt, ValuesAreEquallyLikely)
{
    LRandom::setSeed(12345);
    const int draws = 100000;
    std::vector<int> counts(10, 0);
    for (int i = 0; i < draws; ++i)
        ++counts[LRandom::getUniformRandInt(0, 9)];
    for (int c : counts)
        EXPECT_NEAR(c, draws / 10, draws / 100) << "each of ten values about 10000 times";
}

TEST(LRandomGetUniformRand, StaysWithinLowAndHigh)
{
    double smallest = 1e9, largest = -1e9;
    for (int i = 0; i < 20000; ++i) {
        double v = LRandom::getUniformRand(-2.5, 2.5);
        ASSERT_GE(v, -2.5);
        ASSERT_LT(v, 2.5);
        smallest = std::min(smallest, v);
        largest = std::max(largest, v);
    }
    // The draws spread over the whole range.
    EXPECT_LT(smallest, -2.4);
    EXPECT_GT(largest, 2.4);
}

TEST(LRandomGetUniformRand, NeverReturnsHigh)
{
    // A range one double wide: low is the only value below high.
    const double low = 1.0;
    const double high = std::nextafter(1.0, 2.0);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(LRandom::getUniformRand(low, high), low);
}

TEST(LRandomGetUniformRand, SymmetricRangeAveragesZero)
{
    LRandom::setSeed(777);
    const int draws = 100000;
    double sum = 0, sumSq = 0;
    for (int i = 0; i < draws; ++i) {
        double v = LRandom::getUniformRand(-1.0, 1.0);
        sum += v;
        sumSq += v * v;
    }
    EXPECT_NEAR(sum / draws, 0.0, 0.02);
    EXPECT_NEAR(sumSq / draws, 1.0 / 3.0, 0.01);  // variance of a uniform on [-1, 1]
}

TEST(LRandomGetUniformRand, ValuesSpreadEvenly)
{
    LRandom::setSeed(4242);
    const int draws = 100000;
    std::vector<int> counts(10, 0);
    for (int i = 0; i < draws; ++i)
        ++counts[static_cast<size_t>(LRandom::getUniformRand(10.0, 20.0) - 10.0)];
    for (int c : counts)
        EXPECT_NEAR(c, draws / 10, draws / 100);
}

TEST(LRandomGetUniformRand, EqualBoundsGiveThatValue)
{
    EXPECT_EQ(LRandom::getUniformRand(3.5, 3.5), 3.5);
}

TEST(LRandomGetUniformRand, SwappedBoundsStayBetweenThem)
{
    for (int i = 0; i < 5000; ++i) {
        double v = LRandom::getUniformRand(1.0, -1.0);
        ASSERT_GT(v, -1.0);
        ASSERT_LE(v, 1.0);
    }
}

TEST(LRandomSetSeed, SameSeedRepeatsTheDraws)
{
    LRandom::setSeed(99);
    std::vector<double> first;
    for (int i = 0; i < 20; ++i) {
        first.push_back(LRandom::getUniformRand(0.0, 1.0));
        first.push_back(LRandom::getUniformRandInt(0, 1000));
    }
    LRandom::setSeed(99);
    std::vector<double> second;
    for (int i = 0; i < 20; ++i) {
        second.push_back(LRandom::getUniformRand(0.0, 1.0));
        second.push_back(LRandom::getUniformRandInt(0, 1000));
    }
    EXPECT_EQ(first, second);
    LRandom::setSeed(100);
    std::vector<double> third;
    for (int i = 0; i < 20; ++i) {
        third.push_back(LRandom::getUniformRand(0.0, 1.0));
        third.push_back(LRandom::getUniformRandInt(0, 1000));
    }
    EXPECT_NE(first, third);
}

TEST(LRandomGenerator, OneGeneratorServesBothDraws)
{
    // An int draw between two double draws moves the shared generator on.
    LRandom::setSeed(5);
    double a1 = LRandom::getUniformRand(0.0, 1.0);
    double a2 = LRandom::getUniformRand(0.0, 1.0);
    LRandom::setSeed(5);
    double b1 = LRandom::getUniformRand(0.0, 1.0);
    LRandom::getUniformRandInt(0, 1000000);
    double b2 = LRandom::getUniformRand(0.0, 1.0);
    EXPECT_EQ(a1, b1);
    EXPECT_NE(a2, b2);
}
