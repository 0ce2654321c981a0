#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace kelvorig {

// What the coverage report found in one direction of its grid, as numbers rather than text.
struct DirectionQuality
{
    double yaw = 0.0;         // radians, the grid's yaw
    double pitch = 0.0;       // radians, the grid's pitch
    uint32_t visibleMask = 0; // bit i: the sensor of layout index i is seen
    int32_t visibleCount = 0;
    int32_t solvablePercent = 0; // 100, 99, 96 or 0
    double positionError = 1.0;  // metres, as the report prints it (1.0: no usable estimate)
    double rotationError = 1.0;  // radians, likewise
};

// The report's grid: yaw in the outer loop, pitch in the inner one, both from their first value
// in steps of the same size.
struct DirectionGrid
{
    size_t yawCount = 0;
    size_t pitchCount = 0;
    double firstYawDegrees = 0.0;
    double firstPitchDegrees = 0.0;
    double stepDegrees = 0.0;
};

// None when the directions do not form such a grid.
std::optional<DirectionGrid> GridOf(const std::vector<DirectionQuality>& directions);

} // namespace kelvorig
