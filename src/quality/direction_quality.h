#pragma once

#include <cstdint>

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

} // namespace kelvorig
