// LRandom.h -- uniformly distributed random numbers from one generator shared by the whole process.
//
// Choices recorded here:
//  - The generator is a 64-bit Mersenne Twister (std::mt19937_64). It is seeded once, on first use,
//    from std::random_device (the clock when that has no entropy to give), so every run of a game
//    differs; setSeed restarts it from a given seed when a run has to be repeatable (tests, replays).
//  - getUniformRand(low, high) draws from the half-open interval [low, high): low can come out, high
//    never does (the result is kept below high even where floating rounding would reach it). With
//    low > high the result lies in (high, low]; with low == high it is low. Each draw takes 53
//    random bits, the full precision of a double.
//  - getUniformRandInt(low, high) includes both bounds; bounds given the wrong way round are swapped.
//  - Like the rest of the library the generator is used from one thread only; it takes no lock.
#pragma once

#include <cstdint>

class LRandom {
public:
    static double getUniformRand(double low, double high);
    static int getUniformRandInt(int low, int high);
    // Restarts the process-wide generator from `seed`: the same seed gives the same draws.
    static void setSeed(uint64_t seed);
};
