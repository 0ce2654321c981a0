#pragma once

#include <cstdint>
#include <random>

namespace kelvorig {

// The standard 32-bit Mersenne Twister. std::mt19937 is pinned down bit for bit by the
// C++ standard (seeding recurrence included); its distributions are not, so every draw
// below is written out by hand.
using RandomEngine = std::mt19937;

constexpr uint32_t kFixedSeed = 5489;

// Low 32 bits of the calendar time in seconds plus the process id: the varying seed of
// the surface and annealer engines. Runs can't be repeated unless a seed is injected.
uint32_t TimeAndProcessSeed();

// One 32-bit word as a 64-bit value in [0, 1): w times 2^-32.
inline double DrawUnit(RandomEngine& engine)
{
    return static_cast<double>(engine()) * 2.3283064365386963e-10;
}

// 64-bit uniform draw from [low, high): low + (w / 2^32) * (high - low).
inline double DrawRange(RandomEngine& engine, double low, double high)
{
    return low + (static_cast<double>(engine()) / 4294967296.0) * (high - low);
}

// 32-bit uniform draw. note: the word is narrowed before the division, so words from
// 0xFFFFFF80 up give exactly 1.0.
inline float DrawRange(RandomEngine& engine, float low, float high)
{
    const float unit = static_cast<float>(engine()) / 4294967296.0f;
    return low + unit * (high - low);
}

// A uniform range from low to high; each Draw takes one word from the engine.
template <typename Real>
struct UniformRange
{
    Real low = 0;
    Real high = 1;

    Real Draw(RandomEngine& engine) const { return DrawRange(engine, low, high); }
};

} // namespace kelvorig
