// LRandom.cpp -- the process-wide generator and its uniform draws.
#include <ostrum_core/LRandom.h>

#include <chrono>
#include <cmath>
#include <random>

namespace {

std::mt19937_64& generator()
{
    static std::mt19937_64 gen = [] {
        // No failure leaves the library as an exception: without an entropy source the clock seeds.
        try {
            std::random_device device;
            std::seed_seq seeds{device(), device(), device(), device()};
            return std::mt19937_64(seeds);
        } catch (...) {
            return std::mt19937_64(static_cast<uint64_t>(
                std::chrono::high_resolution_clock::now().time_since_epoch().count()));
        }
    }();
    return gen;
}

}  // namespace

double LRandom::getUniformRand(double low, double high)
{
    // 53 random bits make a double in [0, 1) with every value equally spaced.
    const double unit = static_cast<double>(generator()() >> 11) * 0x1.0p-53;
    double value = low + (high - low) * unit;
    if ((low < high && value >= high) || (low > high && value <= high))
        value = std::nextafter(high, low);
    return value;
}

int LRandom::getUniformRandInt(int low, int high)
{
    if (low > high)
        std::swap(low, high);
    std::uniform_int_distribution<int> distribution(low, high);
    return distribution(generator());
}

void LRandom::setSeed(uint64_t seed)
{
    generator().seed(seed);
}
