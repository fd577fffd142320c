// LTime.h -- a stopwatch that counts milliseconds from its construction.
//
// read() is the number of whole milliseconds since the object was made, from the monotonic
// std::chrono::steady_clock: it never runs backwards and is not CPU time. Milliseconds match the
// per-frame delays that animated textures hold as ints. Copies share the start time of the original.
#pragma once

#include <chrono>
#include <cstdint>

class LTime {
public:
    // Starts the clock.
    LTime();
    // Milliseconds elapsed since construction, truncated.
    int64_t read() const;

private:
    std::chrono::steady_clock::time_point start_;
};
