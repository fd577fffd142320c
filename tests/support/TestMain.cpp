// TestMain.cpp -- the main of every test program: GoogleTest with thread-safe death tests, because
// Mesa's software rasteriser runs threads of its own; and the sanitizers' settings of the test run.
#include <gtest/gtest.h>

// Read by the sanitizer runtimes of the sanitized build (and ignored elsewhere): stop at the first
// error, check leaks, and skip leaks that the GL stack and X11 keep for the life of the process.
extern "C" const char* __asan_default_options()
{
    return "halt_on_error=1:detect_leaks=1";
}
extern "C" const char* __ubsan_default_options()
{
    return "halt_on_error=1:print_stacktrace=1";
}
// Thread-local storage is not scanned for roots (use_tls=0): the leak checker of GCC 12 faults while
// walking the dynamic TLS blocks that the font and movie libraries leave behind, and nothing of ours
// keeps heap memory reachable only from thread-local variables.
extern "C" const char* __lsan_default_options()
{
    return "suppressions=" OSTRUM_LSAN_SUPPRESSIONS ":print_suppressions=0:use_tls=0";
}

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    return RUN_ALL_TESTS();
}
