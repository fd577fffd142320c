// LTime.cpp -- the millisecond stopwatch on the monotonic clock.
#include <ostrum_core/LTime.h>

LTime::LTime() : start_(std::chrono::steady_clock::now()) {}

int64_t LTime::read() const
{
    const auto elapsed = std::chrono::steady_clock::now() - start_;
    return static_cast<int64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count());
}
