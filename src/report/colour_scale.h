#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kelvorig {

struct Rgb
{
    double r = 0.0;
    double g = 0.0;
    double b = 0.0;
};

// Position error is coloured on a logarithmic scale fixed for every layout, so that two maps
// can be compared by eye: this range, clamped at both ends.
constexpr double kMapErrorLowMm = 0.1;
constexpr double kMapErrorHighMm = 100.0;

// Directions with no usable estimate: a red outside the error scale.
constexpr Rgb kUnsolvableColour = {0.84, 0.15, 0.16};

// Stops of the error scale from low to high (viridis), evenly spaced in log error.
constexpr size_t kErrorScaleStops = 11;
extern const std::array<Rgb, kErrorScaleStops> kErrorScale;

// The colour of a position error in millimetres.
Rgb ErrorColour(double errorMm);
// The colour of a visible-sensor count, from light (0) to dark (`maxCount`).
Rgb CountColour(int32_t count, int32_t maxCount);

} // namespace kelvorig
