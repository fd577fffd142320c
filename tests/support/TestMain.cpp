// TestMain.cpp -- the main of every test program: GoogleTest with thread-safe death tests, because
// Mesa's software rasteriser runs threads of its own.
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    return RUN_ALL_TESTS();
}
